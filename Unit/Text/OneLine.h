/** @file
 * Text from elsewhere, made safe to show.
 */
#pragma once

#include <string>

/**
 * @return the text as one line: control characters as blanks, runs of blanks as one, none at the ends, at most nMaximum
 *         bytes, and no broken character at the cut
 */
std::string oneLine(const std::string& sText, std::size_t nMaximum = 500);
