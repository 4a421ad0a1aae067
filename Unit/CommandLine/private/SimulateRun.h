/** @file
 * A run in virtual time, from the command line's view.
 */
#pragma once

#include "Unit/CommandLine/SimulateCommand.h"

/**
 * Runs a scenario and writes what was asked for.
 * @return an EExitCode
 * @throws ConfigurationError for bad input
 * @throws std::runtime_error when something fails
 */
int simulate(const SimulateOptions& options);
