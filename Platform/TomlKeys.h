/** @file
 * Looks at TOML before the library parses it.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <cstddef>
#include <string>

/** The most parts that a key may have, such as 3 in a.b.c. */
inline constexpr std::size_t MOST_KEY_PARTS = 32;

/**
 * Refuses keys of very many parts: the library makes a table in a table of each, whose release ends the stack.
 * @param sText the file's text
 * @param sPath the file's, for the error
 * @throws ConfigurationError with the line
 */
EAF_PUBLIC void refuseLongKeys(const std::string& sText, const std::string& sPath);
