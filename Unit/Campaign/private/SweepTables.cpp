#include "Unit/Campaign/private/SweepTables.h"

#include "Unit/Simulator/MeasureText.h"
#include "Unit/Text/OneLine.h"

#include <fmt/format.h>

#include <cmath>

namespace
{
constexpr std::size_t MOST_LISTED = 8;

std::string percentText(double share)
{
    return std::isnan(share) ? "-" : fmt::format("{:.1f} %", 100.0 * share);
}

std::string levelsText(const SweepColumn& column)
{
    const auto& levels = column.levels;
    if (column.bGrouped) {
        return fmt::format("{:.4g} to {:.4g}, drawn, in {} groups", levels.front().minimum, levels.back().maximum,
                           levels.size());
    }
    if (levels.size() > MOST_LISTED && column.bNumbers) {
        return fmt::format("{} values from {} to {}", levels.size(), levels.front().sLabel, levels.back().sLabel);
    }
    std::string sText;
    for (const SweepLevel& level : levels) {
        sText += (sText.empty() ? "" : ", ") + level.sLabel;
    }
    return sText;
}

std::string scenarioText(const SweepReport& report)
{
    const auto& duration = report.definition().durationSeconds;
    return report.replay.scenario() + (duration ? fmt::format(", {} s", *duration) : "");
}

std::string runsText(const SweepReport& report)
{
    const Shard& shard = report.results.description().shard;
    std::string sText = fmt::format("{} of {}", report.runs.size(), report.nTotal);
    sText += shard.nCount == 1 ? "" : fmt::format(" of shard {}/{}", shard.nIndex, shard.nCount);
    return sText + fmt::format(" made, {} failed, {} missing", report.runs.nFailed, report.nTotal - report.runs.size());
}

/** @return levels, with those that follow each other drawn together, such as "5, 20 to 60" */
std::string rangesText(const SweepColumn& column, const std::vector<std::size_t>& levels)
{
    std::string sText;
    for (std::size_t n = 0; n < levels.size();) {
        std::size_t nLast = n;
        while (column.bNumbers && nLast + 1 < levels.size() && levels[nLast + 1] == levels[nLast] + 1) {
            ++nLast;
        }
        sText += (sText.empty() ? "" : ", ") + column.levels[levels[n]].sLabel;
        sText += nLast == n ? "" : (nLast == n + 1 ? ", " : " to ") + column.levels[levels[nLast]].sLabel;
        n = nLast + 1;
    }
    return sText.empty() ? "-" : sText;
}

const char* bestWord(const RunMeasureKey& key)
{
    switch (key.eWorse) {
    case EWorse::Smaller:
        return "highest";
    case EWorse::FartherFromZero:
        return "smallest";
    case EWorse::Larger:
        break;
    }
    return "lowest";
}

void addMeasureHeadings(const SweepReport& report, Table& table)
{
    for (const RunMeasureKey* pKey : report.question.measures) {
        table.headings.push_back(std::string(pKey->pName) + " mean");
        table.headings.emplace_back("max");
    }
}

void addMeasures(const SweepReport& report, const std::vector<MeasureStatistics>& measures,
                 std::vector<std::string>& cells)
{
    for (std::size_t n = 0; n < measures.size(); ++n) {
        cells.push_back(measureText(*report.question.measures[n], measures[n].mean));
        cells.push_back(measureText(*report.question.measures[n], measures[n].maximum));
    }
}
} // namespace

std::vector<std::pair<std::string, std::string>> headLines(const SweepReport& report)
{
    std::vector<std::pair<std::string, std::string>> lines = {
        {"sweep", report.definition().sPath}, {"scenario", scenarioText(report)}, {"runs", runsText(report)}};
    for (std::size_t n = 0; n < report.runs.parameters.size(); ++n) {
        const SweepParameter& parameter = report.parameter(n);
        lines.emplace_back(oneLine(parameter.sName),
                           levelsText(report.runs.parameters[n]) +
                               (parameter.sName == parameter.sPath ? "" : fmt::format(" ({})", parameter.sPath)));
    }
    return lines;
}

std::string rangeText(const SweepReport& report, const MeasureEffects& effects)
{
    const RunMeasureKey& key = *report.runs.measures[effects.nMeasure];
    std::string sText = fmt::format("lowest {}, median {}, highest {}", measureText(key, effects.all.minimum),
                                    measureText(key, effects.median), measureText(key, effects.all.maximum));
    if (effects.all.nRuns == 0) {
        return "no run has it";
    }
    if (effects.nFirstWithout) {
        sText += fmt::format("; {} runs have none, the first of them run {}", effects.all.nWithout,
                             report.runs.numbers[*effects.nFirstWithout]);
    }
    return sText;
}

Table effectsTable(const SweepReport& report, const MeasureEffects& effects)
{
    const RunMeasureKey& key = *report.runs.measures[effects.nMeasure];
    Table table{{"parameter", "effect", "share of variance", "by chance"}, {}};
    for (const ParameterEffect& effect : effects.parameters) {
        table.rows.push_back({oneLine(report.parameter(effect.nParameter).sName), measureText(key, effect.effect),
                              percentText(effect.share), percentText(effect.chance)});
    }
    return table;
}

std::string worstText(const SweepReport& report, const MeasureEffects& effects, std::size_t nRun)
{
    const RunMeasureKey& key = *report.runs.measures[effects.nMeasure];
    const RunPlan plan = planRun(report.definition(), report.runs.numbers[nRun]);
    std::string sText =
        fmt::format("run {}: {}", plan.nNumber, measureText(key, report.runs.values[effects.nMeasure][nRun]));
    for (std::size_t n = 0; n < plan.values.size(); ++n) {
        sText += fmt::format(", {} {}", oneLine(report.parameter(n).sName), plan.values[n].sToml);
    }
    return sText;
}

Table groupsTable(const SweepReport& report)
{
    Table table;
    for (const std::size_t nParameter : report.question.by) {
        table.headings.push_back(oneLine(report.parameter(nParameter).sName));
    }
    table.headings.emplace_back("runs");
    if (report.runs.nFailed > 0) {
        table.headings.emplace_back("failed");
    }
    if (!report.question.conditions.empty()) {
        table.headings.emplace_back("meeting");
    }
    addMeasureHeadings(report, table);
    for (const SweepGroup& group : report.groups) {
        std::vector<std::string> cells;
        for (std::size_t n = 0; n < group.levels.size(); ++n) {
            cells.push_back(report.runs.parameters[report.question.by[n]].levels[group.levels[n]].sLabel);
        }
        cells.push_back(fmt::format("{}", group.nRuns));
        if (report.runs.nFailed > 0) {
            cells.push_back(fmt::format("{}", group.nFailed));
        }
        if (!report.question.conditions.empty()) {
            cells.push_back(percentText(static_cast<double>(group.nMeeting) / static_cast<double>(group.nRuns)));
        }
        addMeasures(report, group.measures, cells);
        table.rows.push_back(std::move(cells));
    }
    return table;
}

Table bestTable(const SweepReport& report)
{
    const auto& by = report.question.by;
    const SweepColumn& column = report.runs.parameters[by.front()];
    const std::string sFirst = oneLine(report.parameter(by.front()).sName);
    Table table;
    for (std::size_t n = 1; n < by.size(); ++n) {
        table.headings.push_back(oneLine(report.parameter(by[n]).sName));
    }
    table.headings.push_back("meeting: " + sFirst);
    table.headings.push_back("best");
    addMeasureHeadings(report, table);
    for (const BestLevel& best : report.bests) {
        std::vector<std::string> cells;
        for (std::size_t n = 0; n < best.levels.size(); ++n) {
            cells.push_back(report.runs.parameters[by[n + 1]].levels[best.levels[n]].sLabel);
        }
        cells.push_back(rangesText(column, best.meeting));
        cells.push_back(best.best ? column.levels[best.best->levels.front()].sLabel : "-");
        addMeasures(report,
                    best.best ? best.best->measures : std::vector<MeasureStatistics>(report.question.measures.size()),
                    cells);
        table.rows.push_back(std::move(cells));
    }
    return table;
}

std::string groupsText(const SweepReport& report)
{
    std::string sConditions;
    for (const SweepCondition& condition : report.question.conditions) {
        sConditions += (sConditions.empty() ? "" : " and ") + conditionText(condition);
    }
    if (!report.question.bBest) {
        return sConditions.empty() ? "all runs" : "meeting: share of the runs with " + sConditions;
    }
    const RunMeasureKey& key = *report.question.measures.front();
    return fmt::format(
        "meeting: values of {} all of whose runs have {}{}{}; best: the one of these with the {} mean {}",
        oneLine(report.parameter(report.question.by.front()).sName), key.pName, sConditions.empty() ? "" : " and ",
        sConditions, bestWord(key), key.pName);
}
