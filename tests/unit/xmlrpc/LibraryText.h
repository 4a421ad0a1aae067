/** @file
 * What the library itself writes.
 */
#pragma once

#include "Unit/XmlRpc/XmlRpcValue.h"

#include <string>

/** @return the library's clean response: version 1.0, no white space, markup escaped, UTF-8 */
std::string libraryResponse(XmlRpcValue value);

/** @return the library's call in the same form; null for no parameters */
std::string libraryCall(const std::string& sMethod, XmlRpcValue parameters);

/** @return an answer as a log's read gives it: a struct with an array of structs of five ints */
XmlRpcValue logAnswer(int nSamples);
