/** @file
 * A recording as CSV.
 */
#pragma once

#include "Unit/Recorder/Recording.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

/** What to export. */
struct RecordingExport
{
    EResolution eResolution = EResolution::Steps;
    std::vector<unsigned int> channels; /**< those that get columns, in this order */
    std::uint64_t nFromUs = 0;          /**< since the run began */
    std::uint64_t nToUs = 0;            /**< included */

    std::function<void(std::string_view)> write;         /**< takes the text, a part at a time */
    std::function<void(std::uint64_t nTimeUs)> progress; /**< is told how far it is; often */
};

/**
 * Writes a row per time, with columns for each channel, such as "ch0/pmeasured_dBm"; cells are empty where there is
 * nothing to tell.
 */
void exportSteps(const Recording& recording, const RecordedRun& run, const RecordingExport& request);

/** Writes a row per event of the channels, and of the unit. */
void exportEvents(const Recording& recording, const RecordedRun& run, const RecordingExport& request);
