/** @file
 * Which part of a recording a command is about.
 */
#pragma once

#include "Unit/Recorder/Recording.h"

#include <cstdint>
#include <string>

/** What people write for a run in place of its number. */
inline constexpr const char* LAST_RUN = "last";

/**
 * @param sRun value of the option --run: a number, or LAST_RUN
 * @throws ConfigurationError when the recording has no such run
 */
RecordedRun wantedRun(const Recording& recording, const std::string& sRun);

/**
 * @param pOption the option whose value it is, for errors
 * @param sText as parseRunTime() reads it
 * @return microseconds since the run began, at least 0
 * @throws ConfigurationError when it is no time
 */
std::uint64_t wantedTimeUs(const char* pOption, const std::string& sText, const RecordedRun& run);
