#include "Unit/Simulator/RunReport.h"

#include "Unit/Text/ShellWord.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

using nlohmann::ordered_json;

namespace
{
/** Counts have no unit in their name, and are whole. */
ordered_json numberOrNull(double value)
{
    constexpr double MOST_EXACT = 9007199254740992.0; // 2^53
    if (!std::isfinite(value)) {
        return nullptr;
    }
    if (value == std::floor(value) && std::abs(value) < MOST_EXACT) {
        return static_cast<std::int64_t>(value);
    }
    return value;
}

ordered_json expectationJson(const ExpectationResult& result)
{
    const MeasureBand& band = result.band;
    ordered_json json = {{"measure", band.pMeasure->pName}};
    if (std::isnan(band.minimum)) {
        json["expected"] = "none";
    }
    else {
        json["minimum"] = numberOrNull(band.minimum);
        json["maximum"] = numberOrNull(band.maximum);
    }
    json["value"] = numberOrNull(result.value);
    json["met"] = result.bMet;
    return json;
}

ordered_json violationJson(const SafetyViolation& violation)
{
    ordered_json json = {{"rule", safetyRuleName(violation.eRule)},
                         {"step", violation.nStep},
                         {"text", violationText(violation)},
                         {"calls", ordered_json::array()}};
    for (std::size_t nCall = 0; nCall < violation.nCalls; ++nCall) {
        json["calls"].push_back(callText(violation.calls[nCall]));
    }
    return json;
}
} // namespace

bool isWithin(const MeasureBand& band, double value)
{
    if (std::isnan(band.minimum) && std::isnan(band.maximum)) {
        return std::isnan(value);
    }
    return value >= band.minimum && value <= band.maximum;
}

std::vector<ExpectationResult> checkExpectations(const std::vector<MeasureBand>& bands, const RunMeasures& measures)
{
    std::vector<ExpectationResult> results;
    for (const MeasureBand& band : bands) {
        const double value = measures.*band.pMeasure->pField;
        results.push_back({band, value, isWithin(band, value)});
    }
    return results;
}

bool RunReport::allMet() const
{
    return std::all_of(expectations.begin(), expectations.end(),
                       [](const ExpectationResult& result) { return result.bMet; });
}

bool RunReport::isSafe() const
{
    const bool bExpected = std::any_of(expectations.begin(), expectations.end(), [](const ExpectationResult& result) {
        return result.band.pMeasure->pField == &RunMeasures::safetyViolations;
    });
    return bExpected || !(measures.safetyViolations > 0.0);
}

std::string reportJson(const RunReport& report)
{
    const Scenario& scenario = report.scenario;
    ordered_json json;
    json["scenario"] = scenario.sPath;
    json["title"] = scenario.sTitle;
    json["seed"] = scenario.channel().nSeed;
    json["duration_s"] = numberOrNull(scenario.durationSeconds);
    json["interval_ms"] = scenario.unit.intervalMs;
    json["overrides"] = ordered_json::array();
    for (const ScenarioOverride& value : report.overrides) {
        json["overrides"].push_back({{"path", value.sPath}, {"value", value.sValue}});
    }
    json["command"] = replayCommand(report);
    json["measures"] = ordered_json::object();
    for (const RunMeasureKey& key : runMeasureKeys()) {
        json["measures"][key.pName] = numberOrNull(report.measures.*key.pField);
    }
    json["expectations"] = ordered_json::array();
    for (const ExpectationResult& result : report.expectations) {
        json["expectations"].push_back(expectationJson(result));
    }
    json["violations"] = ordered_json::array();
    for (const SafetyViolation& violation : report.violations) {
        json["violations"].push_back(violationJson(violation));
    }
    json["warnings"] = report.warnings;
    constexpr int nIndent = 2;
    // A path may have bytes that are no text.
    return json.dump(nIndent, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

std::string replayCommand(const RunReport& report)
{
    std::string sCommand = "opc simulate " + shellWord(report.scenario.sPath);
    for (const ScenarioOverride& value : report.overrides) {
        sCommand += " --set " + shellWord(value.sPath + "=" + value.sValue);
    }
    return sCommand;
}
