/** @file
 * The parts of a sweep's report as tables and lines.
 */
#pragma once

#include "Unit/Campaign/SweepReport.h"
#include "Unit/Text/Table.h"

#include <string>
#include <utility>
#include <vector>

/** @return what the report is about, as labels and texts */
std::vector<std::pair<std::string, std::string>> headLines(const SweepReport& report);

/** @return lowest, median and highest value of a measure, and how many runs have none */
std::string rangeText(const SweepReport& report, const MeasureEffects& effects);

/** @return the effect of each parameter on a measure */
Table effectsTable(const SweepReport& report, const MeasureEffects& effects);

/** @return the measure of a run and its parameters' values */
std::string worstText(const SweepReport& report, const MeasureEffects& effects, std::size_t nRun);

/** @return the runs by their levels */
Table groupsTable(const SweepReport& report);

/** @return the best levels */
Table bestTable(const SweepReport& report);

/** @return what conditions hold, and what the table shows, in a sentence */
std::string groupsText(const SweepReport& report);
