/** @file
 * Text for a shell.
 */
#pragma once

#include <string>

/** @return a word of a command line, quoted where a shell would read it otherwise */
std::string shellWord(const std::string& sText);
