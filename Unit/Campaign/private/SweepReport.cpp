#include "Unit/Campaign/SweepReport.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Configuration/NearName.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace
{
constexpr std::array<const char*, 4> USUAL_MEASURES = {"settling_max_ms", "overshoot_db", "steady_rms_db",
                                                       "limit_cycle_db"};

/** @return the measures that are shown, and behind them those that conditions need */
std::vector<const RunMeasureKey*> neededMeasures(const SweepQuestion& question)
{
    std::vector<const RunMeasureKey*> measures = question.measures;
    for (const SweepCondition& condition : question.conditions) {
        if (std::find(measures.begin(), measures.end(), condition.pMeasure) == measures.end()) {
            measures.push_back(condition.pMeasure);
        }
    }
    return measures;
}

SweepRuns readRuns(const ResultsFile& results, const SweepQuestion& question)
{
    SweepRunCollector collector(results.definition(), neededMeasures(question));
    results.forEach([&collector](const ResultRow& row) { collector.add(row); });
    return collector.finish();
}

std::uint64_t runsOf(const ResultsFile& results)
{
    const Shard& shard = results.description().shard;
    return (results.definition().nRuns + shard.nCount - shard.nIndex) / shard.nCount;
}
} // namespace

std::vector<const RunMeasureKey*> usualMeasures(const SweepDefinition& definition)
{
    std::vector<std::string> names = definition.measures;
    if (names.empty()) {
        names.assign(USUAL_MEASURES.begin(), USUAL_MEASURES.end());
    }
    std::vector<const RunMeasureKey*> measures;
    for (const std::string& sName : names) {
        const RunMeasureKey* const pKey = &measureNamed(sName, definition.sPath);
        if (std::find(measures.begin(), measures.end(), pKey) == measures.end()) {
            measures.push_back(pKey);
        }
    }
    return measures;
}

std::size_t parameterNamed(const SweepDefinition& definition, const std::string& sName, const std::string& sWhere)
{
    const auto& parameters = definition.parameters;
    const auto found = std::find_if(parameters.begin(), parameters.end(), [&sName](const SweepParameter& parameter) {
        return parameter.sPath == sName || parameter.sName == sName;
    });
    if (found == parameters.end()) {
        std::vector<std::string> names;
        std::transform(parameters.begin(), parameters.end(), std::back_inserter(names),
                       [](const SweepParameter& parameter) { return parameter.sPath; });
        throw ConfigurationError(fmt::format("{}: \"{}\" is no parameter of the sweep; {}", sWhere, sName,
                                             knownNames(sName, names, "its parameters are")));
    }
    return static_cast<std::size_t>(found - parameters.begin());
}

SweepReport::SweepReport(const ResultsFile& resultsFile, SweepQuestion whatIsAsked)
    : results(resultsFile), question(std::move(whatIsAsked)), replay(results), runs(readRuns(results, question)),
      nTotal(runsOf(results))
{
    if (runs.size() == 0) {
        throw ConfigurationError(
            fmt::format("{}: has no finished run of {} yet; opc sweep makes them", results.path(), nTotal));
    }
    if (question.by.empty()) {
        for (std::size_t nMeasure = 0; nMeasure < question.measures.size(); ++nMeasure) {
            effects.push_back(effectsOn(runs, nMeasure, question.nWorst));
        }
        return;
    }
    groups = groupRuns(runs, question.by, question.measures.size(), question.conditions);
    if (question.bBest) {
        bests = bestLevels(runs, groups);
    }
}
