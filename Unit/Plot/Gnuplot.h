/** @file
 * Calls the program gnuplot.
 */
#pragma once

#include <string>

/**
 * @param sScript goes to its standard input through a pipe
 * @return what it wrote to its standard output
 * @throws std::runtime_error when it is not installed or fails, with its own words; SIGPIPE has to be ignored
 */
std::string runGnuplot(const std::string& sScript);
