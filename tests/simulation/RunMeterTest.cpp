#include "tests/simulation/StepSequence.h"
#include "tests/support/AllocationCount.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>

namespace
{
TEST(RunMeasureKeys, NameEveryMeasureOnceAndInTheirOrder)
{
    std::set<std::string> names;
    for (std::size_t nKey = 0; nKey < RUN_MEASURE_COUNT; ++nKey) {
        const RunMeasureKey& key = runMeasureKeys()[nKey];
        EXPECT_TRUE(names.insert(key.pName).second) << key.pName;
        EXPECT_NE(std::string(key.pMeaning), "");
        RunMeasures measures;
        const auto* pFirst = &measures.steps;
        EXPECT_EQ(&(measures.*key.pField) - pFirst, static_cast<std::ptrdiff_t>(nKey)) << key.pName;
    }
    EXPECT_EQ(sizeof(RunMeasures), RUN_MEASURE_COUNT * sizeof(double)) << "a measure without a name";
}

TEST(RunMeter, HasZerosAndNoMeasuresWithoutSteps)
{
    const RunMeasures measures = StepSequence().measures();
    const std::set<std::string> zeros = {
        "steps",           "failed_steps",   "overruns",      "switch_ons",   "switch_ons_in_band", "switch_offs",
        "radiating_off_s", "jumps",          "jumps_settled", "steady_steps", "at_upper_clamp_s",   "at_lower_clamp_s",
        "spurious_steps",  "outside_1_db_s", "outside_2_db_s"};
    for (const RunMeasureKey& key : runMeasureKeys()) {
        if (zeros.contains(key.pName)) {
            EXPECT_EQ(measures.*key.pField, 0.0) << key.pName;
        }
        else {
            EXPECT_TRUE(std::isnan(measures.*key.pField)) << key.pName;
        }
    }
}

TEST(RunMeter, CountsStepsAndFailedOnesInAnyState)
{
    StepSequence sequence;
    sequence.addIn(eOPC_TX_OFF, 3);
    sequence.step.bFailed = true;
    sequence.addIn(eOPC_TX_ON_INITIATED, 2);
    EXPECT_EQ(sequence.measures().steps, 5.0);
    EXPECT_EQ(sequence.measures().failedSteps, 2.0);
}

TEST(RunMeter, TakesTheTimeAtAClampFromClosedLoopStepsOnly)
{
    const struct
    {
        std::int32_t nPctrl;
        double upperS;
        double lowerS;
    } cases[] = {{2000, 0.06, 0.0}, {1999, 0.0, 0.0}, {-500, 0.0, 0.06}, {-499, 0.0, 0.0}, {2100, 0.06, 0.0}};
    for (const auto& [nPctrl, upperS, lowerS] : cases) {
        StepSequence sequence;
        sequence.step.nPctrl = nPctrl;
        sequence.addIn(eOPC_TX_ON_RAMPING, 5);
        sequence.add(10);
        sequence.step.bFailed = true;
        sequence.add(5);
        EXPECT_DOUBLE_EQ(sequence.measures().atUpperClampS, upperS) << nPctrl;
        EXPECT_DOUBLE_EQ(sequence.measures().atLowerClampS, lowerS) << nPctrl;
    }
}

TEST(RunMeter, CountsSpuriousEmissionAboveTheToleranceInAnyState)
{
    MeasureSettings settings;
    settings.emissionToleranceDb = 0.5;
    StepSequence sequence(settings);
    sequence.addOutput(20.5);
    EXPECT_EQ(sequence.measures().spuriousSteps, 0.0);
    EXPECT_TRUE(std::isnan(sequence.measures().spuriousMaxDb)) << "the excess is that of spurious steps";
    sequence.addOutput(20.51);
    sequence.step.bFailed = true;
    sequence.addOutput(21.25);
    sequence.step.bFailed = false;
    sequence.step.eStateBefore = eOPC_TX_OFF;
    sequence.step.eState = eOPC_TX_OFF;
    sequence.addOutput(20.6);
    EXPECT_EQ(sequence.measures().spuriousSteps, 3.0);
    EXPECT_DOUBLE_EQ(sequence.measures().spuriousMaxDb, 1.25);
}

TEST(RunMeter, TakesTheTimeOutsideFromClosedLoopStepsWhetherSteadyOrNot)
{
    StepSequence sequence;
    sequence.add(10, 1.0); // on the edge is inside
    sequence.add(10, -1.01);
    sequence.add(10, 2.0);
    sequence.add(10, -2.01);
    sequence.addIn(eOPC_TX_ON_RAMPING, 10, 5.0);
    sequence.step.bFailed = true;
    sequence.add(10, 5.0);
    EXPECT_DOUBLE_EQ(sequence.measures().outside1DbS, 30 * 0.006);
    EXPECT_DOUBLE_EQ(sequence.measures().outside2DbS, 10 * 0.006);
}

TEST(RunMeter, CountsNoPowerAsAnErrorOfAHundredDecibels)
{
    StepSequence sequence;
    sequence.add(60);
    for (int nStep = 0; nStep < 10; ++nStep) {
        sequence.addOutput(-std::numeric_limits<double>::infinity());
    }
    EXPECT_DOUBLE_EQ(sequence.measures().steadyMeanDb, -100.0);
    EXPECT_DOUBLE_EQ(sequence.measures().steadyMaxDb, 100.0);
    EXPECT_DOUBLE_EQ(sequence.measures().steadyP999Db, 100.0);
    EXPECT_DOUBLE_EQ(sequence.measures().outside2DbS, 10 * 0.006);
}

TEST(RunMeter, SharesTheDetectorStatesOverClosedLoopSteps)
{
    StepSequence sequence;
    const std::pair<int, int> stepsInState[] = {{0, 5}, {1, 3}, {2, 1}, {7, 1}};
    for (const auto& [nState, nSteps] : stepsInState) {
        sequence.step.nDetectorState = nState;
        sequence.add(nSteps);
    }
    sequence.step.nDetectorState = 2;
    sequence.addIn(eOPC_TX_ON_RAMPING, 100);
    EXPECT_DOUBLE_EQ(sequence.measures().detectorState0Share, 0.5);
    EXPECT_DOUBLE_EQ(sequence.measures().detectorState1Share, 0.3);
    EXPECT_DOUBLE_EQ(sequence.measures().detectorState2Share, 0.1) << "a state that is none has no share";
}

TEST(RunMeter, MeasuresThePctrlStepOfClosedLoopSteps)
{
    StepSequence sequence;
    sequence.step.nPctrl = -9900;
    sequence.addIn(eOPC_TX_OFF, 1);
    sequence.step.nPctrl = 500;
    sequence.addIn(eOPC_TX_ON_RAMPING, 1);
    sequence.step.nPctrl = 900;
    sequence.addFrom(eOPC_TX_ON_RAMPING, eOPC_TX_ON, 1, 0.0);
    EXPECT_TRUE(std::isnan(sequence.measures().largestPctrlStepDb));
    sequence.step.nPctrl = 905; // from what the ramp left
    sequence.add(1);
    EXPECT_DOUBLE_EQ(sequence.measures().largestPctrlStepDb, 0.05);
    sequence.step.nPctrl = 890;
    sequence.add(2);
    EXPECT_DOUBLE_EQ(sequence.measures().largestPctrlStepDb, 0.15);
    sequence.step.nPctrl = -9900;
    sequence.addIn(eOPC_TX_OFF_IN_PROGRESS, 1);
    sequence.step.nPctrl = 1000; // switched on again in between: no step was taken from off
    sequence.add(1);
    EXPECT_DOUBLE_EQ(sequence.measures().largestPctrlStepDb, 0.15);
}

TEST(RunMeter, AllocatesNothingPerStep)
{
    StepSequence sequence;
    const std::size_t nBefore = allocationCount();
    for (int nStep = 0; nStep < 20000; ++nStep) {
        sequence.reference(nStep % 3000 == 0 ? 1000 : 1100);
        sequence.add(1, nStep % 20 < 10 ? 0.1 : -0.1);
    }
    EXPECT_EQ(allocationCount(), nBefore);
}
} // namespace
