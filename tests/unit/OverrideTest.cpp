#include "Platform/ConfigurationError.h"
#include "Unit/Simulator/Scenario.h"
#include "tests/unit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{
Scenario load(const std::string& sText, const std::vector<std::string>& overrides)
{
    const TemporaryFolder folder;
    std::vector<ScenarioOverride> given;
    given.reserve(overrides.size());
    for (const std::string& sOverride : overrides) {
        given.push_back(parseOverride(sOverride));
    }
    return loadScenario(folder.write("scenario.toml", "duration_s = 10\n" + sText), given);
}

std::string refusalOf(const std::string& sOverride)
{
    try {
        parseOverride(sOverride);
    }
    catch (const ConfigurationError& error) {
        return error.what();
    }
    return "taken";
}
} // namespace

TEST(Override, ReplacesWhatTheFileSays)
{
    const Scenario scenario = load("[transmitter]\nrapp_p = 2\n[[event]]\nat_s = 1\nrequested_power_dbm = 3\n"
                                   "[[event]]\nat_s = 2\nrequested_power_dbm = 4\n",
                                   {"duration_s=20", "transmitter.rapp_p=3.5", "event.1.requested_power_dbm=-7"});
    EXPECT_EQ(scenario.durationSeconds, 20.0);
    EXPECT_EQ(scenario.channel().transmitter.rappP, 3.5);
    EXPECT_EQ(scenario.events[0].requestedPowerDbm, 3.0);
    EXPECT_EQ(scenario.events[1].requestedPowerDbm, -7.0);
}

TEST(Override, MakesTablesAndListsThatAreMissing)
{
    const Scenario scenario = load(
        "", {"transmitter.rapp_p=3", "event.0.at_s=1", "event.0.request=on", "event.1={ at_s = 2, request = 'off' }"});
    EXPECT_EQ(scenario.channel().transmitter.rappP, 3.0);
    ASSERT_EQ(scenario.events.size(), 2U);
    EXPECT_EQ(scenario.events[0].on, true);
    EXPECT_EQ(scenario.events[1].on, false);
}

TEST(Override, ReachesIntoListsAndInlineTables)
{
    const Scenario scenario =
        load("[channel]\ngain_percent_on = [1, 2, 3]\n[[event]]\nat_s = 1\ntransmitter = { rapp_p = 4 }\n",
             {"channel.gain_percent_on.2=30", "event.0.transmitter.rapp_p=5"});
    EXPECT_EQ(scenario.channel().gainPercentOn, (GainPercent{1, 2, 30}));
    EXPECT_EQ(scenario.events[0].transmitter[0].second, 5.0);
}

TEST(Override, OfALaterOneHolds)
{
    EXPECT_EQ(load("", {"seed=1", "seed=2"}).channel().nSeed, 2U);
}

TEST(Override, TakesABareWordForAText)
{
    EXPECT_EQ(load("", {"title=rain fade, 6 dB/s"}).sTitle, "rain fade, 6 dB/s");
    EXPECT_EQ(load("", {"title=\"quoted\""}).sTitle, "quoted");
    EXPECT_EQ(load("", {"title=a#b"}).sTitle, "a#b");
    EXPECT_EQ(parseOverride("title=a=b").sValue, "a=b") << "only the first = parts place and value";
}

TEST(Override, NamesFilesFromTheCurrentFolder)
{
    const TemporaryFolder elsewhere;
    const std::string sDrive = elsewhere.write("d.csv", "time_s,temperature_C\n0,20\n");
    const std::string sRelative = std::filesystem::relative(sDrive).string();
    EXPECT_EQ(load("", {"drive.file=" + sRelative}).drive.sFile, sRelative);
}

TEST(Override, IsRefusedWhenItIsNone)
{
    const struct
    {
        const char* pOverride;
        const char* pRefusal;
    } cases[] = {
        {"seed", "--set seed: has no =; write a key's place, = and its value, such as channel.gain_percent_on=40"},
        {"seed=", "--set seed=: has no value after the =; write one as in TOML, such as 40, true or \"text\""},
        {"=5", "--set =5: \"\" is not the place of a key; write keys with dots between them, such as "
               "channel.gain_percent_on or event.0.at_s"},
        {"event..at_s=5",
         "--set event..at_s=5: \"event..at_s\" is not the place of a key; write keys with dots between "
         "them, such as channel.gain_percent_on or event.0.at_s"},
        {"seed=1\nx = 2", "--set seed=1 x = 2: the value holds a control character; write it in one line"},
    };
    for (const auto& bad : cases) {
        EXPECT_EQ(refusalOf(bad.pOverride), bad.pRefusal);
    }
    EXPECT_EQ(refusalOf("seed=[1").rfind("--set seed=[1: the value is not valid TOML: ", 0), 0U);
    EXPECT_EQ(refusalOf("seed={ a = 1 } b").rfind("--set seed={ a = 1 } b: the value is not valid TOML: ", 0), 0U);
}
