#include "Unit/CommandLine/RunSummary.h"

#include "Platform/Conversions.h"
#include "Unit/Text/PowerText.h"

#include <fmt/format.h>

#include <iterator>

namespace
{
constexpr double NANOSECONDS_PER_MILLISECOND = 1e6;

double milliseconds(std::int64_t nTimeNs)
{
    return static_cast<double>(nTimeNs) / NANOSECONDS_PER_MILLISECOND;
}

class Lines
{
public:
    template <class... TArguments> void add(const char* pLabel, const char* pFormat, const TArguments&... arguments)
    {
        fmt::format_to(std::back_inserter(m_sText), "  {:<22}{}\n", pLabel,
                       fmt::format(fmt::runtime(pFormat), arguments...));
    }

    void heading(const std::string& sText) { m_sText += sText + "\n"; }

    const std::string& text() const { return m_sText; }

private:
    std::string m_sText;
};

void addTracking(Lines& lines, const TrackingSummary& tracking, unsigned int intervalMs)
{
    lines.add("settled steps", "{}", tracking.nSettledSteps);
    if (tracking.nSettledSteps > 0) {
        lines.add("error", "mean {:.3f} dB, rms {:.3f} dB, 99 % {} dB, 99.9 % {} dB, max {} dB",
                  tracking.meanCentiDb / 100.0, tracking.rmsCentiDb / 100.0, decibelText(tracking.p99CentiDb),
                  decibelText(tracking.p999CentiDb), decibelText(tracking.maxCentiDb));
        lines.add("within 0.10 dB", "{:.2f} %", tracking.shareWithinTenCentiDb * 100.0);
    }
    lines.add("jumps of the target", "{}, settled {}", tracking.nJumps, tracking.nJumpsSettled);
    if (tracking.nJumpsSettled > 0) {
        lines.add("settling to 0.10 dB", "mean {:.1f} steps ({:.0f} ms), max {} steps ({} ms)",
                  tracking.meanSettlingSteps, tracking.meanSettlingSteps * intervalMs, tracking.maxSettlingSteps,
                  std::uint64_t{tracking.maxSettlingSteps} * intervalMs);
    }
}

void addChannel(Lines& lines, const ChannelResult& channel, unsigned int intervalMs)
{
    const ChannelStatistics& statistics = channel.statistics;
    lines.heading(fmt::format("channel {}", channel.nChannel));
    lines.add("reached TX_ON", "{}", statistics.nSwitchOnSteps > 0 ? "yes" : "no");
    if (statistics.nSwitchOnSteps > 0) {
        lines.add("switch-on", "{} steps, {:.0f} ms", statistics.nSwitchOnSteps,
                  static_cast<double>(statistics.nSwitchOnTimeUs) / US_PER_MS);
    }
    lines.add("last state", "{}", controllerStateName(statistics.nLastState));
    lines.add("steps", "{}, {} failed", statistics.nSteps, statistics.nFailedSteps);
    if (statistics.bHasPctrl) {
        lines.add("Pctrl while on", "{} to {} dBm", decibelText(statistics.nPctrlMin),
                  decibelText(statistics.nPctrlMax));
    }
    lines.add("notifications", "{}", statistics.nNotifications);
    if (channel.nRefusedCalls) {
        lines.add("refused handler calls", "{}", *channel.nRefusedCalls);
    }
    addTracking(lines, channel.tracking, intervalMs);
}
} // namespace

std::string summaryText(const RunResult& result)
{
    Lines lines;
    lines.heading("Summary");
    lines.add("ended by", "{}", result.sEndedBy);
    lines.add("regulator interval", "{} ms", result.intervalMs);
    lines.add("overruns", "{} deadlines skipped", result.nOverruns);
    const LatenessStatistics& lateness = result.lateness;
    lines.add("lateness", "mean {:.3f} ms, 50 % {:.3f} ms, 99 % {:.3f} ms, 99.9 % {:.3f} ms, max {:.3f} ms",
              lateness.meanNs() / NANOSECONDS_PER_MILLISECOND, milliseconds(lateness.quantileNs(0.5)),
              milliseconds(lateness.quantileNs(0.99)), milliseconds(lateness.quantileNs(0.999)),
              milliseconds(lateness.maxNs()));
    lines.add("dropped samples", "{}", result.nDroppedSamples);
    if (result.commands.nCommands > 0) {
        lines.add("commands", "{}, the longest {:.3f} ms", result.commands.nCommands,
                  milliseconds(result.commands.nLongestNs));
    }
    if (result.nSafetyViolations) {
        lines.add("safety violations", "{}", *result.nSafetyViolations);
    }
    if (!result.sRecordedFile.empty()) {
        lines.add("recorded", "{} rows in {}", result.nRecordedRows, result.sRecordedFile);
    }
    if (!result.sRecording.empty()) {
        lines.add("recording", "{} steps in {}{}", result.nRecordedSteps, result.sRecording,
                  result.nLostSteps == 0 ? "" : fmt::format(", {} lost", result.nLostSteps));
    }
    for (const ChannelResult& channel : result.channels) {
        addChannel(lines, channel, result.intervalMs);
    }
    return lines.text();
}
