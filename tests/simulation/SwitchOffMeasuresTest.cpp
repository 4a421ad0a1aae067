#include "tests/simulation/StepSequence.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
constexpr double SILENCE = -std::numeric_limits<double>::infinity();

/** Switches off with so many failed steps before each of the two that are needed; silent from the first of those on. */
void switchOff(StepSequence& sequence, int nFailedBeforeFirst = 0, int nFailedBeforeSecond = 0)
{
    sequence.addFrom(eOPC_TX_OFF_INITIATED, eOPC_TX_OFF_INITIATED, nFailedBeforeFirst, 0.0);
    sequence.addFrom(eOPC_TX_OFF_INITIATED, eOPC_TX_OFF_IN_PROGRESS, 1, SILENCE);
    sequence.addFrom(eOPC_TX_OFF_IN_PROGRESS, eOPC_TX_OFF_IN_PROGRESS, nFailedBeforeSecond, SILENCE);
    sequence.addFrom(eOPC_TX_OFF_IN_PROGRESS, eOPC_TX_OFF, 1, SILENCE);
}

TEST(SwitchOffMeasures, AreTimedFromTheFirstStepToOff)
{
    StepSequence sequence;
    sequence.add(20);
    switchOff(sequence);
    sequence.addIn(eOPC_TX_OFF, 10, SILENCE);
    EXPECT_EQ(sequence.measures().switchOffs, 1.0);
    EXPECT_DOUBLE_EQ(sequence.measures().switchOffMs, 6.0);
    EXPECT_EQ(sequence.measures().radiatingOffS, 0.0);
}

TEST(SwitchOffMeasures, TakeTheLongestWithItsFailedSteps)
{
    StepSequence sequence;
    switchOff(sequence, 3);
    sequence.add(20);
    switchOff(sequence, 2, 5);
    sequence.add(20);
    switchOff(sequence);
    EXPECT_EQ(sequence.measures().switchOffs, 3.0);
    EXPECT_DOUBLE_EQ(sequence.measures().switchOffMs, 8 * 6.0);
}

TEST(SwitchOffMeasures, DoNotCountOneThatIsStillUnderWay)
{
    StepSequence sequence;
    sequence.addIn(eOPC_TX_OFF, 5, SILENCE); // never on: nothing was switched off
    sequence.add(20);
    sequence.addFrom(eOPC_TX_OFF_INITIATED, eOPC_TX_OFF_INITIATED, 50, 0.0);
    EXPECT_EQ(sequence.measures().switchOffs, 0.0);
    EXPECT_TRUE(std::isnan(sequence.measures().switchOffMs));
    EXPECT_EQ(sequence.measures().radiatingOffS, 0.0) << "on the way it may still radiate";
}

TEST(SwitchOffMeasures, CountOutputPowerWhileOff)
{
    StepSequence sequence;
    switchOff(sequence);
    sequence.addIn(eOPC_TX_OFF, 10, SILENCE);
    sequence.addIn(eOPC_TX_OFF, 25, -60.0);
    EXPECT_DOUBLE_EQ(sequence.measures().radiatingOffS, 0.15);
}
} // namespace
