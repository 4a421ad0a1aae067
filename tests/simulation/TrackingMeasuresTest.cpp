#include "Simulation/Scenario/TrackingMeasures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
void addSteps(TrackingMeasures& measures, int nSteps, std::int32_t nTarget, std::int32_t nError)
{
    for (int i = 0; i < nSteps; ++i) {
        measures.addStep(nTarget, nTarget + nError);
    }
}

/** Measures that are past the settling after switch-on, at a target of 1000. */
TrackingMeasures settledMeasures()
{
    TrackingMeasures measures;
    addSteps(measures, 60, 1000, 0);
    return measures;
}

TEST(TrackingMeasures, AreZeroWithoutSteps)
{
    const TrackingSummary summary = TrackingMeasures().summary();
    EXPECT_EQ(summary.nSettledSteps, 0U);
    EXPECT_EQ(summary.meanCentiDb, 0.0);
    EXPECT_EQ(summary.rmsCentiDb, 0.0);
    EXPECT_EQ(summary.p99CentiDb, 0);
    EXPECT_EQ(summary.p999CentiDb, 0);
    EXPECT_EQ(summary.maxCentiDb, 0);
    EXPECT_EQ(summary.shareWithinTenCentiDb, 0.0);
    EXPECT_EQ(summary.nJumps, 0U);
    EXPECT_EQ(summary.meanSettlingSteps, 0.0);
}

TEST(TrackingMeasures, LeaveOutTheStepsAfterSwitchOnAndAfterInterruption)
{
    TrackingMeasures measures;
    addSteps(measures, 60, 1000, 500);
    EXPECT_EQ(measures.summary().nSettledSteps, 0U);
    addSteps(measures, 1, 1000, 7);
    EXPECT_EQ(measures.summary().nSettledSteps, 1U);
    measures.interrupt();
    addSteps(measures, 60, 2000, 500);
    addSteps(measures, 2, 2000, 7);
    const TrackingSummary summary = measures.summary();
    EXPECT_EQ(summary.nSettledSteps, 3U);
    EXPECT_EQ(summary.maxCentiDb, 7);
    EXPECT_EQ(summary.nJumps, 0U) << "a target that differs after the interruption is no jump";
}

TEST(TrackingMeasures, CountMovesBeyondTheJumpThresholdOnly)
{
    const std::pair<std::int32_t, std::uint64_t> cases[] = {{20, 0}, {21, 1}, {-20, 0}, {-21, 1}, {0, 0}};
    for (const auto& [nMove, nJumps] : cases) {
        TrackingMeasures measures = settledMeasures();
        addSteps(measures, 1, 1000 + nMove, 0);
        addSteps(measures, 1, 1000 + nMove, 0);
        EXPECT_EQ(measures.summary().nJumps, nJumps) << nMove;
        EXPECT_EQ(measures.summary().nSettledSteps, nJumps == 0 ? 2U : 0U) << nMove;
    }
}

TEST(TrackingMeasures, CountTheStepsFromAJumpToASmallError)
{
    TrackingMeasures measures = settledMeasures();
    addSteps(measures, 4, 2000, -11); // steps 0 to 3 after the jump
    addSteps(measures, 1, 2000, -10); // step 4 settles
    addSteps(measures, 10, 2000, 50);
    addSteps(measures, 1, 1000, 10); // settled at once
    addSteps(measures, 3, 3000, 11); // never settles before the next
    addSteps(measures, 2, 4000, 11);
    addSteps(measures, 1, 4000, 0); // step 2
    const TrackingSummary summary = measures.summary();
    EXPECT_EQ(summary.nJumps, 4U);
    EXPECT_EQ(summary.nJumpsSettled, 3U);
    EXPECT_DOUBLE_EQ(summary.meanSettlingSteps, 2.0);
    EXPECT_EQ(summary.maxSettlingSteps, 4U);
}

TEST(TrackingMeasures, GiveUpAJumpThatWasInterrupted)
{
    TrackingMeasures measures = settledMeasures();
    addSteps(measures, 3, 2000, 100);
    measures.interrupt();
    addSteps(measures, 3, 2000, 0);
    EXPECT_EQ(measures.summary().nJumps, 1U);
    EXPECT_EQ(measures.summary().nJumpsSettled, 0U);
}

TEST(TrackingMeasures, CountStepsFromSixtyAfterAJumpAsSettled)
{
    TrackingMeasures measures = settledMeasures();
    addSteps(measures, 60, 2000, 30);
    EXPECT_EQ(measures.summary().nSettledSteps, 0U);
    addSteps(measures, 5, 2000, 30);
    EXPECT_EQ(measures.summary().nSettledSteps, 5U);
    EXPECT_EQ(measures.summary().nJumpsSettled, 0U);
}

TEST(TrackingMeasures, GiveMeanRmsMaximumAndShare)
{
    TrackingMeasures measures = settledMeasures();
    for (const std::int32_t nError : {3, -3, 10, -11, 5, -20, 0, 0}) {
        addSteps(measures, 1, 1000, nError);
    }
    const TrackingSummary summary = measures.summary();
    EXPECT_EQ(summary.nSettledSteps, 8U);
    EXPECT_DOUBLE_EQ(summary.meanCentiDb, -2.0);           // -16 / 8
    EXPECT_DOUBLE_EQ(summary.rmsCentiDb, std::sqrt(83.0)); // 664 / 8
    EXPECT_EQ(summary.maxCentiDb, 20);
    EXPECT_DOUBLE_EQ(summary.shareWithinTenCentiDb, 0.75);
}

struct PercentileCase
{
    int nSmall; // steps with an error of 4
    int nLarge; // steps with an error of -50
    std::int32_t p99;
    std::int32_t p999;
};

TEST(TrackingMeasures, GiveTheSmallestErrorThatCoversAShare)
{
    const PercentileCase cases[] = {{100, 0, 4, 4},  {99, 1, 4, 50},  {98, 2, 50, 50}, {999, 1, 4, 4},
                                    {998, 2, 4, 50}, {693, 7, 4, 50}, {0, 1, 50, 50}};
    for (const PercentileCase& c : cases) {
        TrackingMeasures measures = settledMeasures();
        addSteps(measures, c.nSmall, 1000, 4);
        addSteps(measures, c.nLarge, 1000, -50);
        EXPECT_EQ(measures.summary().p99CentiDb, c.p99) << c.nSmall << " and " << c.nLarge;
        EXPECT_EQ(measures.summary().p999CentiDb, c.p999) << c.nSmall << " and " << c.nLarge;
    }
}

TEST(TrackingMeasures, TakeErrorsBeyondTheirTable)
{
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    TrackingMeasures measures = settledMeasures();
    addSteps(measures, 1, 1000, 5000);
    EXPECT_EQ(measures.summary().p99CentiDb, 5000);
    TrackingMeasures extreme;
    for (int i = 0; i < 61; ++i) {
        extreme.addStep(highest, lowest);
    }
    EXPECT_EQ(extreme.summary().maxCentiDb, highest);
    EXPECT_EQ(extreme.summary().p999CentiDb, highest);
    extreme.addStep(lowest, highest);
    EXPECT_EQ(extreme.summary().nJumps, 1U);
}
} // namespace
