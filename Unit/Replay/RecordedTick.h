/** @file
 * What is recorded of one deadline.
 */
#pragma once

#include "Unit/Process/StepSample.h"

#include <cstdint>
#include <functional>
#include <vector>

/** The steps that the channels of a run took at one deadline. */
struct RecordedTick
{
    std::uint64_t nTimeUs = 0;
    std::uint64_t nSteps = 0;    /**< that each channel had taken then, these included */
    std::uint32_t nOverruns = 0; /**< deadlines skipped since the run began */
    std::vector<StepSample> samples;
};

/** Gives the next tick, in the order of their times. @return false when there is none any more */
using TickSource = std::function<bool(RecordedTick& tick)>;
