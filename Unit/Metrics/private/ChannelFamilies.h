/** @file
 * The channels' part of the metrics.
 */
#pragma once

#include "Unit/Metrics/UnitMetrics.h"
#include "Unit/Metrics/private/Families.h"

/** Adds every family that has a value for each channel. A family without any value is left out. */
void addChannelFamilies(Families& families, const std::vector<ChannelMetrics>& channels);
