#include "Unit/Campaign/SweepDefinition.h"
#include "tests/unit/TemporaryFolder.h"

#include <gtest/gtest.h>

TEST(SweepFileTest, EverythingThatASweepSaysIsRead)
{
    const TemporaryFolder folder;
    const std::string sPath = folder.write("gain.toml", R"([sweep]
title = "Gain"
scenario = "base/step.toml"
method = "grid"
seed = 9
repeats = 3
duration_s = 2.5
measures = ["settling_max_ms", "limit_cycle_db"]
[[parameter]]
path = "channel.gain_percent_on"
name = "gain in percent"
values = [5, 7.5, true, "word"]
)");
    const SweepDefinition definition = loadSweepDefinition(sPath);
    EXPECT_EQ(definition.sTitle, "Gain");
    EXPECT_EQ(definition.sScenario, folder.path("base/step.toml"));
    EXPECT_EQ(definition.eMethod, ESweepMethod::Grid);
    EXPECT_EQ(definition.nSeed, 9U);
    EXPECT_EQ(definition.nRuns, 12U);
    EXPECT_EQ(definition.durationSeconds, 2.5);
    EXPECT_EQ(definition.measures, (std::vector<std::string>{"settling_max_ms", "limit_cycle_db"}));
    ASSERT_EQ(definition.parameters.size(), 1U);
    EXPECT_EQ(definition.parameters[0].sName, "gain in percent");
    ASSERT_EQ(definition.parameters[0].values.size(), 4U);
    EXPECT_EQ(definition.parameters[0].values[1].number, 7.5);
    EXPECT_EQ(definition.parameters[0].values[2].sToml, "true");
    EXPECT_FALSE(definition.parameters[0].values[2].number);
    EXPECT_EQ(definition.parameters[0].values[3].sToml, "\"word\"");
}

TEST(SweepFileTest, WithoutATitleItIsCalledAsItsFile)
{
    const TemporaryFolder folder;
    const std::string sPath = folder.write("my-gain.toml", "[sweep]\nscenario = \"s\"\nmethod = \"grid\"\n"
                                                           "[[parameter]]\npath = \"a\"\nvalues = [1]\n");
    EXPECT_EQ(loadSweepDefinition(sPath).sTitle, "my-gain");
    EXPECT_EQ(loadSweepDefinition(sPath).parameters[0].sName, "a");
}
