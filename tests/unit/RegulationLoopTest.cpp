#include "Unit/Process/RegulationLoop.h"

#include "Simulation/Handlers/ISimulatedTemperature.h"
#include "tests/unit/FakeController.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <stdexcept>
#include <thread>

namespace
{
class RecordedTemperature final : public ISimulatedTemperature
{
public:
    void setTemperature(int nTemperature) override { temperatures.push_back(nTemperature); }
    std::vector<int> temperatures;
};

/** Three deadlines that are not awaited, one skipped before the last. */
class ThreeDeadlines final : public IRegulationPace
{
public:
    void begin(std::chrono::nanoseconds interval) override { m_intervalNs = interval.count(); }
    bool wait() override { return ++m_nWaits <= 3; }
    std::uint64_t next() override
    {
        const std::uint64_t nSkipped = m_nWaits == 2 ? 1 : 0;
        m_nElapsedNs += m_intervalNs * (1 + static_cast<std::int64_t>(nSkipped));
        return nSkipped;
    }
    void serve(CommandQueue& /*commands*/) override {}
    void setInterval(std::chrono::nanoseconds /*interval*/) override {}
    std::int64_t elapsedNs() const override { return m_nElapsedNs; }
    std::int64_t latenessNs() const override { return 0; }
    const LatenessStatistics& statistics() const override { return m_statistics; }

private:
    std::int64_t m_intervalNs = 0;
    std::int64_t m_nElapsedNs = 0;
    int m_nWaits = 0;
    LatenessStatistics m_statistics;
};

class RegulationLoopTest : public testing::Test
{
protected:
    RegulationLoopTest() : m_channel(configuration())
    {
        m_channel.connect();
        m_settings.intervalMs = 1;
    }

    static ChannelConfiguration configuration()
    {
        ChannelConfiguration configuration;
        configuration.nNumber = 7;
        configuration.requestedPowerDbm = 3.0;
        return configuration;
    }

    std::vector<StepSample> samples()
    {
        std::vector<StepSample> result;
        m_queue.consumeAll([&result](const StepSample& sample) { result.push_back(sample); });
        return result;
    }

    FakeController m_controller{"IOutputPowerController_7"};
    RadioChannel m_channel;
    RecordedTemperature m_temperature;
    RunSettings m_settings;
    SampleQueue m_queue{1000};
};
} // namespace

TEST_F(RegulationLoopTest, RunsItsTimeAndSwitchesOff)
{
    m_settings.durationSeconds = 0.05;
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, &m_temperature, {}, m_queue);
    EXPECT_FALSE(loop.isFinished());
    loop.run();
    EXPECT_TRUE(loop.isFinished());
    EXPECT_EQ(loop.error(), "");
    EXPECT_EQ(m_channel.state(), eOPC_TX_OFF);
    const std::vector<StepSample> taken = samples();
    ASSERT_FALSE(taken.empty());
    EXPECT_EQ(taken.front().nTimeUs, 0U);
    EXPECT_GE(taken.back().nTimeUs, 50'000U);
    EXPECT_EQ(taken.size() + loop.overruns(), taken.back().nTimeUs / 1000 + 1);
    EXPECT_EQ(loop.lateness().count(), taken.size());
    EXPECT_THAT(m_controller.requestedPowers, testing::Each(300));
    EXPECT_THAT(m_temperature.temperatures, testing::ElementsAre(25)); // told once, since it does not change
}

TEST_F(RegulationLoopTest, TakesItsTimeFromThePaceThatItIsGivenAndEndsWithIt)
{
    ThreeDeadlines pace;
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue, &pace);
    loop.run();
    EXPECT_EQ(loop.error(), "");
    EXPECT_FALSE(loop.stopMoment());
    const std::vector<StepSample> taken = samples();
    ASSERT_EQ(taken.size(), 3U);
    EXPECT_EQ(taken[1].nTimeUs, 1000U);
    EXPECT_EQ(taken[2].nTimeUs, 3000U);
    EXPECT_EQ(taken[2].nOverruns, 1U);
    EXPECT_EQ(loop.overruns(), 1U);
}

TEST_F(RegulationLoopTest, TellsWhenItsStopBegan)
{
    m_settings.durationSeconds = 0.01;
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    EXPECT_FALSE(loop.stopMoment());
    loop.run();
    const auto moment = loop.stopMoment();
    ASSERT_TRUE(moment);
    EXPECT_GE(moment->nTimeUs, 10'000U);
    for (const StepSample& sample : samples()) {
        EXPECT_EQ(sample.nTimeUs >= moment->nTimeUs, sample.nSteps > moment->nSteps) << sample.nSteps;
    }
}

TEST_F(RegulationLoopTest, StopsWhenAskedToFromAnotherThread)
{
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    std::thread thread([&loop] { loop.run(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(loop.isFinished());
    loop.requestStop();
    thread.join();
    EXPECT_TRUE(loop.isFinished());
    EXPECT_EQ(m_channel.state(), eOPC_TX_OFF);
    EXPECT_EQ(m_controller.requests.back().first, eREQUESTED_TX_POWER_OFF);
    EXPECT_EQ(m_controller.requests.size(), 2U); // one request off is enough
}

TEST_F(RegulationLoopTest, GivesUpOnATransmitterThatStaysOn)
{
    m_settings.durationSeconds = 0.001;
    m_controller.bStaysOn = true;
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    loop.run();
    EXPECT_EQ(loop.error(), "not every transmitter went off");
    EXPECT_GE(m_controller.requestedPowers.size(), std::size_t{RegulationLoop::MAX_STOP_CALLS});
    EXPECT_LE(m_controller.requestedPowers.size(), std::size_t{RegulationLoop::MAX_STOP_CALLS} + 1);
}

TEST_F(RegulationLoopTest, DropsAndCountsSamplesThatNobodyReads)
{
    SampleQueue small{1}; // there is a step at least, however busy the machine is
    m_settings.durationSeconds = 0.02;
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, small);
    loop.run();
    EXPECT_EQ(loop.droppedSamples(), m_controller.requestedPowers.size() - 1);
}

TEST_F(RegulationLoopTest, CountsDeadlinesThatASlowStepCosts)
{
    m_settings.durationSeconds = 0.05;
    m_controller.onRegulate = [this] {
        if (m_controller.requestedPowers.size() == 5) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    };
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    loop.run();
    EXPECT_GE(loop.overruns(), 9U);
    EXPECT_EQ(samples().back().nOverruns, loop.overruns());
}

TEST_F(RegulationLoopTest, LosesNoDeadlineToWaitingForCommands)
{
    m_settings.intervalMs = 20;
    m_settings.durationSeconds = 0.5;
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    loop.run();
    EXPECT_LE(loop.overruns(), 5U); // of 25, on a machine that is busy
}

TEST_F(RegulationLoopTest, FollowsTheProfileAtItsSpeed)
{
    const TemporaryFolder folder;
    const Profile profile(folder.write("p.csv", "time_s,requested_power_dBm,temperature_C\n0,0,20\n10,10,30\n"),
                          {EInterpolation::Linear, EInterpolation::Linear, EInterpolation::Held});
    m_settings.durationSeconds = 0.04;
    m_settings.speed = 100.0;
    m_settings.startSeconds = 5.0;
    m_settings.pProfile = &profile;
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, &m_temperature, {}, m_queue);
    loop.run();
    for (const StepSample& sample : samples()) {
        // A millisecond is 0.1 s of the profile, which is 0.1 dB.
        const auto nExpected = 500 + static_cast<std::int32_t>(sample.nTimeUs / 1000) * 10;
        EXPECT_NEAR(sample.nRequestedPower, nExpected, 1);
    }
    EXPECT_EQ(m_temperature.temperatures.front(), 25);
    EXPECT_THAT(m_temperature.temperatures, testing::Contains(28));
    EXPECT_TRUE(std::is_sorted(m_temperature.temperatures.begin(), m_temperature.temperatures.end()));
}

TEST_F(RegulationLoopTest, EndsWhenAModuleThrows)
{
    m_controller.onRegulate = [] { throw std::runtime_error("broken module"); };
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    loop.run();
    EXPECT_TRUE(loop.isFinished());
    EXPECT_EQ(loop.error(), "broken module");
}

TEST_F(RegulationLoopTest, CountsHowLongStepsTakeAndHowLateTheyBegin)
{
    m_settings.durationSeconds = 0.05;
    m_controller.onRegulate = [this] {
        if (m_controller.requestedPowers.size() == 5) {
            std::this_thread::sleep_for(std::chrono::milliseconds(7));
        }
    };
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    loop.run();
    const TimeCounts stepTimes = loop.stepTimes(0).read();
    EXPECT_EQ(std::accumulate(stepTimes.counts.begin(), stepTimes.counts.end(), std::uint64_t{0}),
              m_channel.statistics().nSteps);
    EXPECT_GE(std::accumulate(stepTimes.counts.begin() + 12, stepTimes.counts.end(), std::uint64_t{0}), 1U);
    EXPECT_GE(stepTimes.nTotalNs, 7'000'000);
    const TimeCounts lateness = loop.latenessTimes().read();
    EXPECT_EQ(std::accumulate(lateness.counts.begin(), lateness.counts.end(), std::uint64_t{0}),
              loop.lateness().count());
    EXPECT_NEAR(static_cast<double>(lateness.nTotalNs),
                loop.lateness().meanNs() * static_cast<double>(loop.lateness().count()), 1.0);
}
