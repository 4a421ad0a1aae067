/** @file
 * Measures as people read them.
 */
#pragma once

#include "Unit/Simulator/Scenario.h"

#include <string>

/** @return the value with its unit, "-" when there is none */
std::string measureText(const RunMeasureKey& key, double value);

/** @return what is expected, such as "at most 150 ms" */
std::string bandText(const MeasureBand& band);

/** @return the heading of the group of measures that begins with this one; null when none begins */
const char* measureGroup(const RunMeasureKey& key);
