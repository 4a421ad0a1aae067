#include "Unit/Simulator/VirtualRun.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Broker/BrokerDirectory.h"
#include "Platform/ConfigurationError.h"
#include "tests/unit/ScenarioMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace
{
/** @return whether two runs are the same, without any tolerance */
bool same(const std::vector<VirtualStep>& left, const std::vector<VirtualStep>& right)
{
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(), [](const VirtualStep& a, const VirtualStep& b) {
               return a.sample == b.sample && a.outputPowerDbm == b.outputPowerDbm && a.nLowerClamp == b.nLowerClamp &&
                      a.nUpperClamp == b.nUpperClamp;
           });
}
} // namespace

TEST(VirtualRun, SwitchesOnAndRegulates)
{
    const std::vector<VirtualStep> steps = stepsOf(scenarioOn(1.2));
    ASSERT_EQ(steps.size(), 200U);
    EXPECT_EQ(steps.front().sample.nStateBefore, eOPC_TX_ON_INITIATED);
    EXPECT_EQ(steps.front().sample.nTimeUs, 0U);
    EXPECT_EQ(steps.back().sample.nTimeUs, 199U * 6000U);
    EXPECT_EQ(steps.back().sample.nState, eOPC_TX_ON);
    EXPECT_NEAR(steps.back().outputPowerDbm, 10.0, 0.1);
    EXPECT_TRUE(std::isinf(steps.front().outputPowerDbm));
    EXPECT_EQ(steps.back().sample.nSteps, 200U);
    EXPECT_EQ(steps.back().sample.nFailedSteps, 0U);
}

TEST(VirtualRun, SwitchesNothingOnByItself)
{
    for (const VirtualStep& step : stepsOf(quietScenario(0.6))) {
        ASSERT_EQ(step.sample.nState, eOPC_TX_OFF);
    }
}

TEST(VirtualRun, IsTheSameToTheLastBitForOneSeedAndNotForAnother)
{
    const Scenario scenario = scenarioOn(3.0);
    const std::vector<VirtualStep> steps = stepsOf(scenario);
    EXPECT_TRUE(same(steps, stepsOf(scenario)));
    Scenario other = scenario;
    other.unit.channels.front().nSeed = 2;
    EXPECT_FALSE(same(steps, stepsOf(other)));
}

TEST(VirtualRun, TakesEveryInterval)
{
    for (unsigned int intervalMs = 1; intervalMs <= 24; ++intervalMs) {
        Scenario scenario = scenarioOn(2.0);
        scenario.unit.intervalMs = intervalMs;
        const std::vector<VirtualStep> steps = stepsOf(scenario);
        EXPECT_EQ(steps.size(), (2000 + intervalMs - 1) / intervalMs) << intervalMs;
        EXPECT_EQ(steps[1].sample.nTimeUs, intervalMs * 1000U);
        EXPECT_EQ(steps.back().sample.nState, eOPC_TX_ON) << intervalMs;
    }
}

TEST(VirtualRun, CountsTheDeadlinesBeforeItsEndAndStopsThere)
{
    struct Case
    {
        double seconds;
        std::uint64_t nSteps;
    };
    for (const Case& c : {Case{0.006, 1}, Case{0.0061, 2}, Case{0.012, 2}, Case{0.3, 50}, Case{0.001, 1}}) {
        VirtualRun run(quietScenario(c.seconds));
        EXPECT_EQ(run.totalSteps(), c.nSteps) << c.seconds;
        EXPECT_FALSE(run.proceed(ALL_STEPS, nullptr));
        EXPECT_EQ(run.stepsDone(), c.nSteps) << c.seconds;
        EXPECT_FALSE(run.proceed(ALL_STEPS, nullptr));
        EXPECT_EQ(run.measures().steps, static_cast<double>(c.nSteps));
    }
}

TEST(VirtualRun, IsTheSameInPiecesAsAtOnce)
{
    const Scenario scenario = scenarioOn(1.8);
    StepList list;
    {
        VirtualRun run(scenario);
        EXPECT_EQ(run.stepsDone(), 0U);
        while (run.proceed(7, &list)) {
            ASSERT_EQ(run.stepsDone() % 7, 0U);
        }
    }
    EXPECT_TRUE(same(list.steps, stepsOf(scenario)));
}

TEST(VirtualRun, LeavesNothingBehindWhenItIsGivenUp)
{
    const std::vector<std::string> before = BrokerDirectory::publishedNames();
    {
        VirtualRun run(scenarioOn(60.0));
        EXPECT_TRUE(run.proceed(500, nullptr));
    }
    EXPECT_EQ(BrokerDirectory::publishedNames(), before);
}

TEST(VirtualRun, RefusesADriveThatIsNotThere)
{
    Scenario scenario = quietScenario(1.0);
    scenario.drive.sFile = "/nowhere/drive.csv";
    EXPECT_THROW(VirtualRun run(scenario), ConfigurationError);
}
