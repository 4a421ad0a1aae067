#include "Unit/Telemetry/Collector.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{
class CollectorTest : public testing::Test
{
protected:
    SampleQueue m_queue{100};
    RunFeed m_feed{1000, 100};
    RegulationLoop m_loop{RunSettings{}, {}, nullptr, {}, m_queue};

    std::size_t held() const
    {
        FeedPosition position;
        FeedBatch batch;
        m_feed.read(position, batch, 1000);
        return batch.samples.size();
    }
};
} // namespace

TEST_F(CollectorTest, CarriesSamplesOverWhileTheRunGoesOn)
{
    Collector collector(m_loop, m_queue, m_feed);
    m_queue.push(StepSample{});
    EXPECT_TRUE(m_feed.wait(FeedPosition{}, std::chrono::minutes(1)));
    EXPECT_EQ(held(), 1U);
}

TEST_F(CollectorTest, TakesTheLastSamplesBeforeItEndsAndThenClosesTheFeed)
{
    Collector collector(m_loop, m_queue, m_feed);
    for (int nSample = 0; nSample < 50; ++nSample) {
        m_queue.push(StepSample{});
    }
    collector.stop();
    EXPECT_TRUE(m_feed.isClosed());
    EXPECT_EQ(held(), 50U);
    collector.stop();
}

TEST_F(CollectorTest, AddsTheEventsThatSamplesTell)
{
    StepSample sample{};
    sample.nSteps = 1;
    sample.nOverruns = 2;
    m_queue.push(sample);
    Collector(m_loop, m_queue, m_feed).stop();
    FeedPosition position;
    FeedBatch batch;
    m_feed.read(position, batch, 1);
    ASSERT_EQ(batch.events.size(), 1U);
    EXPECT_EQ(batch.events[0].sText, "2 deadlines skipped");
}

TEST_F(CollectorTest, TellsOnceWhenTheStopBegan)
{
    m_loop.requestStop();
    Collector collector(m_loop, m_queue, m_feed);
    m_loop.run();
    std::this_thread::sleep_for(2 * Collector::INTERVAL);
    collector.stop();
    FeedPosition position;
    FeedBatch batch;
    m_feed.read(position, batch, 1);
    ASSERT_EQ(batch.events.size(), 1U);
    EXPECT_EQ(batch.events[0].eEvent, ERunEvent::Note);
    EXPECT_EQ(batch.events[0].sText, "switching off");
    EXPECT_EQ(batch.events[0].sDetail, STOP_DETAIL);
    EXPECT_EQ(batch.events[0].nTimeUs, 0U);
}
