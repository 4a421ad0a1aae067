#include "Unit/Campaign/SweepGroups.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Configuration/NearName.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <map>
#include <utility>

namespace
{
/** Those that begin with another one come first. */
constexpr std::array<std::pair<const char*, EComparison>, 4> COMPARISONS = {
    {{"<=", EComparison::AtMost}, {">=", EComparison::AtLeast}, {"<", EComparison::Less}, {">", EComparison::Greater}}};

bool isMet(const SweepCondition& condition, double value)
{
    switch (condition.eComparison) {
    case EComparison::Less:
        return value < condition.bound;
    case EComparison::AtMost:
        return value <= condition.bound;
    case EComparison::Greater:
        return value > condition.bound;
    case EComparison::AtLeast:
        break;
    }
    return value >= condition.bound;
}

/** @return for each condition the column of its measure */
std::vector<const std::vector<double>*> columnsOf(const SweepRuns& runs, const std::vector<SweepCondition>& conditions)
{
    std::vector<const std::vector<double>*> columns;
    for (const SweepCondition& condition : conditions) {
        const auto place = std::find(runs.measures.begin(), runs.measures.end(), condition.pMeasure);
        columns.push_back(&runs.values.at(static_cast<std::size_t>(place - runs.measures.begin())));
    }
    return columns;
}

bool isFullyMet(const SweepGroup& group)
{
    return group.nMeeting == group.nRuns && group.measures.front().nRuns == group.nRuns;
}
} // namespace

const RunMeasureKey& measureNamed(const std::string& sName, const std::string& sWhere)
{
    const auto& keys = runMeasureKeys();
    const auto* const found =
        std::find_if(keys.begin(), keys.end(), [&sName](const RunMeasureKey& key) { return sName == key.pName; });
    if (found == keys.end()) {
        std::vector<std::string> names;
        std::transform(keys.begin(), keys.end(), std::back_inserter(names),
                       [](const RunMeasureKey& key) { return key.pName; });
        throw ConfigurationError(
            fmt::format("{}: \"{}\" is no measure; {}", sWhere, sName, knownNames(sName, names, "the measures are")));
    }
    return *found;
}

SweepCondition parseCondition(const std::string& sText, const std::string& sWhere)
{
    const std::size_t nSign = sText.find_first_of("<>");
    for (const auto& [pSign, eComparison] : COMPARISONS) {
        if (nSign == std::string::npos || !sText.substr(nSign).starts_with(pSign)) {
            continue;
        }
        const std::string sNumber = sText.substr(nSign + std::string(pSign).size());
        SweepCondition condition{&measureNamed(sText.substr(0, nSign), sWhere), eComparison, 0.0};
        const char* const pEnd = sNumber.data() + sNumber.size();
        const auto [pRead, error] = std::from_chars(sNumber.data(), pEnd, condition.bound);
        if (error != std::errc() || pRead != pEnd || !std::isfinite(condition.bound)) {
            throw ConfigurationError(
                fmt::format("{}: \"{}\" compares with \"{}\", which is not a number; write such as "
                            "limit_cycle_db<=0.1",
                            sWhere, sText, sNumber));
        }
        return condition;
    }
    throw ConfigurationError(
        fmt::format("{}: \"{}\" is not a condition; write a measure, one of <=, <, >= and >, and a "
                    "number, such as limit_cycle_db<=0.1",
                    sWhere, sText));
}

std::string conditionText(const SweepCondition& condition)
{
    const auto* const sign = std::find_if(COMPARISONS.begin(), COMPARISONS.end(), [&condition](const auto& comparison) {
        return comparison.second == condition.eComparison;
    });
    return fmt::format("{}{}{}", condition.pMeasure->pName, sign->first, condition.bound);
}

std::vector<SweepGroup> groupRuns(const SweepRuns& runs, const std::vector<std::size_t>& by, std::size_t nMeasures,
                                  const std::vector<SweepCondition>& conditions)
{
    std::map<std::vector<std::size_t>, std::vector<std::size_t>> runsOf;
    for (std::size_t nRun = 0; nRun < runs.size(); ++nRun) {
        std::vector<std::size_t> levels;
        levels.reserve(by.size());
        for (const std::size_t nParameter : by) {
            levels.push_back(runs.parameters[nParameter].levelOf[nRun]);
        }
        runsOf[std::move(levels)].push_back(nRun);
    }
    const auto columns = columnsOf(runs, conditions);
    std::vector<SweepGroup> groups;
    for (const auto& [levels, indices] : runsOf) {
        SweepGroup group;
        group.levels = levels;
        group.nRuns = indices.size();
        for (const std::size_t nRun : indices) {
            bool bMeets = !runs.failed[nRun];
            for (std::size_t n = 0; n < conditions.size(); ++n) {
                bMeets = bMeets && isMet(conditions[n], (*columns[n])[nRun]);
            }
            group.nMeeting += bMeets ? 1 : 0;
            group.nFailed += runs.failed[nRun] ? 1 : 0;
        }
        group.measures.reserve(nMeasures);
        for (std::size_t nMeasure = 0; nMeasure < nMeasures; ++nMeasure) {
            group.measures.push_back(statisticsOf(runs, nMeasure, indices));
        }
        groups.push_back(std::move(group));
    }
    return groups;
}

std::vector<BestLevel> bestLevels(const SweepRuns& runs, const std::vector<SweepGroup>& groups)
{
    std::map<std::vector<std::size_t>, BestLevel> bests;
    for (const SweepGroup& group : groups) { // ascending by the first parameter's level
        const std::vector<std::size_t> others(group.levels.begin() + 1, group.levels.end());
        BestLevel& best = bests[others];
        best.levels = others;
        if (!isFullyMet(group)) {
            continue;
        }
        best.meeting.push_back(group.levels.front());
        const double mean = group.measures.front().mean;
        if (!best.best || isWorse(*runs.measures.front(), best.best->measures.front().mean, mean)) {
            best.best = group;
        }
    }
    std::vector<BestLevel> ordered;
    ordered.reserve(bests.size());
    for (auto& [levels, best] : bests) {
        ordered.push_back(std::move(best));
    }
    return ordered;
}
