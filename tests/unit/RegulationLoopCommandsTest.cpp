#include "Unit/Process/RegulationLoop.h"
#include "tests/unit/FakeController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace
{
class RegulationLoopCommands : public testing::Test
{
protected:
    RegulationLoopCommands() : m_channel(configuration())
    {
        m_channel.connect();
        m_channel.requestOn();
        m_settings.intervalMs = 2;
        m_pLoop = std::make_unique<RegulationLoop>(m_settings, std::vector<RadioChannel*>{&m_channel}, nullptr,
                                                   std::vector<FaultConfiguration>{}, m_queue);
        m_thread = std::jthread([this] { m_pLoop->run(); });
    }
    ~RegulationLoopCommands() override { m_pLoop->requestStop(); }
    RegulationLoopCommands(const RegulationLoopCommands&) = delete;
    RegulationLoopCommands& operator=(const RegulationLoopCommands&) = delete;

    static ChannelConfiguration configuration()
    {
        ChannelConfiguration configuration;
        configuration.nNumber = 7;
        return configuration;
    }

    void run(const std::function<void()>& command) { m_pLoop->commands().run(command); }

    void waitForSteps(std::uint64_t nSteps)
    {
        const std::uint64_t nFirst = steps();
        while (steps() < nFirst + nSteps) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    std::uint64_t steps()
    {
        std::uint64_t nSteps = 0;
        run([&] { nSteps = m_channel.statistics().nSteps; });
        return nSteps;
    }

    FakeController m_controller{"IOutputPowerController_7"};
    RadioChannel m_channel;
    RunSettings m_settings;
    SampleQueue m_queue{100'000};
    std::unique_ptr<RegulationLoop> m_pLoop;
    std::jthread m_thread;
};
} // namespace

TEST_F(RegulationLoopCommands, RunBetweenTwoSteps)
{
    std::atomic<bool> bInStep{false};
    run([&] {
        m_controller.onRegulate = [&] {
            bInStep = true;
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            bInStep = false;
        };
    });
    for (int nCommand = 0; nCommand < 50; ++nCommand) {
        run([&] { EXPECT_FALSE(bInStep); });
    }
    run([&] { m_controller.onRegulate = {}; });
}

TEST_F(RegulationLoopCommands, AreServedWhileStepsGoOn)
{
    const std::uint64_t nFirst = steps();
    for (int nCommand = 0; nCommand < 2000; ++nCommand) {
        run([] {});
    }
    waitForSteps(3);
    EXPECT_GT(steps(), nFirst);
}

TEST_F(RegulationLoopCommands, ChangeTheIntervalOfDeadlinesAndControllers)
{
    waitForSteps(2);
    bool bTaken = false;
    double changedAtSeconds = 0.0;
    std::uint64_t nStepsThen = 0;
    run([&] {
        bTaken = m_pLoop->setInterval(5);
        changedAtSeconds = m_pLoop->elapsedSeconds();
        nStepsThen = m_channel.statistics().nSteps;
    });
    EXPECT_TRUE(bTaken);
    EXPECT_EQ(m_controller.nInterval, 5);
    waitForSteps(6);
    run([&] {
        const double sinceSeconds = m_pLoop->elapsedSeconds() - changedAtSeconds;
        const auto nSteps = static_cast<double>(m_channel.statistics().nSteps - nStepsThen + m_pLoop->overruns());
        EXPECT_GE(sinceSeconds, 6 * 0.005);
        EXPECT_GE(nSteps * 0.005 + 1e-9, sinceSeconds - 0.005 * static_cast<double>(m_pLoop->overruns()));
        EXPECT_EQ(m_pLoop->intervalMs(), 5U);
    });
}

TEST_F(RegulationLoopCommands, SetTheTemperatureOfTheNextStep)
{
    run([&] { m_pLoop->temperatureDegrees().set(-12.0); });
    waitForSteps(1);
    run([&] { EXPECT_EQ(m_channel.lastSample().temperatureDegrees, -12.0F); });
}

TEST_F(RegulationLoopCommands, AreRefusedOnceRegulationIsOver)
{
    m_pLoop->requestStop();
    while (!m_pLoop->isFinished()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_THROW(run([] { ADD_FAILURE(); }), RegulationOver);
}

TEST_F(RegulationLoopCommands, CannotKeepTheUnitFromSwitchingOff)
{
    m_pLoop->requestStop();
    try {
        for (;;) {
            run([&] { m_pLoop->want(m_channel, eREQUESTED_TX_POWER_ON); });
        }
    }
    catch (const RegulationOver&) {
        EXPECT_EQ(m_pLoop->error(), "");
    }
    EXPECT_FALSE(m_controller.bOn);
}
