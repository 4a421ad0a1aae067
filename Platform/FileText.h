/** @file
 * Reads the files that a person gives to the unit.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <string>

/**
 * Reads a plain file whole; neither a pipe nor a device, nor more than 1 GiB.
 * @return its bytes, without a UTF-8 byte-order mark
 * @throws ConfigurationError when it cannot be read
 */
EAF_PUBLIC std::string readFileText(const std::string& sPath);

/** Reads a plain file whole, likewise, with the byte-order mark if it has one. @throws ConfigurationError when it
 * cannot be read */
EAF_PUBLIC std::string readFileBytes(const std::string& sPath);

/** @return text with a question mark for each control character, of one byte or of two in UTF-8 */
EAF_PUBLIC std::string printable(std::string sText);

/** @return text from a file, fit to stand in a one-line message: shortened, control characters replaced */
EAF_PUBLIC std::string quotedForMessage(const std::string& sText);
