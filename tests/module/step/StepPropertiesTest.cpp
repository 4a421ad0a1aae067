// What holds for every step.
#include "Control/OutputPowerController/private/RegulatorStep.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace
{
using RegulatorStep::ClosedLoopInput;
using RegulatorStep::ClosedLoopResult;

class StepProperties : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        // The same cases at every run, unless whoever runs it asks for others.
        ASSERT_EQ(setenv("RC_PARAMS", "seed=20260101 max_success=2000", 0), 0);
    }
};

/** @return any 32-bit value, of any magnitude */
std::int32_t anyValue()
{
    return *rc::gen::oneOf(rc::gen::inRange<std::int32_t>(-300, 301), rc::gen::inRange<std::int32_t>(-20000, 20001),
                           rc::gen::inRange<std::int32_t>(INT32_MIN, INT32_MAX),
                           rc::gen::element<std::int32_t>(INT32_MIN, INT32_MAX));
}

/** @return any step with its limits in order */
ClosedLoopInput anyInput()
{
    const std::int32_t nLimit = anyValue();
    const std::int32_t nOtherLimit = anyValue();
    return {.nPtarget = anyValue(),
            .nPmeasured = anyValue(),
            .nPctrl = anyValue(),
            .nGainPercent = anyValue(),
            .nPctrlMin = std::min(nLimit, nOtherLimit),
            .nPctrlMax = std::max(nLimit, nOtherLimit),
            .nMaxPctrlStep = *rc::gen::inRange<std::int32_t>(0, 200001),
            .bStepLimited = *rc::gen::arbitrary<bool>(),
            .bProductionTestMode = false};
}

/** @return a step among powers and gains of a real channel, where nothing wraps */
ClosedLoopInput usualInput()
{
    ClosedLoopInput input = anyInput();
    input.nPtarget = *rc::gen::inRange<std::int32_t>(-10000, 10001);
    input.nPmeasured = *rc::gen::inRange<std::int32_t>(-10000, 10001);
    input.nPctrl = *rc::gen::inRange<std::int32_t>(-10000, 10001);
    input.nGainPercent = *rc::gen::inRange<std::int32_t>(0, 1001);
    input.nPctrlMin = *rc::gen::inRange<std::int32_t>(-10000, 1);
    input.nPctrlMax = *rc::gen::inRange<std::int32_t>(0, 10001);
    return input;
}

TEST_F(StepProperties, ResultsLieWithinOrderedLimits)
{
    EXPECT_TRUE(rc::check("control and predicted power lie within the limits", [] {
        const ClosedLoopInput input = anyInput();
        const ClosedLoopResult result = RegulatorStep::closedLoop(input);
        RC_ASSERT(result.nPctrl >= input.nPctrlMin);
        RC_ASSERT(result.nPctrl <= input.nPctrlMax);
        RC_ASSERT(result.nPredictedPctrl >= input.nPctrlMin);
        RC_ASSERT(result.nPredictedPctrl <= input.nPctrlMax);
        const std::int32_t nRamped = RegulatorStep::rampPctrl(input.nPctrl, input.nGainPercent, input.nPtarget,
                                                              input.nPctrlMin, input.nPctrlMax);
        RC_ASSERT(nRamped >= input.nPctrlMin);
        RC_ASSERT(nRamped <= input.nPctrlMax);
    }));
}

TEST_F(StepProperties, NoErrorMovesNothing)
{
    EXPECT_TRUE(rc::check("a step without an error keeps a control power within its limits", [] {
        ClosedLoopInput input = anyInput();
        input.nGainPercent = *rc::gen::element<std::int32_t>(20, anyValue());
        input.nPmeasured = input.nPtarget;
        const ClosedLoopResult result = RegulatorStep::closedLoop(input);
        RC_ASSERT(result.nPowerError == 0);
        RC_ASSERT(result.nPctrl == RegulatorStep::limit(input.nPctrl, input.nPctrlMin, input.nPctrlMax));
        input.bProductionTestMode = true;
        RC_ASSERT(RegulatorStep::closedLoop(input).nPredictedPctrl == input.nPmeasured);
    }));
}

TEST_F(StepProperties, StepGrowsWithTheError)
{
    EXPECT_TRUE(rc::check("a larger error never gives a smaller step", [] {
        const auto nGain = *rc::gen::inRange<std::int32_t>(0, 1001);
        const auto nError = *rc::gen::inRange<std::int32_t>(-1000000, 1000001);
        const auto nMore = *rc::gen::inRange<std::int32_t>(0, 1000001);
        RC_ASSERT(RegulatorStep::gainStep(nGain, nError) <= RegulatorStep::gainStep(nGain, nError + nMore));
    }));
    EXPECT_TRUE(rc::check("a higher target never gives a lower control power", [] {
        ClosedLoopInput input = usualInput();
        const ClosedLoopResult result = RegulatorStep::closedLoop(input);
        input.nPtarget += *rc::gen::inRange<std::int32_t>(0, 10001);
        RC_ASSERT(RegulatorStep::closedLoop(input).nPctrl >= result.nPctrl);
        RC_ASSERT(RegulatorStep::closedLoop(input).nPredictedPctrl >= result.nPredictedPctrl);
    }));
}

TEST_F(StepProperties, PredictionIsTheMeasuredPowerMovedByTheSameStep)
{
    EXPECT_TRUE(rc::check("with wide limits both powers move by one step", [] {
        ClosedLoopInput input = usualInput();
        input.nPctrlMin = -1000000;
        input.nPctrlMax = 1000000;
        input.bProductionTestMode = *rc::gen::arbitrary<bool>();
        const ClosedLoopResult result = RegulatorStep::closedLoop(input);
        RC_ASSERT(result.nPredictedPctrl - input.nPmeasured == result.nPctrl - input.nPctrl);
    }));
    EXPECT_TRUE(rc::check("limits hold for the prediction as they do for the control power", [] {
        const ClosedLoopInput input = usualInput();
        ClosedLoopInput wide = input;
        wide.nPctrlMin = -1000000;
        wide.nPctrlMax = 1000000;
        const ClosedLoopResult result = RegulatorStep::closedLoop(input);
        const ClosedLoopResult free = RegulatorStep::closedLoop(wide);
        RC_ASSERT(result.nPredictedPctrl == std::clamp(free.nPredictedPctrl, input.nPctrlMin, input.nPctrlMax));
        RC_ASSERT(result.nPctrl == std::clamp(free.nPctrl, input.nPctrlMin, input.nPctrlMax));
    }));
}

TEST_F(StepProperties, ProductionTestGoesTwoThousandBeyondTheLimits)
{
    EXPECT_TRUE(rc::check("the control power lies within the limits and 2000 more", [] {
        ClosedLoopInput input = usualInput();
        input.bProductionTestMode = true;
        const ClosedLoopResult result = RegulatorStep::closedLoop(input);
        const std::int32_t nStep = std::clamp(RegulatorStep::gainStep(input.nGainPercent, result.nPowerError),
                                              -RegulatorStep::MAX_STEP, RegulatorStep::MAX_STEP);
        RC_ASSERT(result.nPctrl == std::clamp(input.nPctrl + nStep, input.nPctrlMin - 2000, input.nPctrlMax + 2000));
        RC_ASSERT(result.nPredictedPctrl == input.nPmeasured + nStep);
    }));
}

TEST_F(StepProperties, TheModesLimitIsNeverExceeded)
{
    EXPECT_TRUE(rc::check("a limited step moves both powers by no more than the limit", [] {
        ClosedLoopInput input = usualInput();
        input.bStepLimited = true;
        input.nGainPercent = anyValue();
        input.nMaxPctrlStep = *rc::gen::element<std::int32_t>(0, 1, 10, 20);
        input.nPctrlMin = -1000000;
        input.nPctrlMax = 1000000;
        const ClosedLoopResult result = RegulatorStep::closedLoop(input);
        RC_ASSERT(std::abs(result.nPctrl - input.nPctrl) <= input.nMaxPctrlStep);
        RC_ASSERT(std::abs(result.nPredictedPctrl - input.nPmeasured) <= input.nMaxPctrlStep);
    }));
}

TEST_F(StepProperties, CrossedLimitsGiveTheUpperOneFromAboveIt)
{
    EXPECT_TRUE(rc::check("a value above the upper limit becomes it, wherever the lower one is", [] {
        const auto nUpper = *rc::gen::inRange<std::int32_t>(-20000, 20001);
        const auto nLower = *rc::gen::inRange<std::int32_t>(nUpper, 40001);
        const std::int32_t nValue = anyValue();
        RC_ASSERT(RegulatorStep::limit(nValue, nLower, nUpper) ==
                  (nValue > nUpper || nLower == nUpper ? nUpper : nLower));
    }));
}

TEST_F(StepProperties, GainOfTwentyRestsBetweenMinusSevenAndTwo)
{
    EXPECT_TRUE(rc::check("only errors from -7 to 2 move nothing", [] {
        const auto nError = *rc::gen::inRange<std::int32_t>(-1000, 1001);
        RC_ASSERT((RegulatorStep::gainStep(20, nError) == 0) == (nError >= -7 && nError <= 2));
    }));
}
} // namespace
