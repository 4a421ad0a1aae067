/** @file
 * The runs of a sweep by the levels of some of its parameters, and which of them meet conditions.
 */
#pragma once

#include "Unit/Campaign/SweepEffects.h"
#include "Unit/Campaign/SweepRuns.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** How a measure is compared. */
enum class EComparison
{
    Less,
    AtMost,
    Greater,
    AtLeast
};

/** What a run's measure has to be; one that does not exist is never so. */
struct SweepCondition
{
    const RunMeasureKey* pMeasure = nullptr;
    EComparison eComparison = EComparison::AtMost;
    double bound = 0.0;
};

/** @return the measure of a name @throws ConfigurationError that begins with sWhere and tells the near ones */
const RunMeasureKey& measureNamed(const std::string& sName, const std::string& sWhere);

/** Reads a condition such as "limit_cycle_db<=0.1". @throws ConfigurationError that begins with sWhere */
SweepCondition parseCondition(const std::string& sText, const std::string& sWhere);

/** @return such as "limit_cycle_db<=0.1" */
std::string conditionText(const SweepCondition& condition);

/** Runs that have the same levels. */
struct SweepGroup
{
    std::vector<std::size_t> levels; /**< by the parameters asked for */
    std::uint64_t nRuns = 0;         /**< failed ones included, which meet no condition */
    std::uint64_t nFailed = 0;
    std::uint64_t nMeeting = 0; /**< runs that meet all conditions */
    std::vector<MeasureStatistics> measures;
};

/**
 * @param by parameters, at least one
 * @param nMeasures how many of the runs' measures to tell
 * @param conditions over the runs' measures
 * @return the groups that have runs, ascending by levels
 */
std::vector<SweepGroup> groupRuns(const SweepRuns& runs, const std::vector<std::size_t>& by, std::size_t nMeasures,
                                  const std::vector<SweepCondition>& conditions);

/** What is the best level of the first parameter where all others have the same. */
struct BestLevel
{
    std::vector<std::size_t> levels;  /**< of the other parameters */
    std::vector<std::size_t> meeting; /**< levels of the first, all of whose runs meet all conditions; ascending */
    std::optional<SweepGroup> best;   /**< the one of these with the best mean of the first measure */
};

/** @return the best level for each combination of the other parameters; a level whose runs lack the measure is none */
std::vector<BestLevel> bestLevels(const SweepRuns& runs, const std::vector<SweepGroup>& groups);
