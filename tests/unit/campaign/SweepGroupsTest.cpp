#include "Unit/Campaign/SweepGroups.h"

#include "Platform/ConfigurationError.h"
#include "tests/unit/campaign/SweepRunMaker.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{
/** @return the grid's runs with a limit cycle and settling times */
SweepRuns runsWith(const std::vector<double>& settling, const std::vector<double>& cycles, bool bLastFails = false)
{
    GridRuns grid({measureKey("settling_max_ms"), measureKey("limit_cycle_db")});
    for (std::size_t n = 0; n < settling.size(); ++n) {
        RunMeasures measures;
        measures.settlingMaxMs = settling[n];
        measures.limitCycleDb = cycles[n];
        grid.add(measures, bLastFails && n + 1 == settling.size() ? "the run failed" : "");
    }
    return grid.finish();
}

std::string refusalOf(const std::string& sText)
{
    try {
        (void)parseCondition(sText, "--where");
        return "none";
    }
    catch (const ConfigurationError& error) {
        return error.what();
    }
}

const std::vector<SweepCondition> SMALL_CYCLE = {parseCondition("limit_cycle_db<=0.1", "--where")};
} // namespace

TEST(SweepGroupsTest, ConditionsAreReadWithEachComparison)
{
    for (const char* pText : {"limit_cycle_db<=0.1", "limit_cycle_db<0.1", "steady_mean_db>=-0.5", "jumps_settled>3"}) {
        EXPECT_EQ(conditionText(parseCondition(pText, "--where")), pText);
    }
}

TEST(SweepGroupsTest, WrongConditionsAreToldWithWhatIsAllowed)
{
    EXPECT_THAT(refusalOf("limit_cycle_db=0.1"), HasSubstr("--where: \"limit_cycle_db=0.1\" is not a condition"));
    EXPECT_THAT(refusalOf("limit_cycle_db"), HasSubstr("is not a condition"));
    EXPECT_THAT(refusalOf("limit_cycl_db<=1"), HasSubstr("did you mean limit_cycle_db?"));
    EXPECT_THAT(refusalOf("limit_cycle_db<=1 dB"), HasSubstr("compares with \"1 dB\", which is not a number"));
    EXPECT_THAT(refusalOf("limit_cycle_db<="), HasSubstr("which is not a number"));
    EXPECT_THAT(refusalOf("limit_cycle_db<nan"), HasSubstr("which is not a number"));
    EXPECT_THAT(refusalOf(""), HasSubstr("is not a condition"));
}

TEST(SweepGroupsTest, RunsAreCountedByLevelWithTheirMeasures)
{
    const SweepRuns runs = runsWith({10.0, 14.0, 20.0, 28.0}, {0.0, 0.1, 0.05, 0.11});
    const std::vector<SweepGroup> groups = groupRuns(runs, {0}, 1, SMALL_CYCLE);
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].nRuns, 2U);
    EXPECT_EQ(groups[0].nMeeting, 2U); // a bound is included
    EXPECT_EQ(groups[1].nMeeting, 1U);
    ASSERT_EQ(groups[1].measures.size(), 1U);
    EXPECT_DOUBLE_EQ(groups[1].measures[0].mean, 24.0);
    EXPECT_DOUBLE_EQ(groups[1].measures[0].maximum, 28.0);
}

TEST(SweepGroupsTest, TwoParametersMakeAGroupOfEachCombination)
{
    const SweepRuns runs = runsWith({10.0, 14.0, 20.0, 28.0}, {0.0, 0.0, 0.0, 0.0});
    const std::vector<SweepGroup> groups = groupRuns(runs, {1, 0}, 1, {});
    ASSERT_EQ(groups.size(), 4U);
    EXPECT_THAT(groups[1].levels, ElementsAre(0, 1));
    EXPECT_DOUBLE_EQ(groups[1].measures[0].mean, 20.0); // b = 0.5, a = 2
}

TEST(SweepGroupsTest, ARunWithoutTheMeasureAndAFailedOneMeetNothing)
{
    const SweepRuns runs = runsWith({10.0, 14.0, 20.0, 28.0}, {0.0, NO_MEASURE, 0.0, 0.0}, true);
    const std::vector<SweepGroup> groups = groupRuns(runs, {0}, 1, SMALL_CYCLE);
    EXPECT_EQ(groups[0].nMeeting, 1U);
    EXPECT_EQ(groups[1].nMeeting, 1U);
    EXPECT_EQ(groups[1].nFailed, 1U);
    EXPECT_EQ(groups[1].measures[0].nRuns, 1U);
    EXPECT_EQ(groupRuns(runs, {0}, 1, {})[1].nMeeting, 1U);
}

TEST(SweepGroupsTest, TheBestLevelMeetsAllConditionsInAllRuns)
{
    // a = 1 is faster with either b, but swings with b = 1.5.
    const SweepRuns runs = runsWith({10.0, 14.0, 20.0, 28.0}, {0.0, 0.2, 0.0, 0.0});
    const std::vector<BestLevel> bests = bestLevels(runs, groupRuns(runs, {0, 1}, 1, SMALL_CYCLE));
    ASSERT_EQ(bests.size(), 2U);
    EXPECT_THAT(bests[0].levels, ElementsAre(0));
    EXPECT_THAT(bests[0].meeting, ElementsAre(0, 1));
    EXPECT_THAT(bests[0].best->levels, ElementsAre(0, 0));
    EXPECT_THAT(bests[1].meeting, ElementsAre(1));
    EXPECT_DOUBLE_EQ(bests[1].best->measures[0].mean, 28.0);
}

TEST(SweepGroupsTest, WhereNoLevelMeetsTheConditionsThereIsNoBest)
{
    const SweepRuns runs = runsWith({10.0, 14.0, 20.0, NO_MEASURE}, {0.2, 0.2, 0.2, 0.0});
    const std::vector<BestLevel> bests = bestLevels(runs, groupRuns(runs, {0}, 1, SMALL_CYCLE));
    ASSERT_EQ(bests.size(), 1U);
    EXPECT_THAT(bests[0].meeting, IsEmpty());
    EXPECT_FALSE(bests[0].best);
    EXPECT_FALSE(bestLevels(runs, groupRuns(runs, {0, 1}, 1, SMALL_CYCLE))[1].best); // a run that never settled
}
