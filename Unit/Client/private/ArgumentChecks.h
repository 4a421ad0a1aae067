/** @file
 * Arguments whose values are known, and ones that are numbers.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/** Takes these words only, and shows them as {one,other} in the help, from where completion takes them. */
void onlyWords(CLI::Option& option, const std::vector<std::string>& words);

/** Takes whole numbers in a range only. */
void onlyWholeNumbers(CLI::Option& option, const char* pTypeName, int nLowest, int nHighest);

/** Takes whole numbers of 32 bits only. */
void onlyWholeNumbers(CLI::Option& option, const char* pTypeName);

/** Takes finite numbers only. @param sWord a word that is taken, too; empty for none */
void onlyNumbers(CLI::Option& option, const std::string& sTypeName, const std::string& sWord = "");

/** @return an option's value. @throws CLI::ConversionError, not after onlyNumbers() */
double numberOf(const CLI::Option& option);

/** @return an option's value. @throws CLI::ConversionError, not after onlyWholeNumbers() */
int wholeNumberOf(const CLI::Option& option);
