#include "tests/simulation/StepSequence.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
TEST(SteadyMeasures, LeaveOutSixtyStepsAfterSwitchOnAndAfterAJump)
{
    StepSequence sequence;
    sequence.add(60, 5.0);
    EXPECT_EQ(sequence.measures().steadySteps, 0.0);
    EXPECT_TRUE(std::isnan(sequence.measures().steadyMaxDb));
    sequence.add(1, 0.07);
    sequence.reference(1300);
    sequence.add(60, 5.0);
    sequence.add(1, 0.07);
    sequence.addIn(eOPC_TX_OFF, 1);
    sequence.add(60, 5.0);
    sequence.add(1, 0.07);
    EXPECT_EQ(sequence.measures().steadySteps, 3.0);
    EXPECT_NEAR(sequence.measures().steadyMaxDb, 0.07, 1e-9);
}

TEST(SteadyMeasures, LeaveOutFailedSteps)
{
    StepSequence sequence;
    sequence.add(70);
    sequence.step.bFailed = true;
    sequence.add(100, 5.0);
    sequence.step.bFailed = false;
    sequence.add(1, 0.3);
    EXPECT_EQ(sequence.measures().steadySteps, 11.0);
    EXPECT_NEAR(sequence.measures().steadyMaxDb, 0.3, 1e-9);
}

TEST(SteadyMeasures, AreMeanRootMeanSquareAndLargest)
{
    StepSequence sequence;
    sequence.add(60);
    for (const double errorDb : {0.1, -0.3, 0.2, 0.0}) {
        sequence.add(1, errorDb);
    }
    EXPECT_NEAR(sequence.measures().steadyMeanDb, 0.0, 1e-9);
    EXPECT_NEAR(sequence.measures().steadyRmsDb, std::sqrt(0.14 / 4.0), 1e-9);
    EXPECT_NEAR(sequence.measures().steadyMaxDb, 0.3, 1e-9);
}

TEST(SteadyMeasures, GiveTheErrorThatNearlyAllDoNotExceed)
{
    const struct
    {
        int nBigErrors;
        double p999Db;
    } cases[] = {{1, 0.05}, {2, 0.5}};
    for (const auto& [nBigErrors, p999Db] : cases) {
        StepSequence sequence;
        sequence.add(60);
        sequence.add(1000 - nBigErrors, 0.0401); // rounded up to a hundredth
        sequence.add(nBigErrors, -0.5);
        EXPECT_NEAR(sequence.measures().steadyP999Db, p999Db, 1e-9) << nBigErrors;
    }
}

TEST(SteadyMeasures, NeverGiveAPercentileAboveTheLargestError)
{
    StepSequence sequence;
    sequence.add(1000, 0.0234);
    EXPECT_NEAR(sequence.measures().steadyP999Db, 0.0234, 1e-9);
}

TEST(SteadyMeasures, GoByTheReferenceThatIsAskedFor)
{
    const std::pair<EPowerReference, double> cases[] = {{EPowerReference::Target, 0.1},
                                                        {EPowerReference::Requested, -0.4}};
    for (const auto& [eReference, meanDb] : cases) {
        MeasureSettings settings;
        settings.eReference = eReference;
        StepSequence sequence(settings);
        sequence.step.nRequested = 1050;
        sequence.add(100, 0.1); // above a target of 10 dBm
        EXPECT_NEAR(sequence.measures().steadyMeanDb, meanDb, 1e-9);
        EXPECT_NEAR(sequence.measures().requestErrorMeanDb, -0.4, 1e-9);
        EXPECT_NEAR(sequence.measures().requestErrorMaxDb, 0.4, 1e-9);
    }
}
} // namespace
