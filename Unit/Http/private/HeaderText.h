/** @file
 * The small pieces of text that HTTP headers are made of.
 */
#pragma once

#include <string>
#include <string_view>

/** @return the text with A to Z in lower case, whatever the locale */
std::string lowerCase(std::string_view text);

/** @return the text without blanks and tabs around it */
std::string_view trimmed(std::string_view text);
