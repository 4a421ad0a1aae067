// Steps whose outcome is known by heart.
#include "Control/OutputPowerController/private/RegulatorStep.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace
{
using RegulatorStep::ClosedLoopInput;
using RegulatorStep::ClosedLoopResult;

// All of it can be computed while compiling.
static_assert(RegulatorStep::wrapAdd(INT32_MAX, 1) == INT32_MIN);
static_assert(RegulatorStep::wrapSubtract(INT32_MIN, 1) == INT32_MAX);
static_assert(RegulatorStep::wrapMultiply(65536, 65536) == 0);
static_assert(RegulatorStep::limit(5, 0, 3) == 3);
static_assert(RegulatorStep::gainStep(20, 149) == 30);
static_assert(RegulatorStep::rampPctrl(0, 20, 149, -100, 100) == 30);
static_assert(RegulatorStep::closedLoop({.nPtarget = 500,
                                         .nPmeasured = 0,
                                         .nPctrl = 0,
                                         .nGainPercent = 100,
                                         .nPctrlMin = -2000,
                                         .nPctrlMax = 2000,
                                         .nMaxPctrlStep = 10,
                                         .bStepLimited = true,
                                         .bProductionTestMode = false})
                  .nPctrl == 10);
static_assert(noexcept(RegulatorStep::closedLoop(ClosedLoopInput{})));

struct GainStepCase
{
    std::int32_t nGainPercent;
    std::int32_t nPowerError;
    std::int32_t nStep;
};

class GainStepTable : public ::testing::TestWithParam<GainStepCase>
{
};

TEST_P(GainStepTable, GivesTheStep)
{
    EXPECT_EQ(RegulatorStep::gainStep(GetParam().nGainPercent, GetParam().nPowerError), GetParam().nStep);
}

INSTANTIATE_TEST_SUITE_P(Gain20, GainStepTable,
                         ::testing::Values(GainStepCase{20, 0, 0}, GainStepCase{20, 2, 0}, GainStepCase{20, 3, 1},
                                           GainStepCase{20, -7, 0}, GainStepCase{20, -8, -1}, GainStepCase{20, 7, 1},
                                           GainStepCase{20, 8, 2}, GainStepCase{20, 100, 20},
                                           GainStepCase{20, -100, -19}, GainStepCase{20, 149, 30},
                                           GainStepCase{20, -149, -29}, GainStepCase{20, 2000, 400},
                                           GainStepCase{20, -2000, -399}));

INSTANTIATE_TEST_SUITE_P(OtherGains, GainStepTable,
                         ::testing::Values(GainStepCase{0, 0, 0}, GainStepCase{0, 100000, 0}, GainStepCase{1, 49, 0},
                                           GainStepCase{1, 50, 1}, GainStepCase{1, -149, 0}, GainStepCase{1, -150, -1},
                                           GainStepCase{100, 500, 500}, GainStepCase{100, 1, 1},
                                           GainStepCase{100, -1, 0}, GainStepCase{-20, 149, -29},
                                           GainStepCase{-20, -149, 30}));

INSTANTIATE_TEST_SUITE_P(Wrapping, GainStepTable,
                         ::testing::Values(GainStepCase{20, 107374179, 21474836}, // the last that does not wrap
                                           GainStepCase{20, 107374180, -21474836},
                                           GainStepCase{20, 200000000, -2949672}, GainStepCase{1, INT32_MAX, -21474835},
                                           GainStepCase{1, INT32_MAX - 50, 21474836},
                                           GainStepCase{1, INT32_MAX - 49, -21474836},
                                           GainStepCase{1, INT32_MIN, -21474835}, GainStepCase{2, INT32_MIN, 0},
                                           GainStepCase{65536, 65536, 0}, GainStepCase{-1, INT32_MIN, -21474835}));

TEST(GainStep, ErrorsFromMinus7To2MoveNothingAtGain20)
{
    for (std::int32_t nError = -7; nError <= 2; ++nError) {
        EXPECT_EQ(RegulatorStep::gainStep(20, nError), 0) << nError;
    }
}

TEST(Limit, CrossedLimitsGiveTheUpperOneFromAboveIt)
{
    EXPECT_EQ(RegulatorStep::limit(0, 100, -100), -100);
    EXPECT_EQ(RegulatorStep::limit(500, 100, -100), -100);
    // Not above the upper limit, so the lower one holds.
    EXPECT_EQ(RegulatorStep::limit(-100, 100, -100), 100);
    EXPECT_EQ(RegulatorStep::limit(-500, 100, -100), 100);
}

TEST(RampStep, MovesFromTheControlPowerWithinItsLimits)
{
    EXPECT_EQ(RegulatorStep::rampPctrl(-500, 20, 149, -2000, 2000), -470);
    EXPECT_EQ(RegulatorStep::rampPctrl(-500, 20, -149, -2000, 2000), -529);
    EXPECT_EQ(RegulatorStep::rampPctrl(1990, 20, 149, -2000, 2000), 2000);
    EXPECT_EQ(RegulatorStep::rampPctrl(-1990, 20, -149, -2000, 2000), -2000);
    EXPECT_EQ(RegulatorStep::rampPctrl(0, 20, 0, -2000, 2000), 0);
}

TEST(RampStep, IsNotHeldToTheClosedLoopsLargestStep)
{
    EXPECT_EQ(RegulatorStep::rampPctrl(0, 100, 1'000'000, -2'000'000, 2'000'000), 1'000'000);
}

TEST(RampStep, WrapsBeforeItIsLimited)
{
    EXPECT_EQ(RegulatorStep::rampPctrl(INT32_MAX, 100, 1, -2000, 2000), -2000);
    EXPECT_EQ(RegulatorStep::rampPctrl(INT32_MIN, 100, -101, -2000, 2000), 2000);
}

class ClosedLoopStep : public ::testing::Test
{
protected:
    ClosedLoopResult step() const { return RegulatorStep::closedLoop(m_input); }

    ClosedLoopInput m_input = {.nPtarget = 500,
                               .nPmeasured = 0,
                               .nPctrl = 300,
                               .nGainPercent = 100,
                               .nPctrlMin = -2000,
                               .nPctrlMax = 2000,
                               .nMaxPctrlStep = 10,
                               .bStepLimited = true,
                               .bProductionTestMode = false};
};

TEST_F(ClosedLoopStep, NoErrorMovesNothing)
{
    m_input.nGainPercent = 20;
    m_input.nPmeasured = 500;
    EXPECT_EQ(step().nPowerError, 0);
    EXPECT_EQ(step().nPctrl, 300);
    EXPECT_EQ(step().nPredictedPctrl, 500);
}

TEST_F(ClosedLoopStep, ModeLimitsTheStep)
{
    EXPECT_EQ(step().nPowerError, 500);
    EXPECT_EQ(step().nPctrl, 310);
    EXPECT_EQ(step().nPredictedPctrl, 10);
    m_input.nPtarget = -500;
    EXPECT_EQ(step().nPctrl, 290);
    EXPECT_EQ(step().nPredictedPctrl, -10);
}

TEST_F(ClosedLoopStep, WithoutTheModesLimitOnlyThePowerLimitsHold)
{
    m_input.bStepLimited = false;
    EXPECT_EQ(step().nPctrl, 800);
    EXPECT_EQ(step().nPredictedPctrl, 500);
    m_input.nPctrlMax = 600;
    EXPECT_EQ(step().nPctrl, 600);
    m_input.nPctrlMax = 400;
    EXPECT_EQ(step().nPredictedPctrl, 400);
}

TEST_F(ClosedLoopStep, NeverMovesByMoreThanTheLargestStep)
{
    m_input = {.nPtarget = 5'000'000,
               .nPmeasured = 0,
               .nPctrl = 7,
               .nGainPercent = 100,
               .nPctrlMin = -10'000'000,
               .nPctrlMax = 10'000'000,
               .nMaxPctrlStep = 0,
               .bStepLimited = false,
               .bProductionTestMode = false};
    EXPECT_EQ(step().nPctrl, 100'007);
    EXPECT_EQ(step().nPredictedPctrl, 100'000);
    m_input.nPtarget = -5'000'000;
    EXPECT_EQ(step().nPctrl, -99'993);
    m_input.bProductionTestMode = true;
    EXPECT_EQ(step().nPctrl, -99'993);
}

TEST_F(ClosedLoopStep, TheLargestStepHoldsForAWrappedProduct)
{
    m_input.nGainPercent = 20;
    m_input.nPtarget = 200'000'000;
    m_input.nPctrlMin = -10'000'000;
    m_input.bStepLimited = false;
    EXPECT_EQ(step().nPowerError, 200'000'000);
    EXPECT_EQ(step().nPctrl, 300 - 100'000);
}

TEST_F(ClosedLoopStep, ProductionTestWidensTheLimitsAndLeavesThePredictionAlone)
{
    m_input.bProductionTestMode = true;
    m_input.nPctrl = 2000;
    m_input.nPtarget = 5000;
    EXPECT_EQ(step().nPctrl, 4000);
    EXPECT_EQ(step().nPredictedPctrl, 5000);
    m_input.nPctrl = -2000;
    m_input.nPtarget = -5000;
    EXPECT_EQ(step().nPctrl, -4000);
    EXPECT_EQ(step().nPredictedPctrl, -4999); // negative products lose their fraction
}

TEST_F(ClosedLoopStep, ProductionTestIgnoresTheModesLimit)
{
    m_input.bProductionTestMode = true;
    EXPECT_EQ(step().nPctrl, 800);
}
} // namespace
