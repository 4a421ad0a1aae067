/** @file
 * Base64 as xmlrpc-epi writes it.
 */
#pragma once

#include <string>
#include <string_view>

/** Appends bytes with the library's line ends: after 72 characters, then after every 71, and at the end. */
void appendBase64(std::string& sTo, std::string_view bytes);
