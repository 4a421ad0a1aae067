/** @file
 * XML-RPC values as texts that tests compare.
 */
#pragma once

#include <xmlrpc-epi/xmlrpc.h>

#include <string>

/**
 * @return the value with names, types and order: {name: 1, other: "text"} for a struct, [1, 2] for an array, with the
 *         value's own name in front when it has one
 */
std::string textOf(XMLRPC_VALUE xValue);

/** Releases the value. @return its text */
std::string takeText(XMLRPC_VALUE xValue);

/** @return the text in braces */
std::string inBraces(const std::string& sText);

/** @return the text of a fault */
std::string faultText(int nCode, const std::string& sText);
