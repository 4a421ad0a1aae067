/** @file
 * Reads the files that a person gives to the platform.
 */
#pragma once

#include <string>

/**
 * Reads a file whole.
 * @return its bytes, without a UTF-8 byte-order mark
 * @throws ConfigurationError when it cannot be read
 */
std::string readFileText(const std::string& sPath);

/** @return text from a file, fit to stand in a one-line message: shortened, control characters replaced */
std::string quotedForMessage(const std::string& sText);
