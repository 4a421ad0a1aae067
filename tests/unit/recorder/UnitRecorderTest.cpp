#include "Unit/Recorder/UnitRecorder.h"

#include "tests/support/BrokenRule.h"
#include "tests/unit/recorder/RecordedSteps.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

namespace
{
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class UnitRecorderTest : public testing::Test
{
protected:
    TemporaryFolder m_folder;
    std::string m_sFile = m_folder.path("unit.db");
};

/** Lets no file grow beyond a size while it stands, as a disk does that is full. */
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t nBytes) : m_pHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{nBytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        (void)std::signal(SIGXFSZ, m_pHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*m_pHandler)(int);
    rlimit m_before{};
};

void waitUntilPaused(const UnitRecorder& recorder, bool bPaused)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (recorder.status().bPaused != bPaused && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(recorder.status().bPaused, bPaused);
}

RunEvent makeEvent(std::uint64_t nTimeUs, const std::string& sText)
{
    RunEvent event;
    event.nTimeUs = nTimeUs;
    event.nSteps = 17;
    event.nChannelNumber = 5;
    event.eEvent = ERunEvent::Command;
    event.sText = sText;
    event.sDetail = R"({"method":"Unit.Set","params":{}})";
    return event;
}
} // namespace

TEST_F(UnitRecorderTest, KeepsEveryFieldOfEveryStep)
{
    const std::vector<StepSample> steps = {makeStep(0, 0), makeStep(0, 1), makeStep(6000, 0), makeStep(6000, 1)};
    EXPECT_THAT(record(recorderOf(m_sFile), steps), IsEmpty());
    EXPECT_EQ(stepsOf(Recording(m_sFile), wholeRun(1)), steps);
}

TEST_F(UnitRecorderTest, KeepsWhatTheRunWasStartedWith)
{
    record(recorderOf(m_sFile), {makeStep(6000)});
    const Recording recording(m_sFile);
    const RecordedRun made = makeRun();
    ASSERT_EQ(recording.runs().size(), 1U);
    const RecordedRun run = recording.runs().front();
    EXPECT_EQ(run.sRun, made.sRun);
    EXPECT_EQ(run.nStartedUnixUs, made.nStartedUnixUs);
    EXPECT_EQ(run.intervalMs, 12U);
    EXPECT_EQ(run.speed, 2.5);
    EXPECT_EQ(run.startSeconds, 30.0);
    EXPECT_EQ(run.sVersion, "1.2.3");
    EXPECT_EQ(run.channels, made.channels);
    EXPECT_EQ(run.nEndedUs, 6000U);
    ASSERT_EQ(run.modules.size(), 2U);
    EXPECT_EQ(run.modules[0].sName, "Handler");
    EXPECT_EQ(run.modules[0].eScope, EModuleScope::Unit);
    EXPECT_EQ(run.modules[1].sLibrary, "./Loop.so");
    EXPECT_EQ(recording.files(1), made.files);
}

TEST_F(UnitRecorderTest, KeepsEventsInTheOrderOfTheirTimes)
{
    record(recorderOf(m_sFile), {makeStep(0)}, {makeEvent(500, "second"), makeEvent(100, "first"), RunEvent()});
    const std::vector<RunEvent> events = eventsOf(Recording(m_sFile), wholeRun(1));
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].sText, "");
    EXPECT_EQ(events[0].nChannelNumber, std::nullopt);
    EXPECT_EQ(events[0].eEvent, ERunEvent::Note);
    EXPECT_EQ(events[1].sText, "first");
    EXPECT_EQ(events[1].nId, 1U);
    EXPECT_EQ(events[1].nSteps, 17U);
    EXPECT_EQ(events[1].nChannelNumber, 5U);
    EXPECT_EQ(events[1].eEvent, ERunEvent::Command);
    EXPECT_EQ(events[1].sDetail, R"({"method":"Unit.Set","params":{}})");
    EXPECT_EQ(events[2].sText, "second");
}

TEST_F(UnitRecorderTest, SumsUpSecondsAndMinutesOfEachChannel)
{
    std::vector<StepSample> steps;
    for (std::uint64_t nStep = 0; nStep < 650; ++nStep) { // 65 seconds
        steps.push_back(makeStep(nStep * 100'000, 0));
        steps.push_back(makeStep(nStep * 100'000, 1));
    }
    record(recorderOf(m_sFile), steps);
    const Recording recording(m_sFile);
    const std::vector<StepSummary> seconds = summariesOf(recording, EResolution::Seconds, wholeRun(1));
    ASSERT_EQ(seconds.size(), 2 * 65U);
    EXPECT_EQ(seconds[5].nTimeUs, 2'000'000U);
    EXPECT_EQ(seconds[5].nChannelNumber, 5U);
    EXPECT_EQ(seconds[5].nSteps, 10U);
    RecordedRange range = wholeRun(1);
    range.nChannel = 3;
    const std::vector<StepSummary> minutes = summariesOf(recording, EResolution::Minutes, range);
    ASSERT_EQ(minutes.size(), 2U);
    EXPECT_EQ(minutes[0].nSteps, 600U);
    EXPECT_EQ(minutes[1].nSteps, 50U);
    SummaryBuilder expected(60'000'000);
    for (const StepSample& step : steps) {
        if (step.nChannelNumber == 3 && step.nTimeUs >= 60'000'000) {
            expected.add(step);
        }
    }
    EXPECT_EQ(minutes[1], expected.summary());
}

TEST_F(UnitRecorderTest, PutsRunsOneAfterTheOther)
{
    record(recorderOf(m_sFile), {makeStep(0), makeStep(6000)}, {}, makeRun("first"));
    record(recorderOf(m_sFile), {makeStep(0)}, {makeEvent(0, "here")}, makeRun("second"));
    const Recording recording(m_sFile);
    ASSERT_EQ(recording.runs().size(), 2U);
    EXPECT_EQ(recording.runs()[1].sRun, "second");
    EXPECT_EQ(stepsOf(recording, wholeRun(1)).size(), 2U);
    EXPECT_EQ(stepsOf(recording, wholeRun(2)).size(), 1U);
    EXPECT_EQ(eventsOf(recording, wholeRun(1)).size(), 0U);
    SQLite::Database database(m_sFile);
    EXPECT_EQ(database.execAndGet("SELECT count(*) FROM content").getInt(), 2) << "texts are kept once";
}

TEST_F(UnitRecorderTest, IsReadByTimeWhileItRecords)
{
    RunFeed feed(1000, 10);
    UnitRecorder recorder(recorderOf(m_sFile));
    recorder.begin(makeRun(), feed);
    for (std::uint64_t nStep = 0; nStep < 10; ++nStep) {
        const std::vector<StepSample> tick = {makeStep(nStep * 6000, 0), makeStep(nStep * 6000, 1)};
        feed.add(tick);
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (recorder.status().nSteps < 20 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const Recording recording(m_sFile);
    RecordedRange range = wholeRun(1);
    range.nFromUs = 6001;
    range.nToUs = 24'000;
    range.nChannel = 5;
    EXPECT_EQ(stepsOf(recording, range),
              (std::vector<StepSample>{makeStep(12'000, 1), makeStep(18'000, 1), makeStep(24'000, 1)}));
    const auto times = recording.times(EResolution::Steps, 1, 3);
    ASSERT_TRUE(times);
    EXPECT_EQ(times->nFirstUs, 0U);
    EXPECT_EQ(times->nLastUs, 54'000U);
    EXPECT_FALSE(recording.times(EResolution::Steps, 2));
    EXPECT_EQ(recording.runs().front().nEndedUs, std::nullopt);
}

TEST_F(UnitRecorderTest, LeavesOneFileBehindAndNoneWhenNoRunBegan)
{
    {
        const UnitRecorder recorder(recorderOf(m_sFile));
        EXPECT_TRUE(std::filesystem::exists(m_sFile));
    }
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.path("")));
    record(recorderOf(m_sFile), {makeStep(0)});
    const std::string sBytes = TemporaryFolder::read(m_sFile);
    {
        const UnitRecorder recorder(recorderOf(m_sFile));
    }
    EXPECT_EQ(TemporaryFolder::read(m_sFile), sBytes);
    const auto entries = std::distance(std::filesystem::directory_iterator(m_folder.path("")), {});
    EXPECT_EQ(entries, 1);
}

TEST_F(UnitRecorderTest, IsStoppedByTheThreadThatBeganIt)
{
    EXPECT_BROKEN_RULE(
        {
            const RunFeed feed(10, 10);
            UnitRecorder recorder(recorderOf(m_sFile));
            recorder.begin(RecordedRun(), feed);
            inAnotherThread([&recorder] { recorder.stop(); });
        },
        "UnitRecorder::stop");
}

TEST_F(UnitRecorderTest, PausesWhileTheDiskIsFullAndLosesNothingThatTheFeedHolds)
{
    RunFeed feed(10'000, 10);
    UnitRecorder recorder(recorderOf(m_sFile));
    recorder.begin(makeRun(), feed);
    std::vector<StepSample> steps;
    for (std::uint64_t nStep = 0; nStep < 5000; ++nStep) {
        steps.push_back(makeStep(nStep * 6000));
    }
    {
        const FileSizeLimit limit(200'000);
        feed.add(steps);
        waitUntilPaused(recorder, true);
        EXPECT_THAT(recorder.takeNotices(), ElementsAre(HasSubstr("unit.db: recording pauses: ")));
        std::this_thread::sleep_for(2 * UnitRecorder::INTERVAL);
        EXPECT_THAT(recorder.takeNotices(), IsEmpty()) << "it is said once";
    }
    waitUntilPaused(recorder, false);
    recorder.stop();
    EXPECT_THAT(recorder.takeNotices(), ElementsAre(m_sFile + ": recording goes on; nothing is lost"));
    const Recording recording(m_sFile);
    EXPECT_EQ(stepsOf(recording, wholeRun(1)), steps);
    EXPECT_EQ(summariesOf(recording, EResolution::Minutes, wholeRun(1)).size(), 1U);
    EXPECT_EQ(summariesOf(recording, EResolution::Minutes, wholeRun(1))[0].nSteps, 5000U) << "none counts twice";
}

TEST_F(UnitRecorderTest, SaysWhatTheFeedHasForgotten)
{
    RunFeed feed(10, 10);
    std::vector<StepSample> steps;
    for (std::uint64_t nStep = 0; nStep < 25; ++nStep) {
        steps.push_back(makeStep(nStep * 6000));
    }
    feed.add(steps);
    UnitRecorder recorder(recorderOf(m_sFile));
    recorder.begin(makeRun(), feed);
    recorder.stop();
    EXPECT_EQ(recorder.status().nLostSteps, 15U);
    EXPECT_EQ(recorder.status().nSteps, 10U);
    const std::vector<RunEvent> events = eventsOf(Recording(m_sFile), wholeRun(1));
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].sText, "15 steps and 0 events before this were not recorded");
    EXPECT_EQ(events[0].nTimeUs, 90'000U);
}

TEST_F(UnitRecorderTest, KeepsItsLocksWhileItsOwnProcessReadsTheFile)
{
    RunFeed feed(10, 10);
    UnitRecorder recorder(recorderOf(m_sFile));
    recorder.begin(makeRun(), feed);
    feed.add(std::vector{makeStep(0)});
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (recorder.status().nSteps == 0 && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    {
        const Recording recording = Recording::ofThisProcess(m_sFile);
        EXPECT_EQ(recording.path(), m_sFile);
    }
    // Another program that found no lock here would take the journal away at its own end.
    struct flock asked
    {
    };
    asked.l_type = F_WRLCK;
    asked.l_start = 0x40000000 + 2; // where SQLite's connections hold their shared locks
    asked.l_len = 510;
    const int nFile = open(m_sFile.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(fcntl(nFile, F_OFD_GETLK, &asked), 0);
    EXPECT_NE(asked.l_type, F_UNLCK);
    close(nFile);
}

TEST_F(UnitRecorderTest, GivesTheLatestEventsOfARange)
{
    std::vector<RunEvent> events(6);
    for (std::size_t nEvent = 0; nEvent < events.size(); ++nEvent) {
        events[nEvent].nTimeUs = 10 * (nEvent / 2); // two at a time
        events[nEvent].nChannelNumber = nEvent % 2 == 0 ? std::optional<unsigned int>(3) : std::nullopt;
    }
    record(recorderOf(m_sFile), {makeStep(0)}, events);
    const Recording recording(m_sFile);
    const auto ids = [&](const RecordedRange& range, std::uint64_t nBeforeId, std::size_t nMost) {
        std::vector<std::uint64_t> found;
        for (const RunEvent& event : recording.lastEvents(range, nBeforeId, nMost)) {
            found.push_back(event.nId);
        }
        return found;
    };
    EXPECT_THAT(ids(wholeRun(1), UINT64_MAX, 100), ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_THAT(ids(wholeRun(1), UINT64_MAX, 3), ElementsAre(3, 4, 5));
    EXPECT_THAT(ids(wholeRun(1), 4, 2), ElementsAre(2, 3));
    EXPECT_THAT(ids({1, std::nullopt, 10, 10}, UINT64_MAX, 100), ElementsAre(2, 3));
    EXPECT_THAT(ids({1, 3, 0, 100}, UINT64_MAX, 2), ElementsAre(2, 4));
    EXPECT_THAT(ids(wholeRun(2), UINT64_MAX, 100), IsEmpty());
}
