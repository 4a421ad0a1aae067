#include "Unit/Simulator/MeasureText.h"
#include "Unit/Simulator/RunReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace
{
void addLine(std::string& sText, const char* pLabel, const std::string& sValue)
{
    fmt::format_to(std::back_inserter(sText), "  {:<24}{}\n", pLabel, sValue);
}

std::string speedText(const RunReport& report)
{
    if (report.wallSeconds <= 0.0) {
        return "no time";
    }
    return fmt::format("{:.3f} s, {:.0f} steps/s, {:.0f} times real time", report.wallSeconds,
                       report.measures.steps / report.wallSeconds,
                       report.scenario.durationSeconds / report.wallSeconds);
}

void addMeasures(std::string& sText, const RunMeasures& measures)
{
    for (const RunMeasureKey& key : runMeasureKeys()) {
        if (const char* const pGroup = measureGroup(key)) {
            sText += std::string(pGroup) + "\n";
        }
        fmt::format_to(std::back_inserter(sText), "  {:<22}{:>13}  {}\n", key.pName,
                       measureText(key, measures.*key.pField), key.pMeaning);
    }
}
} // namespace

std::string reportText(const RunReport& report)
{
    const Scenario& scenario = report.scenario;
    std::string sText = "Summary\n";
    addLine(sText, "scenario", scenario.sPath);
    if (!scenario.sTitle.empty()) {
        addLine(sText, "title", scenario.sTitle);
    }
    for (const ScenarioOverride& value : report.overrides) {
        addLine(sText, "with", value.sPath + " = " + value.sValue);
    }
    addLine(sText, "simulated",
            fmt::format("{} s at {} ms, seed {}", scenario.durationSeconds, scenario.unit.intervalMs,
                        scenario.channel().nSeed));
    addLine(sText, "took", speedText(report));
    for (const std::string& sOutput : report.outputs) {
        addLine(sText, "written", sOutput);
    }
    addMeasures(sText, report.measures);
    if (!report.expectations.empty()) {
        const auto nMet = std::count_if(report.expectations.begin(), report.expectations.end(),
                                        [](const ExpectationResult& result) { return result.bMet; });
        sText += fmt::format("expectations\n  {} of {} met\n", nMet, report.expectations.size());
    }
    return sText;
}

std::string violationsText(const RunReport& report)
{
    std::string sText;
    for (const SafetyViolation& violation : report.violations) {
        sText += "safety: " + violationText(violation) + "\n" + violationCalls(violation);
    }
    const double others = report.measures.safetyViolations - static_cast<double>(report.violations.size());
    if (others > 0.0) {
        sText += fmt::format("safety: {:.0f} more violations of the same rules\n", others);
    }
    return sText;
}

std::string missedText(const RunReport& report)
{
    std::string sText;
    for (const ExpectationResult& result : report.expectations) {
        if (!result.bMet) {
            const RunMeasureKey& key = *result.band.pMeasure;
            sText += fmt::format("missed: {} is {}, expected {}\n", key.pName,
                                 std::isnan(result.value) ? std::string("none") : measureText(key, result.value),
                                 bandText(result.band));
        }
    }
    return sText;
}
