#include "Unit/LivePage/private/RunHistory.h"

#include "Unit/LivePage/private/BadRequest.h"
#include "tests/unit/recorder/RecordedSteps.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>

namespace
{
constexpr std::uint64_t SECOND_US = 1'000'000;
constexpr std::uint64_t MINUTE_US = 60 * SECOND_US;
constexpr std::uint64_t HOUR_US = 60 * MINUTE_US;
constexpr std::size_t MANY_POINTS = 100'000;

/** A run of two channels, recorded, whose latest steps a feed holds as well. */
class Played
{
public:
    /** @param nRecorded, nHeld how many of the steps of each channel */
    Played(std::size_t nSteps, std::uint64_t nEachUs, std::size_t nRecorded, std::size_t nHeld)
        : m_feed(2 * nHeld, 100), m_nEachUs(nEachUs), m_nSteps(nSteps)
    {
        std::vector<StepSample> steps;
        for (std::size_t nStep = 0; nStep < nSteps; ++nStep) {
            steps.push_back(makeStep(nStep * nEachUs, 0));
            steps.push_back(makeStep(nStep * nEachUs, 1));
        }
        record(recorderOf(m_folder.path("unit.db")), {steps.begin(), steps.begin() + 2 * static_cast<long>(nRecorded)});
        m_feed.add(steps);
    }

    ChannelHistory ask(std::uint64_t nFromUs, std::uint64_t nToUs, std::size_t nPoints, bool bFeed = true)
    {
        return channelHistory(bFeed ? &m_feed : nullptr, &m_past, {5, nFromUs, nToUs, nPoints, 12});
    }

    /** Takes what is earlier out of the file. */
    void forget(std::uint64_t nStepsUs, std::uint64_t nSecondsUs)
    {
        SQLite::Database database(m_folder.path("unit.db"), SQLite::OPEN_READWRITE);
        database.exec("DELETE FROM step WHERE time_us < " + std::to_string(nStepsUs));
        database.exec("DELETE FROM second WHERE time_us < " + std::to_string(nSecondsUs));
    }

    /** Leaves nothing but minutes, with one more of each channel so much later. */
    void leaveMinutesUntil(std::uint64_t nTimeUs)
    {
        forget(MINUTE_US * MINUTE_US, MINUTE_US * MINUTE_US);
        SQLite::Database database(m_folder.path("unit.db"), SQLite::OPEN_READWRITE);
        database.exec("CREATE TEMP TABLE later AS SELECT * FROM minute WHERE time_us = 0");
        database.exec("UPDATE later SET time_us = " + std::to_string(nTimeUs));
        database.exec("INSERT INTO minute SELECT * FROM later");
    }

    /** @return steps of a channel between two times */
    std::size_t stepsBetween(std::uint64_t nFromUs, std::uint64_t nToUs) const
    {
        std::size_t nCount = 0;
        for (std::size_t nStep = 0; nStep < m_nSteps; ++nStep) {
            nCount += nStep * m_nEachUs >= nFromUs && nStep * m_nEachUs <= nToUs ? 1 : 0;
        }
        return nCount;
    }

private:
    TemporaryFolder m_folder;
    RunFeed m_feed;
    std::uint64_t m_nEachUs;
    std::size_t m_nSteps;
    RecordedPast m_past{[this] { return Recording(m_folder.path("unit.db")); }, makeRun().sRun};
};

std::size_t stepsIn(const ChannelHistory& history)
{
    return std::accumulate(
        history.parts.begin(), history.parts.end(), history.steps.size(),
        [](std::size_t nSum, const StepSummary& part) { return nSum + static_cast<std::size_t>(part.nSteps); });
}

struct Case
{
    const char* pName;
    std::uint64_t nFromUs;
    std::uint64_t nToUs;
    std::size_t nPoints;
    EHistorySource eSource;
};
} // namespace

TEST(RunHistory, HasEachStepOnceWhereverItIsHeld)
{
    // 30 s at 12 ms; the feed holds the last 10 s, and the recorder is 0.6 s behind.
    Played played(2500, 12'000, 2450, 833);
    const std::vector<Case> cases = {
        {"held", 25 * SECOND_US, 40 * SECOND_US, MANY_POINTS, EHistorySource::Ring},
        {"held, in parts", 25 * SECOND_US, 40 * SECOND_US, 100, EHistorySource::Ring},
        {"recorded", 5 * SECOND_US, 8 * SECOND_US, MANY_POINTS, EHistorySource::Steps},
        {"both", 0, 40 * SECOND_US, MANY_POINTS, EHistorySource::Steps},
        {"both, in parts", 0, 40 * SECOND_US, 7, EHistorySource::Steps},
        {"from a step to a step", 12'000, 29'988'000, MANY_POINTS, EHistorySource::Steps},
        {"across where the feed begins", 19'980'000, 20'100'000, MANY_POINTS, EHistorySource::Steps},
        {"later than everything", 50 * SECOND_US, 60 * SECOND_US, MANY_POINTS, EHistorySource::Ring},
    };
    for (const Case& each : cases) {
        const ChannelHistory history = played.ask(each.nFromUs, each.nToUs, each.nPoints);
        EXPECT_STREQ(historySourceName(history.eSource), historySourceName(each.eSource)) << each.pName;
        EXPECT_EQ(stepsIn(history), played.stepsBetween(each.nFromUs, each.nToUs)) << each.pName;
        EXPECT_LE(history.steps.size() + history.parts.size(), each.nPoints) << each.pName;
        EXPECT_TRUE(std::is_sorted(history.steps.begin(), history.steps.end(),
                                   [](const StepSample& a, const StepSample& b) { return a.nTimeUs < b.nTimeUs; }))
            << each.pName;
        for (const StepSample& step : history.steps) {
            EXPECT_EQ(step, makeStep(step.nTimeUs, 1)) << each.pName;
        }
    }
}

TEST(RunHistory, TakesSecondsAndMinutesWhereStepsWouldBeTooManyOrGone)
{
    // A step every ten seconds over 30 h, of which the last hour of steps and the last 24 h of seconds are kept. Steps
    // count as every 12 ms, so that 20 min of them are the most. The feed holds the last 100 s.
    const std::uint64_t nEndUs = 30 * HOUR_US;
    Played played(10'800, 10 * SECOND_US, 10'799, 10);
    played.forget(29 * HOUR_US, 6 * HOUR_US);
    const std::uint64_t nAllUs = nEndUs + HOUR_US;
    const std::vector<Case> cases = {
        {"all", 0, nAllUs, 1000, EHistorySource::Minutes},
        {"all, in a part for each minute and more", 0, nAllUs, MANY_POINTS, EHistorySource::Minutes},
        {"before the seconds", HOUR_US, 2 * HOUR_US - 1, 1000, EHistorySource::Minutes},
        {"the last 20 hours", 10 * HOUR_US, nAllUs, 1000, EHistorySource::Seconds},
        {"old seconds", 10 * HOUR_US, 10 * HOUR_US + MINUTE_US - 1, 1000, EHistorySource::Seconds},
        {"the last half hour", nEndUs - HOUR_US / 2, nAllUs, 1000, EHistorySource::Seconds},
        {"the last ten minutes", nEndUs - HOUR_US / 6, nAllUs, 1000, EHistorySource::Steps},
        {"what is held", nEndUs - 50 * SECOND_US, nAllUs, 1000, EHistorySource::Ring},
    };
    for (const Case& each : cases) {
        const ChannelHistory history = played.ask(each.nFromUs, each.nToUs, each.nPoints);
        EXPECT_STREQ(historySourceName(history.eSource), historySourceName(each.eSource)) << each.pName;
        EXPECT_EQ(stepsIn(history), played.stepsBetween(each.nFromUs, each.nToUs)) << each.pName;
        EXPECT_LE(history.steps.size() + history.parts.size(), each.nPoints) << each.pName;
    }
}

TEST(RunHistory, OfARecordingAloneHasAllThatIsRecorded)
{
    Played played(2500, 12'000, 2500, 833);
    const ChannelHistory history = played.ask(0, HOUR_US, MANY_POINTS, false);
    EXPECT_EQ(history.eSource, EHistorySource::Steps);
    EXPECT_EQ(history.steps.size(), 2500U);
}

TEST(RunHistory, HasWhatIsHeldUntilTheRunIsInTheFile)
{
    const TemporaryFolder folder;
    record(recorderOf(folder.path("unit.db")), {makeStep(0)}, {}, makeRun("another one of that file"));
    RecordedPast past([&] { return Recording(folder.path("unit.db")); }, makeRun().sRun);
    RunFeed feed(1, 1);
    feed.add(std::vector{makeStep(0), makeStep(12'000)});
    EXPECT_EQ(channelHistory(&feed, &past, {3, 0, HOUR_US, 10, 12}).steps, std::vector{makeStep(12'000)});
    EXPECT_EQ(past.earliestUs(), std::nullopt);
}

TEST(RunHistory, HasNothingOfAChannelThatIsNotThere)
{
    Played played(100, 12'000, 100, 10);
    const TemporaryFolder folder;
    record(recorderOf(folder.path("unit.db")), {makeStep(0)});
    RecordedPast past([&] { return Recording(folder.path("unit.db")); }, makeRun().sRun);
    const ChannelHistory history = channelHistory(nullptr, &past, {99, 0, HOUR_US, 10, 12});
    EXPECT_TRUE(history.steps.empty());
    EXPECT_TRUE(history.parts.empty());
}

TEST(RunHistory, LooksAgainAfterTheFileCouldNotBeRead)
{
    const TemporaryFolder folder;
    RecordedPast past([&] { return Recording(folder.path("unit.db")); }, makeRun().sRun);
    const HistoryQuestion question{3, 0, HOUR_US, 10, 12};
    EXPECT_THROW((void)channelHistory(nullptr, &past, question), std::exception);
    EXPECT_EQ(past.earliestUs(), std::nullopt);
    record(recorderOf(folder.path("unit.db")), {makeStep(0)});
    EXPECT_EQ(channelHistory(nullptr, &past, question).steps, std::vector{makeStep(0)});
    EXPECT_EQ(past.earliestUs(), 0U);
}

TEST(RunHistory, JoinsEventsThatAreHeldAndRecorded)
{
    std::vector<RunEvent> events;
    for (std::uint64_t nEvent = 0; nEvent < 10; ++nEvent) {
        RunEvent event;
        event.nTimeUs = nEvent * 10;
        event.eEvent = ERunEvent::Command;
        events.push_back(event);
    }
    const TemporaryFolder folder;
    record(recorderOf(folder.path("unit.db")), {makeStep(0)}, {events.begin(), events.begin() + 8});
    RecordedPast past([&] { return Recording(folder.path("unit.db")); }, makeRun().sRun);
    RunFeed feed(1, 4); // holds 6 to 9
    for (const RunEvent& event : events) {
        feed.add(event);
    }
    const auto ids = [&](const RunFeed* pFeed, std::uint64_t nFromUs, std::uint64_t nToUs, std::size_t nMost) {
        std::vector<std::uint64_t> found;
        for (const RunEvent& event : latestEvents(pFeed, &past, nFromUs, nToUs, nMost)) {
            EXPECT_EQ(event.eEvent, ERunEvent::Command);
            found.push_back(event.nId);
        }
        return found;
    };
    using Ids = std::vector<std::uint64_t>;
    EXPECT_EQ(ids(&feed, 0, 1000, 100), (Ids{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(ids(&feed, 0, 1000, 6), (Ids{4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(ids(&feed, 0, 1000, 2), (Ids{8, 9}));
    EXPECT_EQ(ids(&feed, 40, 70, 3), (Ids{5, 6, 7}));
    EXPECT_EQ(ids(&feed, 0, 10, 100), (Ids{0, 1}));
    EXPECT_EQ(ids(nullptr, 0, 1000, 3), (Ids{5, 6, 7}));
}

TEST(RunHistory, RefusesMoreMinutesThanItReads)
{
    constexpr std::uint64_t LAST_US = (MOST_HISTORY_MINUTES + 1) * MINUTE_US;
    Played played(3, SECOND_US, 3, 1);
    played.leaveMinutesUntil(LAST_US);
    EXPECT_THROW((void)played.ask(0, 2 * LAST_US, MANY_POINTS, false), BadRequest);
    EXPECT_EQ(played.ask(MINUTE_US, 2 * LAST_US, MANY_POINTS, false).parts.size(), 1U);
    EXPECT_EQ(played.ask(0, MINUTE_US, MANY_POINTS, false).parts.size(), 1U);
}
