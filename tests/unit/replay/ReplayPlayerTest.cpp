#include "Unit/Replay/ReplayPlayer.h"

#include "Platform/ConfigurationError.h"
#include "Platform/EAFResult.h"
#include "tests/unit/recorder/RecordedSteps.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace
{
using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t EACH_US = 12'000; // between steps
constexpr std::uint64_t STEPS = 10'000;   // of each of two channels: two minutes
constexpr std::uint64_t LAST_US = (STEPS - 1) * EACH_US;

/** Plays a recording that all tests of this file share. */
class ReplayPlayerTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_pFolder = std::make_unique<TemporaryFolder>();
        std::vector<StepSample> steps;
        for (std::uint64_t nStep = 0; nStep < STEPS; ++nStep) {
            for (const std::uint32_t nIndex : {0U, 1U}) {
                steps.push_back(makeStep(nStep * EACH_US, nIndex));
                steps.back().nStateBefore = steps.back().nState;
                steps.back().nSteps = nStep + 1;
            }
        }
        std::vector<RunEvent> events(3);
        events[1].nTimeUs = 60'000'000;
        events[2].nTimeUs = 90'000'000;
        record(recorderOf(s_pFolder->path("unit.db")), steps, events);
    }

    static void TearDownTestSuite() { s_pFolder.reset(); }

    ReplayPlayer play(const ReplayBegin& begin = {}) const
    {
        Recording recording(s_pFolder->path("unit.db"));
        RecordedRun run = recording.runs().back();
        ReplayBegin named = begin;
        named.newRun = [this] { return "run " + std::to_string(++m_nRuns); };
        return {std::move(recording), std::move(run), std::move(named)};
    }

    mutable int m_nRuns = 0;
    static std::unique_ptr<TemporaryFolder> s_pFolder;
};

std::unique_ptr<TemporaryFolder> ReplayPlayerTest::s_pFolder;

/** @return everything that a feed holds */
FeedBatch heldBy(const RunFeed& feed)
{
    FeedPosition position = feed.oldest();
    FeedBatch batch;
    feed.read(position, batch, static_cast<std::size_t>(-1));
    return batch;
}

std::size_t heldOf(const ReplayPlayer& player)
{
    return heldBy(*player.feed().pFeed).samples.size();
}
} // namespace

TEST_F(ReplayPlayerTest, PlaysAsFastAsItIsTold)
{
    for (const unsigned int nSpeed : REPLAY_SPEEDS) {
        ReplayPlayer player = play({std::nullopt, nSpeed, false, nullptr});
        player.advance(milliseconds(120));
        EXPECT_EQ(player.state().nPositionUs, 120'000U * nSpeed);
        const std::vector<StepSample> played = heldBy(*player.feed().pFeed).samples;
        ASSERT_EQ(played.size(), 2 * (1 + 10 * nSpeed));
        EXPECT_EQ(played.back().nTimeUs, 120'000U * nSpeed);
    }
}

TEST_F(ReplayPlayerTest, PlaysEachStepOnceHoweverTheTimeIsCut)
{
    ReplayPlayer player = play();
    for (const int nUs : {0, 1, 11'998, 1, 12'000, 12'001, 5, 35'994}) { // 72 ms, six steps after the first
        player.advance(microseconds(nUs));
    }
    const std::vector<StepSample> played = heldBy(*player.feed().pFeed).samples;
    ASSERT_EQ(played.size(), 14U);
    for (std::size_t nSample = 0; nSample < played.size(); ++nSample) {
        EXPECT_EQ(played[nSample].nTimeUs, nSample / 2 * EACH_US);
        EXPECT_EQ(played[nSample].nChannelIndex, nSample % 2);
    }
}

TEST_F(ReplayPlayerTest, StandsWhileItIsPaused)
{
    ReplayPlayer player = play({std::nullopt, 1, true, nullptr});
    player.advance(milliseconds(100));
    EXPECT_EQ(player.state().nPositionUs, 0U);
    player.change({std::nullopt, std::nullopt, false});
    player.advance(milliseconds(100));
    EXPECT_EQ(player.state().nPositionUs, 100'000U);
}

TEST_F(ReplayPlayerTest, HasAMinuteBeforeThePlaceThatItJumpsTo)
{
    ReplayPlayer player = play();
    const PageFeed before = player.feed();
    EXPECT_EQ(before.sRun, "run 1");
    player.change({100'000'000, std::nullopt, std::nullopt});
    const PageFeed after = player.feed();
    EXPECT_EQ(after.sRun, "run 2");
    EXPECT_TRUE(before.pFeed->isClosed());
    EXPECT_FALSE(after.pFeed->isClosed());
    const FeedBatch held = heldBy(*after.pFeed);
    EXPECT_GE(held.samples.front().nTimeUs, 40'000'000U);
    EXPECT_LE(held.samples.front().nTimeUs, 40'000'000U + EACH_US);
    EXPECT_LE(held.samples.back().nTimeUs, 100'000'000U);
    EXPECT_GT(held.samples.back().nTimeUs, 100'000'000U - EACH_US);
    EXPECT_EQ(held.events.size(), 3U);
    player.advance(milliseconds(24));
    EXPECT_EQ(heldBy(*after.pFeed).samples.back().nTimeUs, 100'020'000U);
}

TEST_F(ReplayPlayerTest, KeepsTheNumbersOfEventsAndTellsThemAtTheirTime)
{
    ReplayPlayer player = play({59'950'000, 1, false, nullptr});
    EXPECT_EQ(heldBy(*player.feed().pFeed).events.size(), 1U);
    player.advance(milliseconds(49));
    EXPECT_EQ(heldBy(*player.feed().pFeed).events.size(), 1U);
    player.advance(milliseconds(1));
    EXPECT_EQ(heldBy(*player.feed().pFeed).events.back().nId, 1U);
    player.change({89'990'000, std::nullopt, std::nullopt});
    player.advance(milliseconds(10));
    EXPECT_EQ(heldBy(*player.feed().pFeed).events.back().nId, 2U);
    EXPECT_EQ(heldBy(*player.feed().pFeed).events.back().nTimeUs, 90'000'000U);
}

TEST_F(ReplayPlayerTest, PausesAtTheEndAndBeginsAgainFromThere)
{
    ReplayPlayer player = play({LAST_US - 10'000, 1, false, nullptr});
    player.advance(milliseconds(100));
    EXPECT_EQ(player.state().nPositionUs, LAST_US);
    EXPECT_TRUE(player.state().bPaused);
    EXPECT_EQ(heldBy(*player.feed().pFeed).samples.back().nTimeUs, LAST_US);
    player.change({std::nullopt, 10, std::nullopt});
    EXPECT_EQ(player.state().nPositionUs, LAST_US);
    player.change({std::nullopt, std::nullopt, false});
    EXPECT_EQ(player.state().nPositionUs, 0U);
    EXPECT_FALSE(player.state().bPaused);
}

TEST_F(ReplayPlayerTest, LeapsNoFurtherThanAQuarterOfASecond)
{
    ReplayPlayer player = play({std::nullopt, 10, false, nullptr});
    player.advance(std::chrono::seconds(1000));
    EXPECT_EQ(player.state().nPositionUs, 2'500'000U);
}

TEST_F(ReplayPlayerTest, LeavesStepsOutWhereTheyWouldBeTooManyButNoneThatTellsSomething)
{
    const TemporaryFolder folder;
    std::vector<StepSample> steps;
    for (std::uint64_t nStep = 0; nStep < 20'000; ++nStep) { // two channels at 1 ms: 200 000 a second at 100x
        for (const std::uint32_t nIndex : {0U, 1U}) {
            steps.push_back(makeStep(nStep * 1000, nIndex));
            steps.back().nStateBefore = steps.back().nState;
            steps.back().nSteps = nStep + 1;
        }
    }
    steps[std::size_t{2} * 5003].nStateBefore = eOPC_TX_ON_RAMPING;
    steps[std::size_t{2} * 7001].nResult = EAF_FAILED;
    RecordedRun run = makeRun();
    run.intervalMs = 1;
    record(recorderOf(folder.path("unit.db")), steps, {}, run);
    Recording recording(folder.path("unit.db"));
    run = recording.runs().back();
    ReplayPlayer player(std::move(recording), run, {std::nullopt, 100, false, [] { return "run"; }});
    for (int nCall = 0; nCall < 10; ++nCall) {
        player.advance(milliseconds(10));
    }
    const std::vector<StepSample> played = heldBy(*player.feed().pFeed).samples;
    EXPECT_EQ(player.state().nPositionUs, 10'000'000U);
    EXPECT_NEAR(static_cast<double>(played.size()), 2'000.0, 10.0);
    std::vector<std::uint64_t> telling;
    for (const StepSample& step : played) {
        if (step.nSteps % 10 != 0 && step.nTimeUs > 0) {
            telling.push_back(step.nTimeUs);
        }
    }
    EXPECT_THAT(telling, ElementsAre(5'003'000, 7'001'000, 7'002'000)) << "a state, a failure, and its end";
}

TEST_F(ReplayPlayerTest, BeginsAtTheFirstStepThatIsLeft)
{
    const TemporaryFolder folder;
    record(recorderOf(folder.path("unit.db")), {makeStep(24'000), makeStep(36'000)});
    Recording recording(folder.path("unit.db"));
    const RecordedRun run = recording.runs().back();
    ReplayPlayer player(std::move(recording), run, {1000, 1, true, [] { return "run"; }});
    EXPECT_EQ(player.state().nFromUs, 24'000U);
    EXPECT_EQ(player.state().nPositionUs, 24'000U);
    EXPECT_EQ(heldOf(player), 1U);
}

TEST_F(ReplayPlayerTest, RefusesARunWithoutStepsAndAPlaceAfterTheLast)
{
    try {
        (void)play({LAST_US + 1, 1, false, nullptr});
        FAIL() << "taken";
    }
    catch (const ConfigurationError& error) {
        EXPECT_THAT(error.what(), HasSubstr("119.988 s"));
    }
    const TemporaryFolder folder;
    record(recorderOf(folder.path("unit.db")), {makeStep(0)});
    SQLite::Database(folder.path("unit.db"), SQLite::OPEN_READWRITE).exec("DELETE FROM step");
    try {
        Recording recording(folder.path("unit.db"));
        const RecordedRun run = recording.runs().back();
        const ReplayPlayer player(std::move(recording), run, {std::nullopt, 1, false, [] { return "run"; }});
        FAIL() << "taken";
    }
    catch (const ConfigurationError& error) {
        EXPECT_THAT(error.what(), HasSubstr("run 1 has no steps any more"));
    }
}

TEST_F(ReplayPlayerTest, GoesOnWithWhatIsRecordedMeanwhile)
{
    const TemporaryFolder folder;
    record(recorderOf(folder.path("unit.db")), {makeStep(0)});
    Recording recording(folder.path("unit.db"));
    const RecordedRun run = recording.runs().back();
    ReplayPlayer player(std::move(recording), run, {std::nullopt, 1, false, [] { return "run"; }});
    SQLite::Database(folder.path("unit.db"), SQLite::OPEN_READWRITE)
        .exec("CREATE TEMP TABLE copy AS SELECT * FROM step; UPDATE copy SET time_us = 50000;"
              "INSERT INTO step SELECT * FROM copy");
    player.advance(milliseconds(60));
    EXPECT_EQ(player.state().nPositionUs, 50'000U);
    EXPECT_EQ(heldOf(player), 2U);
}
