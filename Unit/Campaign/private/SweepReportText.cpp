#include "Unit/Campaign/SweepReport.h"
#include "Unit/Campaign/private/SweepTables.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

namespace
{
std::string indented(const std::string& sText)
{
    std::istringstream stream(sText);
    std::string sIndented;
    for (std::string sLine; std::getline(stream, sLine);) {
        sIndented += "  " + sLine + "\n";
    }
    return sIndented;
}

std::string effectsText(const SweepReport& report, const MeasureEffects& effects)
{
    const RunMeasureKey& key = *report.runs.measures[effects.nMeasure];
    std::string sText = fmt::format("\n{}: {}\n  {}\n", key.pName, key.pMeaning, rangeText(report, effects));
    if (effects.nFirstWithout) {
        sText += fmt::format("    {}\n", report.replay.forRun(report.runs.numbers[*effects.nFirstWithout]));
    }
    if (effects.all.nRuns > 0) {
        sText += indented(alignedText(effectsTable(report, effects)));
    }
    sText += effects.worst.empty() ? "" : "  worst\n";
    for (const std::size_t nRun : effects.worst) {
        sText += fmt::format("    {}\n      {}\n", worstText(report, effects, nRun),
                             report.replay.forRun(report.runs.numbers[nRun]));
    }
    return sText;
}

std::string failuresText(const SweepReport& report)
{
    if (report.runs.failures.empty()) {
        return {};
    }
    std::string sText = fmt::format("\nfailed: {} runs\n", report.runs.nFailed);
    for (const FailedRun& run : report.runs.failures) {
        sText += fmt::format("  run {}: {}\n    {}\n", run.nNumber, run.sError, report.replay.forRun(run.nNumber));
    }
    if (report.runs.nFailed > report.runs.failures.size()) {
        sText += "  and more, which --csv has\n";
    }
    return sText;
}
} // namespace

std::string sweepReportText(const SweepReport& report)
{
    std::string sText = report.definition().sTitle + "\n";
    const auto lines = headLines(report);
    std::size_t nWidth = 0;
    for (const auto& [sLabel, sValue] : lines) {
        nWidth = std::max(nWidth, sLabel.size());
    }
    for (const auto& [sLabel, sValue] : lines) {
        sText += fmt::format("  {:<{}}  {}\n", sLabel, nWidth, sValue);
    }
    if (!std::filesystem::exists(report.replay.scenario())) {
        sText += "  the scenario is not there any more; put it back to run the commands below\n";
    }
    if (!report.question.by.empty()) {
        sText += "\n" + groupsText(report) + "\n";
        return sText + alignedText(report.question.bBest ? bestTable(report) : groupsTable(report));
    }
    for (const MeasureEffects& effects : report.effects) {
        sText += effectsText(report, effects);
    }
    return sText + failuresText(report);
}
