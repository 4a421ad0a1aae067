/** @file
 * Which parameter of a sweep moves a measure, and by how much.
 */
#pragma once

#include "Unit/Campaign/SweepRuns.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/** A measure over some runs. Failed runs have no part in it. */
struct MeasureStatistics
{
    std::uint64_t nRuns = 0;    /**< that have the measure */
    std::uint64_t nWithout = 0; /**< that went well and do not have it */
    double mean = NO_MEASURE;
    double minimum = NO_MEASURE;
    double maximum = NO_MEASURE;
};

/** What a parameter does to a measure. */
struct ParameterEffect
{
    std::size_t nParameter = 0;
    std::vector<MeasureStatistics> levels; /**< by the parameter's levels */
    double effect = NO_MEASURE;            /**< largest less smallest mean of its levels */
    double share =
        NO_MEASURE; /**< of the measure's variance that lies between the levels, 0 to 1; none without variance */
    double chance = NO_MEASURE; /**< share that a parameter without any effect is to be expected to have */
};

/** What moves a measure. */
struct MeasureEffects
{
    std::size_t nMeasure = 0; /**< of the runs' measures */
    MeasureStatistics all;
    double median = NO_MEASURE;
    std::optional<std::size_t> nFirstWithout; /**< first run without the measure */
    std::vector<ParameterEffect> parameters;  /**< the one with the largest share first */
    std::vector<std::size_t> worst;           /**< runs, the worst first; none where all are the same */
};

/** @return the statistics of a measure over the given runs */
MeasureStatistics statisticsOf(const SweepRuns& runs, std::size_t nMeasure, const std::vector<std::size_t>& indices);

/** @return whether the first value of a measure is worse than the second */
bool isWorse(const RunMeasureKey& key, double first, double second);

/** @param nWorst how many of the worst runs to name */
MeasureEffects effectsOn(const SweepRuns& runs, std::size_t nMeasure, std::size_t nWorst);
