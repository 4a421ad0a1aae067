#include "Unit/Metrics/MetricsReader.h"

#include "Unit/Metrics/private/TransientLogFill.h"
#include "Unit/SafetyMonitor/ViolationStore.h"
#include "tests/unit/FakeController.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace
{
/** Channels 7 and 8 that regulate with fake controllers; the feed is the test's. */
class MetricsReaderTest : public testing::Test
{
protected:
    MetricsReaderTest() : m_seven(configuration(7)), m_eight(configuration(8))
    {
        m_seven.connect();
        m_eight.connect();
        m_eight.setViolations(m_violations);
        RunSettings settings;
        settings.intervalMs = 2;
        m_pLoop = std::make_unique<RegulationLoop>(settings, std::vector<RadioChannel*>{&m_seven, &m_eight}, nullptr,
                                                   std::vector<FaultConfiguration>{}, m_queue);
        m_pReader = std::make_unique<MetricsReader>(*m_pLoop, m_feed, m_server, 1'600'000'000'250'000);
        m_thread = std::jthread([this] { m_pLoop->run(); });
    }
    ~MetricsReaderTest() override { m_pLoop->requestStop(); }
    MetricsReaderTest(const MetricsReaderTest&) = delete;
    MetricsReaderTest& operator=(const MetricsReaderTest&) = delete;

    static ChannelConfiguration configuration(unsigned int nNumber)
    {
        ChannelConfiguration configuration;
        configuration.nNumber = nNumber;
        return configuration;
    }

    static TestInterfaceConfiguration anyPort()
    {
        TestInterfaceConfiguration configuration;
        configuration.nPort = 0;
        return configuration;
    }

    void addStep(std::uint32_t nChannelIndex, std::uint64_t nSteps)
    {
        StepSample sample{};
        sample.nChannelIndex = nChannelIndex;
        sample.nSteps = nSteps;
        m_feed.add(std::vector<StepSample>{sample});
    }

    std::uint64_t lastStep(std::size_t nChannel) { return m_pReader->read().channels.at(nChannel).lastStep->nSteps; }

    FakeController m_controllerSeven{"IOutputPowerController_7"};
    FakeController m_controllerEight{"IOutputPowerController_8"};
    ViolationStore m_violations;
    RadioChannel m_seven;
    RadioChannel m_eight;
    SampleQueue m_queue{10};
    RunFeed m_feed{100, 10};
    TestServer m_server{anyPort()};
    std::unique_ptr<RegulationLoop> m_pLoop;
    std::unique_ptr<MetricsReader> m_pReader;
    std::jthread m_thread;
};
} // namespace

TEST_F(MetricsReaderTest, TellsOfTheUnit)
{
    const UnitMetrics metrics = m_pReader->read();
    EXPECT_FALSE(metrics.sVersion.empty());
    EXPECT_FALSE(metrics.sCompiler.empty());
    EXPECT_FALSE(metrics.sArchitecture.empty());
    EXPECT_EQ(metrics.startSeconds, 1'600'000'000.25);
    EXPECT_EQ(metrics.intervalMs, 2U);
    ASSERT_EQ(metrics.channels.size(), 2U);
    EXPECT_EQ(metrics.channels[0].nNumber, 7U);
    EXPECT_EQ(metrics.channels[1].nNumber, 8U);
    EXPECT_FALSE(metrics.channels[0].lastStep.has_value());
    EXPECT_EQ(m_pReader->read().nCommands, metrics.nCommands + 1) << "a command for each time";
}

TEST_F(MetricsReaderTest, TellsTheLatestStepOfEachChannel)
{
    addStep(0, 1);
    addStep(1, 2);
    addStep(0, 3);
    EXPECT_EQ(lastStep(0), 3U);
    EXPECT_EQ(lastStep(1), 2U);
    for (int n = 0; n < 90; ++n) {
        addStep(0, 4);
    }
    EXPECT_EQ(lastStep(0), 4U);
    EXPECT_EQ(lastStep(1), 2U) << "the last one that was seen";
    for (int n = 0; n < 250; ++n) {
        addStep(1, 5);
    }
    EXPECT_EQ(lastStep(1), 5U);
    EXPECT_EQ(m_pReader->read().nLostSamples, 0U) << "it passes over samples, and loses none";
}

TEST_F(MetricsReaderTest, TellsWhatTheRegulationThreadKnows)
{
    m_pLoop->commands().run([&] { m_eight.requestOn(); });
    while (!m_pReader->read().channels[1].inside->bOn) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const UnitMetrics metrics = m_pReader->read();
    EXPECT_FALSE(metrics.channels[0].inside->bOn);
    EXPECT_FALSE(metrics.channels[0].inside->nRefusedCalls.has_value()) << "no simulated handler";
    EXPECT_EQ(metrics.channels[0].nTransientSamples, 0U);
    EXPECT_GT(metrics.channels[1].stepTimes.nTotalNs, 0);
    EXPECT_GT(metrics.latenessTimes.nTotalNs, 0);
}

TEST_F(MetricsReaderTest, TellsViolationsOfWatchedChannels)
{
    EXPECT_FALSE(m_pReader->read().channels[0].nSafetyViolations.has_value()) << "nobody watches";
    EXPECT_EQ(m_pReader->read().channels[1].nSafetyViolations, 0U);
    SafetyViolation violation;
    violation.eRule = ESafetyRule::CrossedLimits;
    m_violations.onViolation(violation);
    m_violations.onViolation(violation);
    EXPECT_EQ(m_pReader->read().channels[1].nSafetyViolations, 2U);
}

TEST_F(MetricsReaderTest, LeavesThatOutOnceTheRegulationIsOver)
{
    addStep(0, 1);
    m_pReader->read();
    const std::uint64_t nCommands = m_pReader->read().nCommands;
    EXPECT_GE(nCommands, 1U);
    m_pLoop->requestStop();
    m_thread.join();
    const UnitMetrics metrics = m_pReader->read();
    EXPECT_FALSE(metrics.channels[0].inside.has_value());
    EXPECT_FALSE(metrics.channels[0].nTransientSamples.has_value());
    EXPECT_EQ(metrics.channels[0].lastStep->nSteps, 1U);
    EXPECT_EQ(metrics.nCommands, nCommands) << "counters keep what they had";
}
