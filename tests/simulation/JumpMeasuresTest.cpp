#include "tests/simulation/StepSequence.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
TEST(JumpMeasures, CountMovesOfMoreThanAFifthOfADecibel)
{
    const std::pair<std::int32_t, double> cases[] = {{20, 0.0}, {21, 1.0}, {-20, 0.0}, {-21, 1.0}, {0, 0.0}};
    for (const auto& [nMove, jumps] : cases) {
        StepSequence sequence;
        sequence.add(100);
        sequence.reference(1000 + nMove);
        sequence.add(100);
        EXPECT_EQ(sequence.measures().jumps, jumps) << nMove;
    }
}

TEST(JumpMeasures, TimeTheSettlingToTheFirstOfTenStepsInARow)
{
    StepSequence sequence;
    sequence.add(100);
    sequence.reference(1300);
    sequence.add(5, -1.0); // the jump's own step is number 0
    sequence.add(9, 0.1);
    sequence.add(1, 0.11); // number 14
    sequence.add(9, -0.1); // from number 15 on
    EXPECT_EQ(sequence.measures().jumpsSettled, 0.0);
    EXPECT_TRUE(std::isnan(sequence.measures().settlingMaxMs));
    sequence.add(1);
    EXPECT_EQ(sequence.measures().jumpsSettled, 1.0);
    EXPECT_DOUBLE_EQ(sequence.measures().settlingMaxMs, 15 * 6.0);
    sequence.add(100);
    sequence.reference(1000); // the second settles with the jump's own step
    sequence.add(100);
    EXPECT_EQ(sequence.measures().jumpsSettled, 2.0);
    EXPECT_DOUBLE_EQ(sequence.measures().settlingMaxMs, 15 * 6.0);
    EXPECT_DOUBLE_EQ(sequence.measures().settlingMeanMs, 7.5 * 6.0);
}

TEST(JumpMeasures, LeaveAJumpUnsettledWhenTheNextOneOrTheSwitchOffComesFirst)
{
    StepSequence sequence;
    sequence.add(100);
    sequence.reference(1300);
    sequence.add(8, 0.0);
    sequence.reference(1000);
    sequence.add(8, 0.0);
    sequence.addIn(eOPC_TX_OFF, 5);
    sequence.add(100);
    EXPECT_EQ(sequence.measures().jumps, 2.0);
    EXPECT_EQ(sequence.measures().jumpsSettled, 0.0);
}

TEST(JumpMeasures, SeeNoJumpAcrossASwitchOff)
{
    StepSequence sequence;
    sequence.add(100);
    sequence.addIn(eOPC_TX_OFF, 5);
    sequence.reference(1500);
    sequence.add(100);
    EXPECT_EQ(sequence.measures().jumps, 0.0);
}

TEST(JumpMeasures, PassOverFailedStepsWhichEndARowWithinTheBand)
{
    StepSequence sequence;
    sequence.add(100);
    sequence.step.bFailed = true;
    sequence.reference(1300);
    sequence.add(3, -3.0);
    sequence.step.bFailed = false;
    sequence.add(9);
    sequence.step.bFailed = true;
    sequence.add(1);
    sequence.step.bFailed = false;
    sequence.add(100);
    EXPECT_EQ(sequence.measures().jumps, 1.0) << "seen by the first step that went well";
    EXPECT_DOUBLE_EQ(sequence.measures().settlingMaxMs, 10 * 6.0);
}

TEST(JumpMeasures, AreNotTakenFromSlowMoves)
{
    StepSequence sequence;
    for (int nStep = 0; nStep < 200; ++nStep) {
        sequence.reference(1000 + 20 * nStep);
        sequence.add(1);
    }
    EXPECT_EQ(sequence.measures().jumps, 0.0);
    EXPECT_EQ(sequence.measures().steadySteps, 140.0);
}

TEST(JumpMeasures, TakeARampOfBigStepsAsOneJumpThatEndsWithItsLastMove)
{
    // A request that moves by 1 dB every 8 ms, seen every 6 ms: three steps move, one does not.
    StepSequence sequence;
    sequence.add(100);
    int nMoves = 0;
    for (int nStep = 0; nStep < 40; ++nStep) {
        nMoves += nStep % 4 == 3 ? 0 : 1;
        sequence.reference(1000 + 100 * nMoves);
        sequence.add(1, -1.0);
    }
    sequence.add(4, -1.0); // the last move was in step 38, and step 39 did not move
    sequence.add(100);
    EXPECT_EQ(sequence.measures().jumps, 1.0);
    EXPECT_EQ(sequence.measures().jumpsSettled, 1.0);
    EXPECT_DOUBLE_EQ(sequence.measures().settlingMaxMs, 6 * 6.0);
}

TEST(JumpMeasures, TakeMovesFurtherApartOrBackAsJumpsOfTheirOwn)
{
    StepSequence sequence;
    sequence.add(100);
    sequence.reference(1100);
    sequence.add(3); // the move and two steps without one
    sequence.reference(1200);
    sequence.add(1);
    sequence.reference(1100);
    sequence.add(1);
    sequence.reference(1200);
    sequence.add(100);
    EXPECT_EQ(sequence.measures().jumps, 4.0);
    EXPECT_EQ(sequence.measures().jumpsSettled, 1.0);
}

TEST(JumpMeasures, MeasureTheOvershootInTheDirectionOfTheJump)
{
    const struct
    {
        std::int32_t nTo;
        double errorDb;
        double overshootDb;
    } cases[] = {{1300, 0.4, 0.4}, {1300, -0.4, 0.0}, {700, -0.4, 0.4}, {700, 0.4, 0.0}};
    for (const auto& [nTo, errorDb, overshootDb] : cases) {
        StepSequence sequence;
        sequence.add(100);
        sequence.reference(nTo);
        sequence.add(59);
        sequence.add(1, errorDb); // step 59 after the jump's own
        sequence.add(100);
        EXPECT_NEAR(sequence.measures().overshootDb, overshootDb, 1e-9) << nTo << " " << errorDb;
    }
}

TEST(JumpMeasures, MeasureNoOvershootLaterThanSixtySteps)
{
    StepSequence sequence;
    sequence.add(100);
    sequence.reference(1300);
    sequence.add(60);
    sequence.add(10, 3.0);
    EXPECT_DOUBLE_EQ(sequence.measures().overshootDb, 0.0);
}

TEST(JumpMeasures, KeepTheOvershootOfAJumpThatTheNextOneCutsShort)
{
    StepSequence sequence;
    sequence.add(100);
    sequence.reference(1300);
    sequence.add(5, 0.7);
    sequence.reference(1000);
    sequence.add(100, 0.0);
    EXPECT_NEAR(sequence.measures().overshootDb, 0.7, 1e-9);
}

TEST(JumpMeasures, TakeNoOvershootFromWhatARampOfBigStepsPassesThrough)
{
    StepSequence sequence;
    sequence.add(100);
    for (int nStep = 1; nStep <= 5; ++nStep) {
        sequence.reference(1000 + 100 * nStep);
        sequence.add(1, 0.9);
    }
    sequence.add(1, 0.9);
    sequence.reference(1600);
    sequence.add(100, 0.2);
    EXPECT_NEAR(sequence.measures().overshootDb, 0.2, 1e-9);
}

TEST(JumpMeasures, MeasureTheOvershootOfASwitchOnFromTheEndOfItsRamp)
{
    StepSequence sequence;
    sequence.addFrom(eOPC_TX_ON_RAMPING, eOPC_TX_ON_RAMPING, 3, 4.0);
    EXPECT_TRUE(std::isnan(sequence.measures().overshootDb));
    sequence.addFrom(eOPC_TX_ON_RAMPING, eOPC_TX_ON, 1, 0.3);
    EXPECT_NEAR(sequence.measures().overshootDb, 0.3, 1e-9) << "also while it lasts";
    sequence.add(60, 0.5);
    sequence.add(100, 0.6);
    EXPECT_NEAR(sequence.measures().overshootDb, 0.5, 1e-9);
}
} // namespace
