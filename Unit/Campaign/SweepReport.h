/** @file
 * What a sweep came to, for people and for programs.
 */
#pragma once

#include "Unit/Campaign/ReplayCommand.h"
#include "Unit/Campaign/ResultsFile.h"
#include "Unit/Campaign/SweepEffects.h"
#include "Unit/Campaign/SweepGroups.h"
#include "Unit/Campaign/SweepRuns.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/** What somebody wants to know of a sweep. */
struct SweepQuestion
{
    std::vector<const RunMeasureKey*> measures; /**< at least one, each once */
    std::size_t nWorst = 3;
    std::vector<std::size_t> by; /**< parameters; empty for the effects of all, and the worst runs */
    std::vector<SweepCondition> conditions;
    bool bBest = false; /**< of the first parameter's levels, only the best for each combination of the others */
};

/** @return the measures that the sweep file names, or else the usual ones */
std::vector<const RunMeasureKey*> usualMeasures(const SweepDefinition& definition);

/** @return the parameter of a path or name @throws ConfigurationError that begins with sWhere and tells the near ones
 */
std::size_t parameterNamed(const SweepDefinition& definition, const std::string& sName, const std::string& sWhere);

/** The answer. */
struct SweepReport
{
    /** @param resultsFile outlives this @throws ConfigurationError when it has no run */
    SweepReport(const ResultsFile& resultsFile, SweepQuestion whatIsAsked);

    const SweepDefinition& definition() const { return results.definition(); }
    const SweepParameter& parameter(std::size_t nParameter) const { return definition().parameters[nParameter]; }

    const ResultsFile& results;
    SweepQuestion question;
    ReplayCommand replay;
    SweepRuns runs;
    std::uint64_t nTotal = 0; /**< runs of the campaign, or of the file's shard */
    std::vector<MeasureEffects> effects;
    std::vector<SweepGroup> groups;
    std::vector<BestLevel> bests;
};

/** @return the report for people, lines that end with newlines */
std::string sweepReportText(const SweepReport& report);

/** @return the report for programs; a measure that does not exist is null */
std::string sweepReportJson(const SweepReport& report);
