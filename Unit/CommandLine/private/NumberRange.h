/** @file
 * A check of options that take numbers.
 */
#pragma once

#include <CLI/CLI.hpp>

/**
 * Takes a number in a range with open or closed lower end; CLI11's own range lets not-a-number pass.
 * @return the check, for one option or several
 */
CLI::Validator numberRange(double lower, bool bLowerIncluded, double upper);
