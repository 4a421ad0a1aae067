#include "tests/simulation/StepSequence.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
/** Switches on with so many steps in each state; the closed loop comes next. */
void switchOn(StepSequence& sequence, int nRampSteps)
{
    sequence.addFrom(eOPC_TX_ON_INITIATED, eOPC_TX_ON_IN_PROGRESS, 1, -30.0);
    sequence.addFrom(eOPC_TX_ON_IN_PROGRESS, eOPC_TX_ON_IN_PROGRESS, 3, -30.0);
    sequence.addFrom(eOPC_TX_ON_IN_PROGRESS, eOPC_TX_ON_RAMPING, 1, -30.0);
    sequence.addFrom(eOPC_TX_ON_RAMPING, eOPC_TX_ON_RAMPING, nRampSteps - 1, -5.0);
    sequence.addFrom(eOPC_TX_ON_RAMPING, eOPC_TX_ON, 1, -2.0);
}

TEST(SwitchOnMeasures, AreTimedFromTheFirstStepToTheFirstOneWithinEachBand)
{
    StepSequence sequence;
    sequence.addIn(eOPC_TX_OFF, 100);
    switchOn(sequence, 4); // 9 steps, numbered from 0
    sequence.add(1, -1.01);
    sequence.add(1, -1.0); // step 10
    sequence.add(4, -0.11);
    sequence.add(1, 0.1); // step 15
    sequence.add(10, 5.0);
    const RunMeasures measures = sequence.measures();
    EXPECT_EQ(measures.switchOns, 1.0);
    EXPECT_DOUBLE_EQ(measures.switchOnTo1DbMs, 60.0);
    EXPECT_DOUBLE_EQ(measures.switchOnTo01DbMs, 90.0);
    EXPECT_DOUBLE_EQ(measures.rampSteps, 4.0);
}

TEST(SwitchOnMeasures, GoByTheSettlingBandForTheNarrowTime)
{
    MeasureSettings settings;
    settings.settlingBandDb = 0.5;
    StepSequence sequence(settings);
    switchOn(sequence, 1); // 6 steps
    sequence.add(1, 0.51);
    sequence.add(1, 0.5);
    EXPECT_DOUBLE_EQ(sequence.measures().switchOnTo1DbMs, 36.0);
    EXPECT_DOUBLE_EQ(sequence.measures().switchOnTo01DbMs, 42.0);
}

TEST(SwitchOnMeasures, CountSkippedDeadlines)
{
    StepSequence sequence;
    switchOn(sequence, 1);
    sequence.skipDeadlines(10);
    sequence.add(1);
    EXPECT_DOUBLE_EQ(sequence.measures().switchOnTo1DbMs, 16 * 6.0);
}

TEST(SwitchOnMeasures, AreTheLongestOfTheRun)
{
    StepSequence sequence;
    for (const int nRampSteps : {3, 12, 5}) {
        switchOn(sequence, nRampSteps);
        sequence.add(20);
        sequence.addFrom(eOPC_TX_OFF_INITIATED, eOPC_TX_OFF_IN_PROGRESS, 1, -100.0);
        sequence.addIn(eOPC_TX_OFF, 10);
    }
    EXPECT_EQ(sequence.measures().switchOns, 3.0);
    EXPECT_EQ(sequence.measures().switchOnsInBand, 3.0);
    EXPECT_DOUBLE_EQ(sequence.measures().switchOnTo1DbMs, (5 + 12) * 6.0);
    EXPECT_DOUBLE_EQ(sequence.measures().rampSteps, 12.0);
}

TEST(SwitchOnMeasures, HaveNoTimeFromASwitchOnThatDoesNotGetThere)
{
    StepSequence sequence;
    switchOn(sequence, 3);
    sequence.add(100, -3.0);
    sequence.addFrom(eOPC_TX_OFF_INITIATED, eOPC_TX_OFF_IN_PROGRESS, 1, 0.0); // close to the target by chance
    sequence.add(100);
    EXPECT_EQ(sequence.measures().switchOns, 1.0);
    EXPECT_EQ(sequence.measures().switchOnsInBand, 0.0);
    EXPECT_TRUE(std::isnan(sequence.measures().switchOnTo1DbMs));
    EXPECT_TRUE(std::isnan(sequence.measures().switchOnTo01DbMs));
    EXPECT_DOUBLE_EQ(sequence.measures().rampSteps, 3.0);
}

TEST(SwitchOnMeasures, HaveNoRampStepsFromOneThatNeverRamps)
{
    StepSequence sequence;
    sequence.step.bFailed = true;
    sequence.addIn(eOPC_TX_ON_INITIATED, 50);
    EXPECT_EQ(sequence.measures().switchOns, 1.0) << "a first step that fails again and again is one switch-on";
    EXPECT_TRUE(std::isnan(sequence.measures().rampSteps));
}

TEST(SwitchOnMeasures, BeginAnewWhenSwitchedOnOnTheWay)
{
    StepSequence sequence;
    sequence.addFrom(eOPC_TX_ON_INITIATED, eOPC_TX_ON_IN_PROGRESS, 1, -30.0);
    sequence.addFrom(eOPC_TX_ON_INITIATED, eOPC_TX_ON_IN_PROGRESS, 1, -30.0); // requested again in between
    sequence.addIn(eOPC_TX_ON_IN_PROGRESS, 5);
    switchOn(sequence, 3); // and again: 8 steps
    sequence.add(10);
    EXPECT_EQ(sequence.measures().switchOns, 3.0);
    EXPECT_DOUBLE_EQ(sequence.measures().switchOnTo1DbMs, 8 * 6.0);
}
} // namespace
