/** @file
 * Measures as people read them.
 */
#pragma once

#include "Unit/Simulator/Scenario.h"

#include <string>

/** @return the unit that follows a value, such as "dB"; empty for a count */
std::string measureUnit(const RunMeasureKey& key);

/** @return the name without its unit, in words, such as "settling max" */
std::string measureTitle(const RunMeasureKey& key);

/** @return what a value is multiplied with to be in its unit: shares are shown in percent */
double measureScale(const RunMeasureKey& key);

/** @return the value with its unit, "-" when there is none */
std::string measureText(const RunMeasureKey& key, double value);

/** @return what is expected, such as "at most 150 ms" */
std::string bandText(const MeasureBand& band);

/** @return the heading of the group of measures that begins with this one; null when none begins */
const char* measureGroup(const RunMeasureKey& key);
