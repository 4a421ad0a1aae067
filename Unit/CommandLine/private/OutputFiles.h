/** @file
 * Files that commands write.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/** @return the check of an option that names a picture */
CLI::Validator pictureFile();

/** @param files empty names stand for none @throws ConfigurationError when a file is named for two outputs */
void checkNamedOnce(const std::vector<std::string>& files);

/** What takes long may end in a picture; that it cannot be drawn has to be known before. @throws std::runtime_error */
void checkPlotting();

/** Writes to standard output. @throws std::runtime_error when that fails */
void printOut(const std::string& sText);
