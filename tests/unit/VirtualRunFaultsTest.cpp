#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/ConfigurationError.h"
#include "tests/unit/ScenarioMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
std::uint64_t failuresOf(const Scenario& scenario)
{
    return stepsOf(scenario).back().sample.nFailedSteps;
}
} // namespace

TEST(VirtualRunFaults, ComeAndGoAtTheirTimes)
{
    Scenario scenario = scenarioOn(3.0);
    scenario.unit.faults = {faultAt(1.2, EHandlerOperation::GetPmeasured, EHandlerFault::Fail)};
    scenario.unit.faults.front().forSeconds = 0.6;
    const std::vector<VirtualStep> steps = stepsOf(scenario);
    EXPECT_EQ(steps[199].sample.nFailedSteps, 0U);
    EXPECT_EQ(steps[200].sample.nFailedSteps, 1U); // 1.2 s
    EXPECT_EQ(steps[299].sample.nFailedSteps, 100U);
    EXPECT_EQ(steps[300].sample.nFailedSteps, 100U); // 1.8 s
}

TEST(VirtualRunFaults, TakeVirtualTimeAndCostDeadlines)
{
    Scenario scenario = scenarioOn(3.0);
    scenario.unit.faults = {faultAt(1.2, EHandlerOperation::GetPmeasured, EHandlerFault::Slow)};
    scenario.unit.faults.front().fault.delayUs = 14000;
    scenario.unit.faults.front().forSeconds = 0.6;
    VirtualRun run(scenario);
    StepList list;
    run.proceed(ALL_STEPS, &list);
    EXPECT_EQ(run.stepsDone(), run.totalSteps());
    // 14 ms of 6 ms: the next deadline that has not passed is the third one.
    EXPECT_EQ(list.steps[200].sample.nTimeUs, 1'200'000U);
    EXPECT_EQ(list.steps[200].sample.nLatenessUs, 14000U);
    EXPECT_EQ(list.steps[201].sample.nTimeUs, 1'218'000U);
    EXPECT_EQ(list.steps[201].sample.nOverruns, 2U);
    // Slow steps at 1.2 to 1.8 s every 18 ms are 34, each costs two deadlines.
    EXPECT_EQ(run.measures().overruns, 68.0);
    EXPECT_EQ(run.measures().steps, 432.0);
    EXPECT_EQ(list.steps.back().sample.nLatenessUs, 0U);
}

TEST(VirtualRunFaults, LoseNoDeadlineToACallThatTakesTheIntervalExactly)
{
    Scenario scenario = scenarioOn(1.2);
    scenario.unit.faults = {faultAt(0.6, EHandlerOperation::GetPmeasured, EHandlerFault::Slow)};
    for (const auto& [delayUs, nOverruns] : {std::pair{6000U, 0.0}, std::pair{6001U, 50.0}}) {
        scenario.unit.faults.front().fault.delayUs = delayUs;
        VirtualRun run(scenario);
        run.proceed(ALL_STEPS, nullptr);
        EXPECT_EQ(run.measures().overruns, nOverruns) << delayUs;
    }
}

TEST(VirtualRunFaults, FailByChanceAtTheirRateAndAlwaysTheSame)
{
    Scenario scenario = scenarioOn(61.2);
    scenario.unit.faults = {faultAt(1.2, EHandlerOperation::GetPmeasured, EHandlerFault::Intermittent)};
    scenario.unit.faults.front().fault.probability = 0.2;
    const std::uint64_t nFailures = failuresOf(scenario);
    EXPECT_NEAR(static_cast<double>(nFailures), 2000.0, 160.0); // of 10000, four standard deviations
    EXPECT_EQ(failuresOf(scenario), nFailures);
    scenario.unit.faults.front().fault.probability = 0.0;
    EXPECT_EQ(failuresOf(scenario), 0U);
    scenario.unit.faults.front().fault.probability = 1.0;
    EXPECT_EQ(failuresOf(scenario), 10000U);
}

TEST(VirtualRunFaults, ByChanceLeaveTheNoiseAsItIs)
{
    Scenario scenario = scenarioOn(3.0);
    const std::vector<VirtualStep> without = stepsOf(scenario);
    // Draws at each step and never fails.
    scenario.unit.faults = {faultAt(1.2, EHandlerOperation::GetPmeasured, EHandlerFault::Intermittent)};
    scenario.unit.faults.front().fault.probability = 0.0;
    const std::vector<VirtualStep> with = stepsOf(scenario);
    ASSERT_EQ(with.size(), without.size());
    for (std::size_t nStep = 0; nStep < with.size(); ++nStep) {
        ASSERT_EQ(with[nStep].sample.nPmeasured, without[nStep].sample.nPmeasured) << nStep;
    }
}

TEST(VirtualRunFaults, OfAnEventsOwnAreWarnedOfOnce)
{
    Scenario scenario = scenarioOn(1.2);
    scenario.unit.faults = {faultAt(0.0, EHandlerOperation::SetProductionTestSettings, EHandlerFault::Fail)};
    ScenarioEvent event = eventAt(0.3);
    event.everySeconds = 0.3;
    event.nLoopMode = 1;
    scenario.events.push_back(event);
    VirtualRun run(scenario);
    run.proceed(ALL_STEPS, nullptr);
    EXPECT_THAT(run.warnings(), testing::ElementsAre("event 1 at 0.3 s: setting production test failed: 0x8000"));
}

TEST(VirtualRunFaults, MoveTheLowerClampThatTheHandlerGives)
{
    struct Case
    {
        EHandlerFault eKind;
        std::int32_t nLower;
        std::int32_t nUpper;
    };
    for (const Case& c : {Case{EHandlerFault::None, -1000, 3000}, Case{EHandlerFault::WrongValue, 700, 700},
                          Case{EHandlerFault::Fail, 0, 0}, Case{EHandlerFault::Stuck, -1000, 3000}})
    {
        Scenario scenario = scenarioOn(1.2);
        scenario.unit.channels.front().txPminDbm = -20.0;
        scenario.unit.faults = {faultAt(0.0, EHandlerOperation::GetPctrlLimits, c.eKind)};
        scenario.unit.faults.front().fault.nValue = 700;
        const std::vector<VirtualStep> steps = stepsOf(scenario);
        EXPECT_EQ(steps.back().nLowerClamp, c.nLower) << handlerFaultName(c.eKind);
        EXPECT_EQ(steps.back().nUpperClamp, c.nUpper) << handlerFaultName(c.eKind);
    }
}
