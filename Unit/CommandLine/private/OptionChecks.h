/** @file
 * Checks of what options take.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/**
 * Takes a number in a range with open or closed lower end; CLI11's own range lets not-a-number pass.
 * @return the check, for one option or several
 */
CLI::Validator numberRange(double lower, bool bLowerIncluded, double upper);

/** @return the check of an option that is one of some words, as its type name has them */
CLI::Validator oneOf(const std::vector<std::string>& words);
