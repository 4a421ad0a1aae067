/** @file
 * What the HTTP library logs.
 */
#pragma once

#include <optional>
#include <string>

/**
 * @param sLine a line that the library logged
 * @return what it means when it tells of a client or of a request turned away; nothing for anything else, such as a
 *         client that went away by itself
 */
std::optional<std::string> turnedAwayText(const std::string& sLine);
