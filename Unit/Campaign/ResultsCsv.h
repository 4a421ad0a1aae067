/** @file
 * The results of a campaign for other programs.
 */
#pragma once

#include "Unit/Campaign/ResultsFile.h"

#include <string>

/**
 * Writes a row per run in the order of their numbers: number, seed, parameters by their paths, all measures, and the
 * error of a run that failed. What a run does not have is left empty.
 * @throws ConfigurationError, std::runtime_error when the file cannot be written; then there is none
 */
void writeResultsCsv(const ResultsFile& results, const std::string& sPath);
