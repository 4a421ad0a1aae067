#include "Unit/Replay/private/StepComparison.h"

#include <gtest/gtest.h>

TEST(StepComparison, FindsNothingInEqualStepsHoweverLateTheyWere)
{
    StepSample recorded{};
    recorded.nPctrl = 1005;
    recorded.temperatureDegrees = 41.37F;
    StepSample now = recorded;
    now.nLatenessUs = 77;
    EXPECT_TRUE(differencesOf(recorded, now).empty());
}

TEST(StepComparison, NamesEachValueThatDiffers)
{
    StepSample recorded{};
    recorded.nState = 8;
    recorded.nPctrl = 1005;
    recorded.temperatureDegrees = 41.5F;
    StepSample now = recorded;
    now.nState = 2;
    now.nPctrl = -9900;
    now.reducedGain[5] = 1;
    now.temperatureDegrees = 41.25F;
    const std::vector<StepDifference> differences = differencesOf(recorded, now);
    ASSERT_EQ(differences.size(), 4U);
    EXPECT_EQ(differences[0].sQuantity, "state");
    EXPECT_EQ(differences[0].sRecorded, "8 (TX_ON)");
    EXPECT_EQ(differences[0].sNow, "2 (TX_OFF)");
    EXPECT_EQ(differences[1].sQuantity, "pctrl_cdb");
    EXPECT_EQ(differences[1].sRecorded, "1005");
    EXPECT_EQ(differences[1].sNow, "-9900");
    EXPECT_EQ(differences[2].sQuantity, "reduced_gain_6_cdb");
    EXPECT_EQ(differences[3].sQuantity, "temperature_c");
    EXPECT_EQ(differences[3].sNow, "41.25");
}
