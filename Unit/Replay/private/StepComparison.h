/** @file
 * What differs between two steps.
 */
#pragma once

#include "Unit/Process/StepSample.h"
#include "Unit/Replay/ReplayCheck.h"

#include <vector>

/** @return all values that differ, but the lateness, which no one can repeat */
std::vector<StepDifference> differencesOf(const StepSample& recorded, const StepSample& now);
