#include "Unit/Campaign/SweepReport.h"

#include <nlohmann/json.hpp>

#include <cmath>

using nlohmann::ordered_json;

namespace
{
ordered_json numberOrNull(double value)
{
    return std::isfinite(value) ? ordered_json(value) : ordered_json(nullptr);
}

ordered_json levelJson(const SweepColumn& column, std::size_t nLevel)
{
    const SweepLevel& level = column.levels[nLevel];
    if (column.bGrouped) {
        return {{"from", level.minimum}, {"to", level.maximum}};
    }
    return column.bNumbers ? ordered_json(level.position) : ordered_json(level.sLabel);
}

ordered_json statisticsJson(const MeasureStatistics& statistics)
{
    return {{"runs", statistics.nRuns},
            {"without", statistics.nWithout},
            {"mean", numberOrNull(statistics.mean)},
            {"minimum", numberOrNull(statistics.minimum)},
            {"maximum", numberOrNull(statistics.maximum)}};
}

ordered_json runJson(const SweepReport& report, std::uint64_t nNumber)
{
    const RunPlan plan = planRun(report.definition(), nNumber);
    ordered_json json = {{"run", nNumber}, {"seed", plan.nSeed}};
    for (std::size_t n = 0; n < plan.values.size(); ++n) {
        const SweepValue& value = plan.values[n];
        const std::string& sToml = value.sToml;
        json["parameters"][report.parameter(n).sPath] =
            value.number ? ordered_json(*value.number)
                         : ordered_json(sToml.starts_with('"') ? sToml.substr(1, sToml.size() - 2) : sToml);
    }
    json["command"] = report.replay.forRun(nNumber);
    return json;
}

ordered_json effectsJson(const SweepReport& report, const MeasureEffects& effects)
{
    ordered_json json = {{"measure", report.runs.measures[effects.nMeasure]->pName}};
    json.update(statisticsJson(effects.all));
    json["median"] = numberOrNull(effects.median);
    json["parameters"] = ordered_json::array();
    for (const ParameterEffect& effect : effects.parameters) {
        ordered_json levels = ordered_json::array();
        for (std::size_t n = 0; n < effect.levels.size(); ++n) {
            ordered_json level = {{"level", levelJson(report.runs.parameters[effect.nParameter], n)}};
            level.update(statisticsJson(effect.levels[n]));
            levels.push_back(std::move(level));
        }
        json["parameters"].push_back({{"path", report.parameter(effect.nParameter).sPath},
                                      {"effect", numberOrNull(effect.effect)},
                                      {"share_of_variance", numberOrNull(effect.share)},
                                      {"share_by_chance", numberOrNull(effect.chance)},
                                      {"levels", std::move(levels)}});
    }
    json["worst"] = ordered_json::array();
    for (const std::size_t nRun : effects.worst) {
        ordered_json run = {{"value", report.runs.values[effects.nMeasure][nRun]}};
        run.update(runJson(report, report.runs.numbers[nRun]));
        json["worst"].push_back(std::move(run));
    }
    json["first_without"] =
        effects.nFirstWithout ? runJson(report, report.runs.numbers[*effects.nFirstWithout]) : ordered_json(nullptr);
    return json;
}

ordered_json groupJson(const SweepReport& report, const SweepGroup& group)
{
    ordered_json json;
    for (std::size_t n = 0; n < group.levels.size(); ++n) {
        const std::size_t nParameter = report.question.by[n];
        json["levels"][report.parameter(nParameter).sPath] =
            levelJson(report.runs.parameters[nParameter], group.levels[n]);
    }
    json["runs"] = group.nRuns;
    json["failed"] = group.nFailed;
    json["meeting"] = group.nMeeting;
    for (std::size_t n = 0; n < group.measures.size(); ++n) {
        json["measures"][report.question.measures[n]->pName] = statisticsJson(group.measures[n]);
    }
    return json;
}

ordered_json bestJson(const SweepReport& report, const BestLevel& best)
{
    const auto& by = report.question.by;
    ordered_json json = {{"levels", ordered_json::object()}, {"meeting", ordered_json::array()}};
    for (std::size_t n = 0; n < best.levels.size(); ++n) {
        json["levels"][report.parameter(by[n + 1]).sPath] =
            levelJson(report.runs.parameters[by[n + 1]], best.levels[n]);
    }
    for (const std::size_t nLevel : best.meeting) {
        json["meeting"].push_back(levelJson(report.runs.parameters[by.front()], nLevel));
    }
    json["best"] = best.best ? groupJson(report, *best.best) : ordered_json(nullptr);
    return json;
}

void addHead(const SweepReport& report, ordered_json& json)
{
    json["title"] = report.definition().sTitle;
    json["sweep"] = report.definition().sPath;
    json["scenario"] = report.replay.scenario();
    json["runs"] = {{"total", report.nTotal},
                    {"made", report.runs.size()},
                    {"failed", report.runs.nFailed},
                    {"missing", report.nTotal - report.runs.size()}};
    json["parameters"] = ordered_json::array();
    for (std::size_t n = 0; n < report.runs.parameters.size(); ++n) {
        const SweepColumn& column = report.runs.parameters[n];
        ordered_json levels = ordered_json::array();
        for (std::size_t nLevel = 0; nLevel < column.levels.size(); ++nLevel) {
            levels.push_back(levelJson(column, nLevel));
        }
        const SweepParameter& parameter = report.parameter(n);
        json["parameters"].push_back(
            {{"path", parameter.sPath}, {"name", parameter.sName}, {"levels", std::move(levels)}});
    }
}

void addGroups(const SweepReport& report, ordered_json& json)
{
    json["conditions"] = ordered_json::array();
    for (const SweepCondition& condition : report.question.conditions) {
        json["conditions"].push_back(conditionText(condition));
    }
    json["groups"] = ordered_json::array();
    for (const SweepGroup& group : report.groups) {
        json["groups"].push_back(groupJson(report, group));
    }
    if (report.question.bBest) {
        json["best"] = ordered_json::array();
        for (const BestLevel& best : report.bests) {
            json["best"].push_back(bestJson(report, best));
        }
    }
}
} // namespace

std::string sweepReportJson(const SweepReport& report)
{
    ordered_json json;
    addHead(report, json);
    if (report.question.by.empty()) {
        json["measures"] = ordered_json::array();
        for (const MeasureEffects& effects : report.effects) {
            json["measures"].push_back(effectsJson(report, effects));
        }
    }
    else {
        addGroups(report, json);
    }
    json["failures"] = ordered_json::array();
    for (const FailedRun& run : report.runs.failures) {
        ordered_json failure = runJson(report, run.nNumber);
        failure["error"] = run.sError;
        json["failures"].push_back(std::move(failure));
    }
    constexpr int nIndent = 2;
    // A path may have bytes that are no text.
    return json.dump(nIndent, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}
