#include "Unit/LivePage/private/FeedStream.h"

#include "tests/unit/SampleMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace
{
constexpr const char* RUN = "0123456789abcdef";
constexpr const char* GREETING = "event: run\ndata: {\"run\":\"0123456789abcdef\"}\n\n";

void fill(RunFeed& feed, std::uint64_t nFrom, std::uint64_t nTo)
{
    for (std::uint64_t nSample = nFrom; nSample < nTo; ++nSample) {
        feed.add(std::vector<StepSample>{stepOnTheAir(nSample)});
    }
}

/** @return a feed that the test owns */
std::shared_ptr<const RunFeed> borrowed(const RunFeed& feed)
{
    return {std::shared_ptr<const RunFeed>(), &feed};
}

/** @return the stream's parts up to the first that is empty or its end */
std::string takeAll(FeedStream& stream)
{
    std::string sText;
    for (auto part = stream.next(); part.has_value() && !part->empty(); part = stream.next()) {
        sText += *part;
    }
    return sText;
}
} // namespace

TEST(FeedStream, BeginsWithTheRunAndItsLatestStepAndThenSendsWhatIsNew)
{
    RunFeed feed(10, 10);
    fill(feed, 0, 5);
    FeedStream stream(borrowed(feed), RUN, {});
    EXPECT_THAT(takeAll(stream), HasSubstr("\"t_us\":[4]"));
    fill(feed, 5, 7);
    const std::string sText = takeAll(stream);
    EXPECT_THAT(sText,
                StartsWith("id: 6\nevent: steps\ndata: {\"run\":\"0123456789abcdef\",\"gap\":0,\"channels\":[{"));
    EXPECT_THAT(sText, HasSubstr("\"t_us\":[5,6]"));
    EXPECT_THAT(sText, testing::EndsWith("}]}\n\n"));
}

TEST(FeedStream, BeginsWithTheLatestStepOfEachChannel)
{
    RunFeed feed(10, 10);
    feed.add(std::vector{stepOnTheAir(6, 0), stepOnTheAir(6, 1), stepOnTheAir(12, 0), stepOnTheAir(12, 1)});
    FeedStream stream(borrowed(feed), RUN, {});
    const std::string sText = takeAll(stream);
    EXPECT_THAT(sText, HasSubstr("id: 3\n"));
    EXPECT_THAT(sText, HasSubstr("{\"c\":10,\"t_us\":[12]"));
    EXPECT_THAT(sText, HasSubstr("{\"c\":11,\"t_us\":[12]"));
}

TEST(FeedStream, OutlivesWhoMadeItsFeed)
{
    auto pFeed = std::make_shared<RunFeed>(10, 10);
    FeedStream stream(pFeed, RUN, {});
    pFeed->close();
    pFeed.reset();
    EXPECT_EQ(takeAll(stream), GREETING);
}

TEST(FeedStream, GoesOnAfterTheLastSampleThatTheClientHas)
{
    RunFeed feed(10, 10);
    fill(feed, 0, 5);
    FeedStream stream(borrowed(feed), RUN, {RUN, 2});
    EXPECT_THAT(takeAll(stream), HasSubstr("\"gap\":0,\"channels\":[{\"c\":10,\"t_us\":[3,4]"));
    FeedStream upToDate(borrowed(feed), RUN, {RUN, 4});
    EXPECT_EQ(takeAll(upToDate), GREETING);
    FeedStream ahead(borrowed(feed), RUN, {RUN, UINT64_MAX});
    EXPECT_EQ(takeAll(ahead), GREETING);
}

TEST(FeedStream, TellsHowManySamplesWereGone)
{
    RunFeed feed(4, 10);
    fill(feed, 0, 10);
    FeedStream stream(borrowed(feed), RUN, {RUN, 1});
    EXPECT_THAT(takeAll(stream), HasSubstr("\"gap\":4,\"channels\":[{\"c\":10,\"t_us\":[6,7,8,9]"));
}

TEST(FeedStream, GivesAClientOfAnotherRunAllOfThisOneWithoutAGap)
{
    RunFeed feed(4, 10);
    fill(feed, 0, 10);
    FeedStream stream(borrowed(feed), RUN, {"fedcba9876543210", 1'000'000});
    EXPECT_THAT(takeAll(stream), HasSubstr("\"gap\":0,\"channels\":[{\"c\":10,\"t_us\":[6,7,8,9]"));
}

TEST(FeedStream, SendsManySamplesInSeveralMessages)
{
    RunFeed feed(10'000, 10);
    std::vector<StepSample> samples(9000, stepOnTheAir(1));
    feed.add(samples);
    FeedStream stream(borrowed(feed), RUN, {"other", std::nullopt});
    const std::string sText = takeAll(stream);
    EXPECT_THAT(sText, HasSubstr("id: 3999\n"));
    EXPECT_THAT(sText, HasSubstr("id: 7999\n"));
    EXPECT_THAT(sText, HasSubstr("id: 8999\n"));
}

TEST(FeedStream, SendsTheLatestEventsFirstAndNewOnesAsTheyCome)
{
    RunFeed feed(10, 1000);
    const auto addEvents = [&feed](int nFrom, int nTo) {
        for (int nEvent = nFrom; nEvent < nTo; ++nEvent) {
            RunEvent event;
            event.sText = "event " + std::to_string(nEvent) + ".";
            feed.add(event);
        }
    };
    addEvents(0, 300);
    FeedStream stream(borrowed(feed), RUN, {});
    const std::string sFirst = takeAll(stream);
    EXPECT_THAT(sFirst, HasSubstr("event: events\ndata: {\"events\":[{\"id\":100,"));
    EXPECT_THAT(sFirst, HasSubstr("event 299."));
    addEvents(300, 301);
    const std::string sNext = takeAll(stream);
    EXPECT_THAT(sNext, HasSubstr("event 300."));
    EXPECT_THAT(sNext, Not(HasSubstr("event 299.")));
}

TEST(FeedStream, EndsWhenTheFeedIsClosedAndEverythingIsSent)
{
    RunFeed feed(10, 10);
    FeedStream stream(borrowed(feed), RUN, {});
    EXPECT_EQ(stream.next(), GREETING);
    fill(feed, 0, 1);
    feed.close();
    EXPECT_THAT(stream.next().value_or("over"), HasSubstr("\"t_us\":[0]"));
    EXPECT_EQ(stream.next(), std::nullopt);
}

TEST(FeedStream, SaysThatItIsAliveWhenThereIsNothingElse)
{
    const RunFeed feed(10, 10);
    FeedStream often(borrowed(feed), RUN, {}, std::chrono::milliseconds(1));
    EXPECT_EQ(often.next(), GREETING);
    EXPECT_EQ(often.next(), ": alive\n\n");
    FeedStream seldom(borrowed(feed), RUN, {});
    EXPECT_EQ(seldom.next(), GREETING);
    EXPECT_EQ(seldom.next(), "");
}
