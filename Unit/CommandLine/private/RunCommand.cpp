#include "Unit/CommandLine/RunCommand.h"

#include "Platform/Trace/TraceControl.h"
#include "Unit/CommandLine/RunSummary.h"
#include "Unit/CommandLine/StatusDisplay.h"
#include "Unit/CommandLine/TraceLines.h"
#include "Unit/CommandLine/private/RunRecorder.h"
#include "Unit/CommandLine/private/RunServer.h"
#include "Unit/CommandLine/private/SafetyReporter.h"
#include "Unit/CommandLine/private/SampleReader.h"
#include "Unit/CommandLine/private/SignalWatcher.h"
#include "Unit/Process/RealtimePriority.h"
#include "Unit/Process/RegulationLoop.h"
#include "Unit/Process/StopSignals.h"
#include "Unit/Process/UnitProcess.h"
#include "Unit/Recorder/CsvWriter.h"
#include "Unit/Telemetry/Collector.h"
#include "Unit/Text/PowerText.h"

#include <fmt/format.h>
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

namespace
{
constexpr int DRAIN_INTERVAL_MS = 50;
constexpr std::chrono::milliseconds SYSTEM_LOG_WAIT{250}; // for the lines of the switch-off, and of the stop
constexpr std::size_t QUEUE_SECONDS = 5;            // how long the collector may be held up before samples are lost
constexpr std::size_t MOST_STEPS_PER_SECOND = 1000; // a command may shorten the interval to a millisecond
constexpr std::size_t FEED_SECONDS = 60;            // how long a reader may be held up, at the interval of the start
constexpr std::size_t FEED_EVENTS = 10'000;
constexpr std::size_t MILLISECONDS_PER_SECOND = 1000;
constexpr int MOST_ARENAS = 2;
constexpr int LARGE_BYTES = 128 * 1024;

/** Keeps what clients have the process take for a moment from staying. */
void limitKeptMemory()
{
    // A thread for each connection would have an arena of its own and keep what it once held: 100 MB instead of 45
    // after ten minutes with a dozen clients. The regulation allocates nothing, so that it waits for nobody.
    (void)mallopt(M_ARENA_MAX, MOST_ARENAS);
    // What a long history takes, some 20 MB, goes back at once: by itself the allocator would raise its limit with the
    // first one, and keep the later ones.
    (void)mallopt(M_MMAP_THRESHOLD, LARGE_BYTES);
}

std::unique_ptr<Profile> loadProfile(const UnitConfiguration& unit)
{
    return unit.profile.sFile.empty() ? nullptr
                                      : std::make_unique<Profile>(unit.profile.sFile, unit.profile.interpolation);
}

RunSettings runSettings(const UnitConfiguration& unit, const RunOptions& options, const Profile* pProfile)
{
    RunSettings settings;
    settings.intervalMs = unit.intervalMs;
    settings.speed = options.speed;
    settings.startSeconds = options.startSeconds;
    settings.durationSeconds = options.durationSeconds;
    settings.temperatureDegrees = unit.temperatureDegrees;
    settings.pProfile = pProfile;
    return settings;
}

/** Lets the regulation end, whatever keeps its supervisor from waiting for it. */
class StopOnExit
{
public:
    explicit StopOnExit(RegulationLoop& loop) : m_loop(loop) {}
    ~StopOnExit() { m_loop.requestStop(); }
    StopOnExit(const StopOnExit&) = delete;
    StopOnExit& operator=(const StopOnExit&) = delete;

private:
    RegulationLoop& m_loop;
};

void showTrace(TraceLines& trace, StatusDisplay& display)
{
    const std::string sText = trace.take();
    if (!sText.empty()) {
        display.note(sText);
    }
}

/** @param sNotice what to say first. @return what ended the run */
std::string superviseUntilFinished(RegulationLoop& loop, const StopSignals& signals, Collector& collector,
                                   SampleReader& reader, SafetyReporter& safety, StatusDisplay& display,
                                   const std::string& sNotice)
{
    TraceLines trace(isatty(STDOUT_FILENO) == 1 && isatty(STDERR_FILENO) == 1);
    SignalWatcher watcher(signals, loop); // before the first output, which may have to wait for its reader
    if (!sNotice.empty()) {
        display.note(sNotice);
    }
    std::string sEndedBy;
    while (!loop.isFinished()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(DRAIN_INTERVAL_MS));
        for (const std::string& sSignal : watcher.take()) {
            display.note(sEndedBy.empty() ? sSignal + ": switching off" : sSignal + ": already switching off");
            sEndedBy = sEndedBy.empty() ? sSignal : sEndedBy;
        }
        showTrace(trace, display);
        reader.drain();
        safety.report();
    }
    collector.stop();
    TraceControl::waitForSystemLog(SYSTEM_LOG_WAIT);
    showTrace(trace, display);
    reader.drain();
    return sEndedBy.empty() ? "duration" : sEndedBy;
}

void collect(RunResult& result, UnitProcess& process, RegulationLoop& loop, const SampleReader& reader)
{
    result.nOverruns = loop.overruns();
    result.lateness = loop.lateness();
    result.nDroppedSamples = loop.droppedSamples() + reader.lostSamples();
    result.commands = loop.commands().statistics();
    for (std::size_t nChannel = 0; nChannel < process.channels().size(); ++nChannel) {
        const RadioChannel& channel = *process.channels()[nChannel];
        result.channels.push_back(
            {channel.number(), channel.statistics(), channel.refusedCalls(), reader.measures()[nChannel].tracking()});
    }
}

std::vector<RadioChannel*> requestAllOn(UnitProcess& process)
{
    std::vector<RadioChannel*> channels;
    for (const auto& pChannel : process.channels()) {
        pChannel->requestOn();
        channels.push_back(pChannel.get());
    }
    return channels;
}

void warnWithoutPriority(std::jthread& thread, int nPriority)
{
    const std::string sTrouble =
        nPriority == 0 ? std::string() : giveRealtimePriority(thread.native_handle(), nPriority);
    if (!sTrouble.empty()) {
        fmt::print(stderr, "opc run: warning: {}\n", sTrouble);
    }
}

/** What goes on besides the regulation. */
struct RunCompanions
{
    PageAssets page;
    std::unique_ptr<TestServer> pServer; // each null for none
    std::unique_ptr<CsvWriter> pWriter;
    WantedRecording recording;
};

/** @return whether everything was written */
bool collectRecorded(RunResult& result, const RunCompanions& companions)
{
    bool bWell = true;
    if (const CsvWriter* const pWriter = companions.pWriter.get()) {
        result.sRecordedFile = pWriter->path();
        result.nRecordedRows = pWriter->rowsWritten();
        bWell = pWriter->error().empty();
    }
    if (const UnitRecorder* const pRecorder = companions.recording.pRecorder.get()) {
        const RecorderStatus status = pRecorder->status();
        result.sRecording = pRecorder->path();
        result.nRecordedSteps = status.nSteps;
        result.nLostSteps = status.nLostSteps;
        bWell = bWell && !status.bPaused && status.nLostSteps == 0;
    }
    return bWell;
}

/** Runs a unit that has started, and stops it. @return whether all went well */
bool regulate(UnitProcess& process, const UnitConfiguration& unit, const RunSettings& settings,
              const StopSignals& signals, RunCompanions& companions)
{
    TestServer* const pServer = companions.pServer.get();
    const PageAssets& page = companions.page;
    StatusDisplay display(stdout, isatty(STDOUT_FILENO) == 1, unit.channels.size());
    SampleQueue queue(QUEUE_SECONDS * MOST_STEPS_PER_SECOND * unit.channels.size());
    RunFeed feed(FEED_SECONDS * MILLISECONDS_PER_SECOND / settings.intervalMs * unit.channels.size(), FEED_EVENTS);
    SampleReader reader(feed, companions.pWriter.get(), companions.recording.pRecorder.get(), display,
                        unit.channels.size());
    RegulationLoop loop(settings, requestAllOn(process), process.temperature(), unit.faults, queue);
    SafetyReporter safety(process);
    RunResult result;
    {
        std::jthread thread([&loop] { loop.run(); });
        warnWithoutPriority(thread, unit.nRealtimePriority);
        const StopOnExit stopOnExit(loop);
        const RunIdentity identity = newRunIdentity();
        const Recorded recorded(companions.recording, identity, feed); // until the collector has stopped
        Collector collector(loop, queue, feed, unit.faults);
        const Serving serving(pServer, identity, loop, feed, page, companions.recording.pRecorder.get());
        result.sEndedBy =
            superviseUntilFinished(loop, signals, collector, reader, safety, display, serverNotice(pServer, page));
    }
    reader.reportRecorder();
    result.intervalMs = loop.intervalMs();
    if (!loop.error().empty()) {
        result.sEndedBy = loop.error();
        fmt::print(stderr, "opc run: {}\n", loop.error());
    }
    collect(result, process, loop, reader);
    const bool bRecorded = collectRecorded(result, companions);
    process.stop();
    safety.report();
    result.nSafetyViolations = safety.violations();
    fmt::print("{}", summaryText(result));
    (void)std::fflush(stdout);
    return loop.error().empty() && bRecorded && result.nSafetyViolations.value_or(0) == 0;
}

void printWarnings(const UnitProcess& process, std::size_t nFirst)
{
    for (std::size_t nWarning = nFirst; nWarning < process.warnings().size(); ++nWarning) {
        fmt::print(stderr, "opc run: warning: {}\n", process.warnings()[nWarning]);
    }
}
} // namespace

int runUnit(const RunOptions& options)
{
    const StopSignals signals;
    limitKeptMemory();
    (void)std::signal(SIGPIPE, SIG_IGN); // a reader of the output that goes away must not keep the transmitter on
    (void)std::signal(SIGXFSZ, SIG_IGN); // nor must a limit of a file's size
    UnitConfiguration unit = loadUnitConfiguration(options.sUnitFile);
    selectChannels(unit, options.nChannels);
    checkChannelsAreApart(unit);
    const std::unique_ptr<Profile> pProfile = loadProfile(unit);
    UnitProcess process(unit);
    if (options.bSafetyMonitor) {
        process.monitorSafety();
    }
    process.load();
    if (options.nPort) {
        unit.testInterface.nPort = *options.nPort;
    }
    unit.testInterface.bEnabled = unit.testInterface.bEnabled && options.bTestInterface;
    const RunSettings settings = runSettings(unit, options, pProfile.get());
    RunCompanions companions;
    companions.page = openPage(options.sWebRoot);
    companions.pServer = openTestServer(unit.testInterface);
    companions.pWriter = options.sCsvFile.empty() ? nullptr : std::make_unique<CsvWriter>(options.sCsvFile);
    companions.recording = openRecording(unit, settings, options);
    process.start();
    const std::size_t nStartWarnings = process.warnings().size();
    printWarnings(process, 0);
    if (companions.pWriter) {
        companions.pWriter->begin();
    }
    const bool bWell = regulate(process, unit, settings, signals, companions);
    printWarnings(process, nStartWarnings);
    TraceControl::waitForSystemLog(SYSTEM_LOG_WAIT);
    return bWell ? 0 : 1;
}
