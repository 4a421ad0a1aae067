/** @file
 * Shows a recording on the live page.
 */
#pragma once

#include "Unit/CommandLine/ReplayCommand.h"

/**
 * Serves the live page with a recorded run until a signal ends it.
 * @return an EExitCode
 * @throws ConfigurationError for bad input
 */
int replayOnPage(const ReplayOptions& options);
