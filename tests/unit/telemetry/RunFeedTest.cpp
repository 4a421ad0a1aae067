#include "Unit/Telemetry/RunFeed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace
{
constexpr std::size_t ALL = 1000;

/** @return samples whose time in microseconds is their number */
std::vector<StepSample> samples(std::uint64_t nFrom, std::uint64_t nTo)
{
    std::vector<StepSample> samples(static_cast<std::size_t>(nTo - nFrom));
    for (StepSample& sample : samples) {
        sample.nTimeUs = nFrom++;
    }
    return samples;
}

std::vector<std::uint64_t> times(const FeedBatch& batch)
{
    std::vector<std::uint64_t> times(batch.samples.size());
    std::transform(batch.samples.begin(), batch.samples.end(), times.begin(),
                   [](const StepSample& sample) { return sample.nTimeUs; });
    return times;
}

RunEvent note(std::string sText)
{
    RunEvent event;
    event.sText = std::move(sText);
    return event;
}
} // namespace

TEST(RunFeed, GivesEachReaderWhatIsNewToIt)
{
    RunFeed feed(10, 10);
    FeedPosition early;
    FeedBatch batch;
    feed.read(early, batch, ALL);
    EXPECT_TRUE(batch.samples.empty());
    feed.add(samples(0, 3));
    FeedPosition late = feed.newest();
    feed.read(early, batch, ALL);
    EXPECT_THAT(times(batch), testing::ElementsAre(0, 1, 2));
    feed.add(samples(3, 5));
    for (FeedPosition* pPosition : {&early, &late}) {
        feed.read(*pPosition, batch, ALL);
        EXPECT_THAT(times(batch), testing::ElementsAre(3, 4));
        EXPECT_EQ(batch.nLostSamples, 0U);
        EXPECT_EQ(pPosition->nSample, 5U);
    }
}

TEST(RunFeed, ForgetsTheOldestAndTellsWhatAReaderLost)
{
    RunFeed feed(4, 2);
    feed.add(samples(0, 7));
    for (const char* pText : {"a", "b", "c", "d", "e"}) {
        feed.add(note(pText));
    }
    EXPECT_EQ(feed.oldest().nSample, 3U);
    EXPECT_EQ(feed.oldest().nEvent, 3U);
    FeedPosition position{1, 1};
    FeedBatch batch;
    feed.read(position, batch, ALL);
    EXPECT_THAT(times(batch), testing::ElementsAre(3, 4, 5, 6));
    EXPECT_EQ(batch.nLostSamples, 2U);
    EXPECT_EQ(batch.nLostEvents, 2U);
    ASSERT_EQ(batch.events.size(), 2U);
    EXPECT_EQ(batch.events[0].sText, "d");
    EXPECT_EQ(batch.events[0].nId, 3U);
    EXPECT_EQ(batch.events[1].sText, "e");
    feed.read(position, batch, ALL);
    EXPECT_TRUE(batch.samples.empty());
    EXPECT_EQ(batch.nLostSamples, 0U);
}

TEST(RunFeed, LeavesWhatIsTooMuchToTheNextRead)
{
    RunFeed feed(10, 10);
    feed.add(samples(0, 5));
    FeedPosition position;
    FeedBatch batch;
    feed.read(position, batch, 3);
    EXPECT_THAT(times(batch), testing::ElementsAre(0, 1, 2));
    feed.read(position, batch, 3);
    EXPECT_THAT(times(batch), testing::ElementsAre(3, 4));
}

TEST(RunFeed, TakesAPositionFromTheFutureForTheNewest)
{
    RunFeed feed(10, 10);
    feed.add(samples(0, 5));
    feed.add(note("a"));
    FeedPosition position{1'000'000, 1'000'000};
    FeedBatch batch;
    feed.read(position, batch, ALL);
    EXPECT_TRUE(batch.samples.empty());
    EXPECT_TRUE(batch.events.empty());
    EXPECT_EQ(batch.nLostSamples, 0U);
    EXPECT_EQ(position.nSample, 5U);
    EXPECT_EQ(position.nEvent, 1U);
}

TEST(RunFeed, FindsTheFirstSampleOfATime)
{
    RunFeed feed(5, 10);
    EXPECT_EQ(feed.atTime(0).nSample, 0U);
    feed.add(samples(10, 20)); // 15 to 19 are left, numbers 5 to 9
    for (const auto& [nTimeUs, nSample] : {std::pair(0U, 5U), {15U, 5U}, {17U, 7U}, {19U, 9U}, {20U, 10U}, {99U, 10U}})
    {
        EXPECT_EQ(feed.atTime(nTimeUs).nSample, nSample) << nTimeUs;
    }
}

TEST(RunFeed, ForgetsEventsWhoseTextsComeToTooMuch)
{
    RunFeed feed(10, 1000);
    for (int nEvent = 0; nEvent < 100; ++nEvent) {
        RunEvent event = note("long");
        event.sDetail.assign(RunFeed::MAX_EVENT_BYTES / 10, 'x');
        feed.add(std::move(event));
    }
    EXPECT_EQ(feed.newest().nEvent, 100U);
    EXPECT_EQ(feed.oldest().nEvent, 91U); // nine and their texts fit
    RunEvent longer = note("longer than all of it may be");
    longer.sDetail.assign(2 * RunFeed::MAX_EVENT_BYTES, 'x');
    feed.add(std::move(longer));
    EXPECT_EQ(feed.oldest().nEvent, 100U); // the latest stays
    feed.add(note("short"));
    EXPECT_EQ(feed.oldest().nEvent, 101U);
}

TEST(RunFeed, WakesWhoeverWaitsForASampleOrAnEvent)
{
    RunFeed feed(10, 10);
    const std::chrono::hours ever(1);
    for (const bool bSample : {true, false}) {
        const FeedPosition position = feed.newest();
        std::jthread writer([&feed, bSample] { bSample ? feed.add(samples(0, 1)) : feed.add(note("a")); });
        EXPECT_TRUE(feed.wait(position, ever));
    }
    EXPECT_FALSE(feed.wait(feed.newest(), std::chrono::milliseconds(1)));
}

TEST(RunFeed, WaitsForNothingOnceClosedButStillGivesWhatItHas)
{
    RunFeed feed(10, 10);
    feed.add(samples(0, 2));
    {
        std::jthread closer([&feed] { feed.close(); });
        EXPECT_FALSE(feed.wait(feed.newest(), std::chrono::hours(1)));
    }
    EXPECT_TRUE(feed.isClosed());
    EXPECT_TRUE(feed.wait(feed.oldest(), std::chrono::hours(1)));
    FeedPosition position;
    FeedBatch batch;
    feed.read(position, batch, ALL);
    EXPECT_EQ(batch.samples.size(), 2U);
}

TEST(RunFeed, LosesNothingBetweenAWriterAndAReaderThatKeepsUp)
{
    constexpr std::uint64_t TOTAL = 200'000;
    RunFeed feed(TOTAL, 10);
    std::jthread writer([&feed] {
        for (std::uint64_t nSample = 0; nSample < TOTAL; nSample += 100) {
            feed.add(samples(nSample, nSample + 100));
        }
        feed.close();
    });
    FeedPosition position;
    FeedBatch batch;
    std::uint64_t nExpected = 0;
    while (feed.wait(position, std::chrono::hours(1))) {
        feed.read(position, batch, 777);
        for (const StepSample& sample : batch.samples) {
            ASSERT_EQ(sample.nTimeUs, nExpected++);
        }
    }
    EXPECT_EQ(nExpected, TOTAL);
}

TEST(RunFeed, CountsWhatItsReadersCameTooLateFor)
{
    RunFeed feed(3, 1);
    feed.add(std::vector<StepSample>(10));
    FeedBatch batch;
    FeedPosition late{};
    feed.read(late, batch, 100);
    EXPECT_EQ(feed.lostSamples(), 7U);
    feed.read(late, batch, 100);
    FeedPosition another{5, 0};
    feed.read(another, batch, 100);
    EXPECT_EQ(feed.lostSamples(), 9U);
    FeedPosition events{};
    feed.read(events, batch, 0);
    EXPECT_EQ(feed.lostSamples(), 9U) << "who wants no samples loses none";
}
