#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "tests/unit/ScenarioMaker.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace
{
/** @return the requested powers of a run, hundredths of a dBm */
std::vector<std::int32_t> requestsOf(const Scenario& scenario)
{
    std::vector<std::int32_t> requests;
    for (const VirtualStep& step : stepsOf(scenario)) {
        requests.push_back(step.sample.nRequestedPower);
    }
    return requests;
}

ScenarioEvent powerAt(double seconds, double powerDbm, double overSeconds = 0.0)
{
    ScenarioEvent event = eventAt(seconds);
    event.requestedPowerDbm = powerDbm;
    event.overSeconds = overSeconds;
    return event;
}

Scenario intervalsOf10Ms(double durationSeconds)
{
    Scenario scenario = quietScenario(durationSeconds);
    scenario.unit.intervalMs = 10;
    return scenario;
}
} // namespace

TEST(VirtualRunEvents, ActBeforeTheFirstStepThatIsNotEarlier)
{
    struct Case
    {
        double atSeconds;
        std::size_t nStep;
    };
    for (const Case& c : {Case{0.0, 0}, Case{0.02, 2}, Case{0.020000001, 3}, Case{0.0199, 2}, Case{0.03, 3}}) {
        Scenario scenario = intervalsOf10Ms(0.05);
        scenario.events = {powerAt(c.atSeconds, 12.5)};
        std::vector<std::int32_t> expected(5, 1000);
        std::fill(expected.begin() + static_cast<std::ptrdiff_t>(c.nStep), expected.end(), 1250);
        EXPECT_EQ(requestsOf(scenario), expected) << c.atSeconds;
    }
}

TEST(VirtualRunEvents, OfOneTimeActInTheirOrder)
{
    Scenario scenario = intervalsOf10Ms(0.02);
    scenario.events = {powerAt(0.01, 11.0), powerAt(0.01, 12.0)};
    EXPECT_THAT(requestsOf(scenario), testing::ElementsAre(1000, 1200));
}

TEST(VirtualRunEvents, MoveInAStraightLine)
{
    Scenario scenario = intervalsOf10Ms(0.08);
    scenario.events = {powerAt(0.015, 14.0, 0.04)};
    EXPECT_THAT(requestsOf(scenario), testing::ElementsAre(1000, 1000, 1050, 1150, 1250, 1350, 1400, 1400));
}

TEST(VirtualRunEvents, BeginAMoveWhereTheLastOneHasCome)
{
    Scenario scenario = intervalsOf10Ms(0.06);
    scenario.events = {powerAt(0.0, 14.0, 0.04), powerAt(0.02, 10.0, 0.02)};
    EXPECT_THAT(requestsOf(scenario), testing::ElementsAre(1000, 1100, 1200, 1100, 1000, 1000));
}

TEST(VirtualRunEvents, RepeatToTheEnd)
{
    Scenario scenario = intervalsOf10Ms(0.08);
    scenario.events = {powerAt(0.0, 11.0), powerAt(0.01, 12.0)};
    scenario.events[0].everySeconds = 0.03;
    scenario.events[1].everySeconds = 0.03;
    EXPECT_THAT(requestsOf(scenario), testing::ElementsAre(1100, 1200, 1200, 1100, 1200, 1200, 1100, 1200));
    // Faster than the steps: the latest one before each counts, in the order of the times.
    scenario.events[0].everySeconds = 1e-9;
    EXPECT_THAT(requestsOf(scenario), testing::ElementsAre(1100, 1200, 1100, 1100, 1200, 1100, 1100, 1200));
}

TEST(VirtualRunEvents, TakeAQuantityFromTheDriveAndLeaveTheOthers)
{
    const TemporaryFolder folder;
    Scenario scenario = intervalsOf10Ms(0.06);
    scenario.drive.sFile = folder.write("drive.csv", "time_s,requested_power_dBm,temperature_C\n0,10,20\n0.04,14,24\n");
    scenario.drive.interpolation = {EInterpolation::Linear, EInterpolation::Linear, EInterpolation::Held};
    scenario.events = {powerAt(0.025, 8.0)};
    const std::vector<VirtualStep> steps = stepsOf(scenario);
    EXPECT_THAT(requestsOf(scenario), testing::ElementsAre(1000, 1100, 1200, 800, 800, 800));
    for (std::size_t nStep = 0; nStep < steps.size(); ++nStep) {
        EXPECT_FLOAT_EQ(steps[nStep].sample.temperatureDegrees, std::min(20.0F + static_cast<float>(nStep), 24.0F));
    }
}

TEST(VirtualRunEvents, LetTheDriveBeginInTheMiddleAndAnew)
{
    const TemporaryFolder folder;
    Scenario scenario = intervalsOf10Ms(0.08);
    scenario.drive.sFile = folder.write("drive.csv", "time_s,requested_power_dBm\n0,1\n0.01,2\n0.02,3\n0.03,4\n");
    scenario.drive.startSeconds = 0.01;
    EXPECT_THAT(requestsOf(scenario), testing::ElementsAre(200, 300, 400, 400, 400, 400, 400, 400));
    scenario.drive.bRepeat = true;
    EXPECT_THAT(requestsOf(scenario), testing::ElementsAre(200, 300, 100, 200, 300, 100, 200, 300));
}

TEST(VirtualRunEvents, SwitchOffAndOnAgain)
{
    Scenario scenario = scenarioOn(3.0);
    scenario.events.push_back(requestAt(1.0, false));
    scenario.events.push_back(requestAt(2.0, true));
    const std::vector<VirtualStep> steps = stepsOf(scenario);
    EXPECT_EQ(steps[166].sample.nState, eOPC_TX_ON);
    EXPECT_EQ(steps[167].sample.nStateBefore, eOPC_TX_OFF_INITIATED); // 1.002 s
    EXPECT_EQ(steps[333].sample.nState, eOPC_TX_OFF);
    EXPECT_TRUE(std::isinf(steps[333].outputPowerDbm));
    EXPECT_EQ(steps[334].sample.nStateBefore, eOPC_TX_ON_INITIATED);
    EXPECT_EQ(steps.back().sample.nState, eOPC_TX_ON);
}

TEST(VirtualRunEvents, AgeTheTransmitterWhichTheLoopMakesUpFor)
{
    Scenario scenario = scenarioOn(3.0);
    scenario.unit.channels.front().transmitter.detectorNoiseDb = 0.0;
    ScenarioEvent event = eventAt(1.0);
    event.overSeconds = 1.0;
    for (const TransmitterKey& key : transmitterKeys()) {
        if (key.pField == &TransmitterParameters::chainGainDb) {
            event.transmitter.emplace_back(&key, 30.0);
        }
    }
    scenario.events.push_back(event);
    const std::vector<VirtualStep> steps = stepsOf(scenario);
    EXPECT_NEAR(steps.back().outputPowerDbm, 10.0, 0.1);
    // Three decibels less gain, and the cooler ones that a second of warming takes are far below them.
    EXPECT_NEAR(steps.back().sample.nPctrl - steps[166].sample.nPctrl, 300, 8);
    EXPECT_EQ(steps.back().sample.nFailedSteps, 0U);
}

TEST(VirtualRunEvents, HoldTheControlPowerBetweenTheLimitsThatItTells)
{
    Scenario scenario = scenarioOn(4.0);
    scenario.unit.channels.front().requestedPowerDbm = 45.0;
    scenario.unit.channels.front().gainPercentOn = GainPercent{100, 100, 100};
    ScenarioEvent test = powerAt(1.0, 60.0);
    test.productionTest = true;
    ScenarioEvent limits = powerAt(2.0, -60.0);
    limits.txPminDbm = -4.0;
    ScenarioEvent narrow = eventAt(3.0);
    narrow.productionTest = false;
    scenario.events.insert(scenario.events.end(), {test, limits, narrow});
    const std::vector<VirtualStep> steps = stepsOf(scenario);
    const auto expectStep = [&steps](std::size_t nStep, std::int32_t nLower, std::int32_t nUpper, std::int32_t nPctrl) {
        EXPECT_EQ(steps[nStep].nLowerClamp, nLower) << nStep;
        EXPECT_EQ(steps[nStep].nUpperClamp, nUpper) << nStep;
        EXPECT_EQ(steps[nStep].sample.nPctrl, nPctrl) << nStep;
    };
    expectStep(166, -1000, 3000, 3000);
    expectStep(333, -3000, 5000, 5000);
    expectStep(499, -2400, 5000, -2400);
    expectStep(666, -400, 3000, -400);
}
