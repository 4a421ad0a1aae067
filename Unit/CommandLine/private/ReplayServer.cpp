#include "Unit/CommandLine/private/ReplayServer.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Conversions.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/ProgressBar.h"
#include "Unit/CommandLine/private/RecordedPart.h"
#include "Unit/CommandLine/private/RunServer.h"
#include "Unit/Process/StopSignals.h"
#include "Unit/Replay/ReplayClock.h"
#include "Unit/Text/IsoTime.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace
{
constexpr int WAIT_MS = 200;

ReplayBegin beginningOf(const ReplayOptions& options, const RecordedRun& run)
{
    ReplayBegin begin;
    begin.bPaused = options.bPaused;
    begin.newRun = [] { return newRunIdentity().sRun; };
    begin.nSpeed = options.nSpeed;
    if (!options.sFrom.empty()) {
        begin.nPositionUs = wantedTimeUs("--from", options.sFrom, run);
    }
    return begin;
}

/** @return whether the handlers were simulated ones, as the latest step tells */
bool isSimulated(const RunFeed& feed)
{
    FeedPosition position = feed.newest();
    position.nSample -= std::min<std::uint64_t>(position.nSample, 1);
    FeedBatch last;
    feed.read(position, last, 1);
    return !last.samples.empty() && last.samples.back().nIfPower != OPC_POWER_UNKNOWN;
}

PageRun pageRun(const RecordedRun& run, const std::string& sFile, bool bSimulated)
{
    PageRun page;
    page.sVersion = run.sVersion;
    page.nStartedUnixUs = run.nStartedUnixUs;
    page.bSimulated = bSimulated;
    page.channels = run.channels;
    page.intervalMs = [intervalMs = run.intervalMs] { return intervalMs; };
    page.pPast = std::make_shared<RecordedPast>([sFile] { return Recording(sFile); }, run.sRun);
    return page;
}

std::string statusText(const ReplayState& state)
{
    return fmt::format("{} of {}  {}x{}", durationText(static_cast<double>(state.nPositionUs) / US_PER_S),
                       durationText(static_cast<double>(state.nToUs) / US_PER_S), state.nSpeed,
                       !state.bPaused                     ? ""
                       : state.nPositionUs >= state.nToUs ? "  at its end"
                                                          : "  paused");
}

/** A line on a terminal that is written again in place; elsewhere nothing. */
class PlaceLine
{
public:
    PlaceLine() : m_bTerminal(isatty(STDOUT_FILENO) == 1) {}
    ~PlaceLine() { show(""); }
    PlaceLine(const PlaceLine&) = delete;
    PlaceLine& operator=(const PlaceLine&) = delete;

    void show(const std::string& sText)
    {
        if (m_bTerminal && sText != m_sShown) {
            fmt::print("\r\x1b[K{}", sText);
            (void)std::fflush(stdout);
            m_sShown = sText;
        }
    }

private:
    bool m_bTerminal;
    std::string m_sShown;
};

void showUntilSignal(const StopSignals& signals, const ReplayPlayer& player, ReplayClock& clock)
{
    PlaceLine line;
    while (signals.wait(WAIT_MS).empty()) {
        const std::string sTrouble = clock.takeTrouble();
        if (!sTrouble.empty()) {
            line.show("");
            fmt::print(stderr, "opc replay: {}; it is paused\n", sTrouble);
        }
        line.show(statusText(player.state()));
    }
}
} // namespace

int replayOnPage(const ReplayOptions& options)
{
    const StopSignals signals;
    Recording recording(options.sFile);
    const RecordedRun run = wantedRun(recording, options.sRun);
    const PageAssets assets = openPage(options.sWebRoot);
    ReplayPlayer player(std::move(recording), run, beginningOf(options, run));
    TestInterfaceConfiguration configuration;
    configuration.nPort = options.nPort.value_or(configuration.nPort);
    TestServer server(configuration);
    LivePageSite site(pageRun(run, options.sFile, isSimulated(*player.feed().pFeed)), assets, player);
    server.serveSites({&site});
    const ReplayState state = player.state();
    fmt::print("live page: {}/\n{}: run {} of {}, {} channel{}, steps from {:.3f} to {:.3f} s\n", server.url(),
               options.sFile, run.nId, isoTime(run.nStartedUnixUs), run.channels.size(),
               run.channels.size() == 1 ? "" : "s", static_cast<double>(state.nFromUs) / US_PER_S,
               static_cast<double>(state.nToUs) / US_PER_S);
    (void)std::fflush(stdout);
    {
        ReplayClock clock(player);
        showUntilSignal(signals, player, clock);
    }
    player.close();
    server.stop();
    return eEXIT_OK;
}
