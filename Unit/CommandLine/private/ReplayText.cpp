#include "Unit/CommandLine/private/ReplayText.h"

#include "Platform/Conversions.h"
#include "Unit/Text/IsoTime.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <filesystem>

using nlohmann::ordered_json;

namespace
{
double secondsOf(std::uint64_t nTimeUs)
{
    return static_cast<double>(nTimeUs) / US_PER_S;
}

std::string counted(std::uint64_t nCount, const char* pWhat)
{
    return fmt::format("{} {}{}", nCount, pWhat, nCount == 1 ? "" : "s");
}

/** @return the run's number and file, when it was, and by which version */
std::string nameOf(const CheckedRun& checked)
{
    const std::string sVersion =
        checked.run.sVersion == checked.sVersion ? "" : fmt::format(", checked by opc {}", checked.sVersion);
    return fmt::format("run {} of {}, {}, opc {}{}", checked.run.nId,
                       std::filesystem::path(checked.sFile).filename().string(), isoTime(checked.run.nStartedUnixUs),
                       checked.run.sVersion, sVersion);
}

std::string differenceText(const StepDifference& difference)
{
    return fmt::format("{} recorded {}, now {}", difference.sQuantity, difference.sRecorded, difference.sNow);
}

/** @return the first difference in a line, what else differs in others */
std::string stepText(const CheckedRun& checked, const DifferentStep& step)
{
    const std::int64_t nUnixUs = checked.run.nStartedUnixUs + static_cast<std::int64_t>(step.nTimeUs);
    std::string sText =
        fmt::format("first difference at {:.6f} s ({}), channel {}, step {}: {}\n", secondsOf(step.nTimeUs),
                    isoTime(nUnixUs), step.nChannel, step.nStep, differenceText(step.differences.front()));
    for (std::size_t nOther = 1; nOther < step.differences.size(); ++nOther) {
        sText += fmt::format("  also {}\n", differenceText(step.differences[nOther]));
    }
    return sText;
}

std::string eventText(const RunEvent& event)
{
    const std::string sChannel = event.nChannelNumber ? fmt::format("channel {}: ", *event.nChannelNumber) : "";
    return fmt::format("{:.6f} s  {}{}", secondsOf(event.nTimeUs), sChannel, event.sText);
}

std::string resultText(const CheckedRun& checked, const ReplayOutcome& outcome)
{
    const std::string sDone = fmt::format(
        "{} of {} and {} carried out again in {:.1f} s", counted(outcome.nSteps, "step"),
        counted(checked.run.channels.size(), "channel"), counted(outcome.nCommands, "command"), outcome.seconds);
    switch (outcome.eResult) {
    case EReplayResult::Equal:
        return fmt::format("{}: equal\n", sDone);
    case EReplayResult::Different:
        return outcome.step ? stepText(checked, *outcome.step) : fmt::format("first difference: {}\n", outcome.sReason);
    case EReplayResult::NotRepeated:
        break;
    }
    return outcome.nSteps == 0 ? fmt::format("cannot be repeated: {}\n", outcome.sReason)
                               : fmt::format("{}; cannot be repeated further: {}\n", sDone, outcome.sReason);
}
} // namespace

std::string replayText(const CheckedRun& checked, const ReplayOutcome& outcome)
{
    std::string sText = fmt::format("{}: {}", nameOf(checked), resultText(checked, outcome));
    if (!outcome.precedingEvents.empty()) {
        sText += "  what came before:\n";
        for (const RunEvent& event : outcome.precedingEvents) {
            sText += fmt::format("    {}\n", eventText(event));
        }
    }
    for (const std::string& sNote : outcome.notes) {
        sText += fmt::format("  {}\n", sNote);
    }
    return sText;
}

std::string replayJson(const CheckedRun& checked, const ReplayOutcome& outcome)
{
    ordered_json json = {{"file", checked.sFile},
                         {"run", checked.run.nId},
                         {"started", isoTime(checked.run.nStartedUnixUs)},
                         {"recorded_by", checked.run.sVersion},
                         {"checked_by", checked.sVersion},
                         {"result", replayResultName(outcome.eResult)},
                         {"steps", outcome.nSteps},
                         {"unrecorded_steps", outcome.nUnrecordedSteps},
                         {"channels", checked.run.channels},
                         {"commands", outcome.nCommands},
                         {"seconds", outcome.seconds},
                         {"reason", outcome.sReason},
                         {"differences", ordered_json::array()},
                         {"preceding_events", ordered_json::array()},
                         {"notes", outcome.notes}};
    if (outcome.step) {
        json["time_us"] = outcome.step->nTimeUs;
        json["channel"] = outcome.step->nChannel;
        json["step"] = outcome.step->nStep;
        for (const StepDifference& difference : outcome.step->differences) {
            json["differences"].push_back(
                {{"quantity", difference.sQuantity}, {"recorded", difference.sRecorded}, {"now", difference.sNow}});
        }
    }
    for (const RunEvent& event : outcome.precedingEvents) {
        json["preceding_events"].push_back(eventText(event));
    }
    return json.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}
