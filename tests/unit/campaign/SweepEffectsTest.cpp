#include "Unit/Campaign/SweepEffects.h"

#include "tests/unit/campaign/SweepRunMaker.h"

#include <gmock/gmock.h>

#include <cmath>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
/** @return runs of a random sweep that drew the given values */
SweepRuns drawnRuns(const std::vector<double>& values)
{
    const SweepDefinition definition = parseSweepDefinition(
        "[sweep]\nscenario = \"base.toml\"\nmethod = \"random\"\nruns = 100\n[[parameter]]\npath = \"a\"\n"
        "distribution = \"uniform\"\nminimum = 0\nmaximum = 100\n",
        "sweep.toml");
    SweepRunCollector collector(definition, {});
    for (const double value : values) {
        ResultRow row;
        row.values = {{std::to_string(value), value}};
        collector.add(row);
    }
    return collector.finish();
}

std::vector<std::string> labelsOf(const SweepColumn& column)
{
    std::vector<std::string> labels;
    for (const SweepLevel& level : column.levels) {
        labels.push_back(level.sLabel);
    }
    return labels;
}

std::vector<double> ascending(int nFirst, int nLast)
{
    std::vector<double> values;
    for (int n = nFirst; n <= nLast; ++n) {
        values.push_back(n);
    }
    return values;
}
} // namespace

// Mean 18, squares about it 64 + 16 + 4 + 100 = 184. Means by a: 12 and 24, squares 2 * 36 + 2 * 36 = 144; by b: 15 and
// 21, squares 2 * 9 + 2 * 9 = 36.
TEST(SweepEffectsTest, SharesAndEffectsAreThoseWorkedOutByHand)
{
    GridRuns grid({measureKey("settling_max_ms")});
    grid.addSettling({10.0, 14.0, 20.0, 28.0});
    const MeasureEffects effects = effectsOn(grid.finish(), 0, 3);
    EXPECT_EQ(effects.all.nRuns, 4U);
    EXPECT_EQ(effects.all.nWithout, 0U);
    EXPECT_DOUBLE_EQ(effects.all.mean, 18.0);
    EXPECT_DOUBLE_EQ(effects.all.minimum, 10.0);
    EXPECT_DOUBLE_EQ(effects.all.maximum, 28.0);
    EXPECT_DOUBLE_EQ(effects.median, 17.0);
    ASSERT_EQ(effects.parameters.size(), 2U);
    const ParameterEffect& a = effects.parameters[0];
    EXPECT_EQ(a.nParameter, 0U);
    EXPECT_DOUBLE_EQ(a.effect, 12.0);
    EXPECT_DOUBLE_EQ(a.share, 144.0 / 184.0);
    EXPECT_DOUBLE_EQ(a.chance, 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(a.levels[1].mean, 24.0);
    EXPECT_DOUBLE_EQ(a.levels[1].minimum, 20.0);
    EXPECT_DOUBLE_EQ(a.levels[1].maximum, 28.0);
    const ParameterEffect& b = effects.parameters[1];
    EXPECT_DOUBLE_EQ(b.effect, 6.0);
    EXPECT_DOUBLE_EQ(b.share, 36.0 / 184.0);
    EXPECT_THAT(effects.worst, ElementsAre(3, 2, 1));
}

TEST(SweepEffectsTest, TheParameterWithTheLargestShareIsFirst)
{
    GridRuns grid({measureKey("settling_max_ms")});
    grid.addSettling({10.0, 20.0, 14.0, 28.0});
    const MeasureEffects effects = effectsOn(grid.finish(), 0, 0);
    EXPECT_EQ(effects.parameters[0].nParameter, 1U);
    EXPECT_DOUBLE_EQ(effects.parameters[0].share, 144.0 / 184.0);
    EXPECT_THAT(effects.worst, IsEmpty());
}

// Mean 44/3, squares 152/3. Means by a: 12 of two and 20 of one, squares 2 * 64/9 + 256/9 = 128/3.
TEST(SweepEffectsTest, ARunWithoutTheMeasureIsCountedApart)
{
    GridRuns grid({measureKey("settling_max_ms")});
    grid.addSettling({10.0, 14.0, 20.0, NO_MEASURE});
    const MeasureEffects effects = effectsOn(grid.finish(), 0, 9);
    EXPECT_EQ(effects.all.nRuns, 3U);
    EXPECT_EQ(effects.all.nWithout, 1U);
    EXPECT_EQ(effects.nFirstWithout, 3U);
    EXPECT_DOUBLE_EQ(effects.median, 14.0);
    EXPECT_EQ(effects.parameters[0].levels[1].nRuns, 1U);
    EXPECT_EQ(effects.parameters[0].levels[1].nWithout, 1U);
    EXPECT_DOUBLE_EQ(effects.parameters[0].effect, 8.0);
    EXPECT_NEAR(effects.parameters[0].share, 128.0 / 152.0, 1e-12);
    EXPECT_THAT(effects.worst, ElementsAre(2, 1, 0));
}

TEST(SweepEffectsTest, AFailedRunHasNoPart)
{
    GridRuns grid({measureKey("settling_max_ms")});
    grid.addSettling({10.0, 14.0, 20.0});
    grid.add({}, "the run failed");
    const SweepRuns runs = grid.finish();
    EXPECT_EQ(runs.nFailed, 1U);
    ASSERT_EQ(runs.failures.size(), 1U);
    EXPECT_EQ(runs.failures[0].nNumber, 3U);
    const MeasureEffects effects = effectsOn(runs, 0, 9);
    EXPECT_EQ(effects.all.nRuns, 3U);
    EXPECT_EQ(effects.all.nWithout, 0U);
    EXPECT_FALSE(effects.nFirstWithout);
}

TEST(SweepEffectsTest, WithoutVarianceThereIsNoShareAndNoWorstRun)
{
    GridRuns grid({measureKey("settling_max_ms")});
    grid.addSettling({0.1, 0.1, 0.1, 0.1});
    const MeasureEffects effects = effectsOn(grid.finish(), 0, 3);
    EXPECT_TRUE(std::isnan(effects.parameters[0].share));
    EXPECT_EQ(effects.parameters[0].effect, 0.0);
    EXPECT_THAT(effects.worst, IsEmpty());
}

TEST(SweepEffectsTest, NoRunWithTheMeasureLeavesNothingToSay)
{
    GridRuns grid({measureKey("settling_max_ms")});
    grid.addSettling({NO_MEASURE, NO_MEASURE});
    const MeasureEffects effects = effectsOn(grid.finish(), 0, 3);
    EXPECT_EQ(effects.all.nWithout, 2U);
    EXPECT_TRUE(std::isnan(effects.median));
    EXPECT_TRUE(std::isnan(effects.parameters[0].effect));
}

TEST(SweepEffectsTest, WhatIsWorseDependsOnTheMeasure)
{
    EXPECT_TRUE(isWorse(*measureKey("settling_max_ms"), 2.0, 1.0));
    EXPECT_TRUE(isWorse(*measureKey("jumps_settled"), 1.0, 2.0));
    EXPECT_TRUE(isWorse(*measureKey("steady_mean_db"), -2.0, 1.0));
    EXPECT_FALSE(isWorse(*measureKey("steady_mean_db"), 1.0, -1.0));
}

TEST(SweepEffectsTest, RunsThatAreEquallyBadComeByTheirNumbers)
{
    GridRuns grid({measureKey("settling_max_ms")});
    grid.addSettling({5.0, 7.0, 7.0, 7.0});
    EXPECT_THAT(effectsOn(grid.finish(), 0, 2).worst, ElementsAre(1, 2));
}

TEST(SweepRunsTest, LevelsOfNumbersAscendAndOthersStayAsListed)
{
    GridRuns numbers({}, "[20, 3]");
    numbers.addSettling({1.0, 1.0, 1.0, 1.0});
    const SweepRuns ofNumbers = numbers.finish();
    EXPECT_THAT(labelsOf(ofNumbers.parameters[0]), ElementsAre("3", "20"));
    EXPECT_THAT(ofNumbers.parameters[0].levelOf, ElementsAre(1, 1, 0, 0));
    GridRuns texts({}, "[\"slow\", \"fast\"]");
    texts.addSettling({1.0, 1.0, 1.0, 1.0});
    const SweepRuns ofTexts = texts.finish();
    EXPECT_THAT(labelsOf(ofTexts.parameters[0]), ElementsAre("slow", "fast"));
    EXPECT_FALSE(ofTexts.parameters[0].bNumbers);
}

TEST(SweepRunsTest, ManyDrawsAreGroupedInEqualNumbers)
{
    const SweepColumn column = drawnRuns(ascending(1, 80)).parameters[0];
    EXPECT_TRUE(column.bGrouped);
    ASSERT_EQ(column.levels.size(), 8U);
    EXPECT_EQ(column.levels[0].sLabel, "1 to 10");
    EXPECT_EQ(column.levels[7].sLabel, "71 to 80");
    EXPECT_EQ(column.levels[0].position, 6.0);
    EXPECT_EQ(column.levelOf[9], 0U);
    EXPECT_EQ(column.levelOf[10], 1U);
}

TEST(SweepRunsTest, EqualDrawsAreInTheSameGroup)
{
    std::vector<double> values(60, 0.0);
    for (const double value : ascending(1, 20)) {
        values.push_back(value);
    }
    const SweepColumn column = drawnRuns(values).parameters[0];
    EXPECT_THAT(labelsOf(column), ElementsAre("0 to 0", "1 to 10", "11 to 20"));
    EXPECT_EQ(column.levelOf[0], 0U);
    EXPECT_EQ(column.levelOf[59], 0U);
}

TEST(SweepRunsTest, FewDrawsAreLevelsOfTheirOwn)
{
    const SweepColumn column = drawnRuns({4.0, 2.0, 4.0}).parameters[0];
    EXPECT_FALSE(column.bGrouped);
    EXPECT_THAT(column.levelOf, ElementsAre(1, 0, 1));
}
