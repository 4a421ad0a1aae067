#include "Unit/Simulator/RunPlot.h"

#include "tests/unit/simulator/VirtualSteps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

using testing::HasSubstr;
using testing::Not;

namespace
{
/** @return a run of a hundred steps in a state with this error */
RunTrack trackOf(double errorDb, EOPCState eState = eOPC_TX_ON)
{
    RunTrack track;
    for (std::uint64_t nStep = 0; nStep < 100; ++nStep) {
        VirtualStep step = makeStep(nStep * 6000);
        step.sample.nStateBefore = eState;
        step.sample.nState = eState;
        step.outputPowerDbm = eState == eOPC_TX_ON ? 10.12 + errorDb : -std::numeric_limits<double>::infinity();
        track.onStep(step);
    }
    return track;
}

std::string scriptOf(const RunTrack& track, const Scenario& scenario)
{
    return runPlotScript(track, scenario, EPicture::Svg);
}
} // namespace

TEST(RunPlot, ScalesTheErrorToWhatThereIs)
{
    const std::pair<double, const char*> cases[] = {{0.0, "set yrange [-0.25:0.25]"},
                                                    {0.2, "set yrange [-0.25:0.25]"},
                                                    {0.5, "set yrange [-1.25:1.25]"},
                                                    {2.0, "set yrange [-3:3]"},
                                                    {20.0, "set yrange [-3:3]"}};
    for (const auto& [errorDb, pRange] : cases) {
        const std::string sScript = scriptOf(trackOf(errorDb), makeScenario(0.6));
        EXPECT_THAT(sScript, HasSubstr(pRange)) << errorDb;
        EXPECT_EQ(sScript.find("cut at") != std::string::npos, errorDb > 3.0) << errorDb;
    }
}

TEST(RunPlot, ShowsTemperatureAndFrequencyOnlyWhenTheyMove)
{
    RunTrack track = trackOf(0.0);
    EXPECT_THAT(scriptOf(track, makeScenario(0.6)), Not(HasSubstr("temperature")));
    VirtualStep step = makeStep(600'000);
    step.sample.temperatureDegrees = 26.0F;
    track.onStep(step);
    EXPECT_THAT(scriptOf(track, makeScenario(0.6)), HasSubstr("title 'temperature'"));
    step.sample.frequencyMhz = 5001.0F;
    track.onStep(step);
    EXPECT_THAT(scriptOf(track, makeScenario(0.6)), HasSubstr("title 'frequency (right)'"));
}

TEST(RunPlot, CountsTimeInTheUnitThatSuits)
{
    const std::pair<double, const char*> cases[] = {
        {60.0, "time in s"}, {600.0, "time in min"}, {86400.0, "time in h"}, {1e7, "time in d"}};
    for (const auto& [seconds, pLabel] : cases) {
        EXPECT_THAT(scriptOf(trackOf(0.0), makeScenario(seconds)), HasSubstr(pLabel)) << seconds;
    }
}

TEST(RunPlot, LabelsEventsThatAreFarEnoughApartToBeRead)
{
    Scenario scenario = makeScenario(100.0);
    for (const auto& [seconds, pLabel] : {std::pair(1.0, "it's on"), std::pair(1.5, "crowded"), std::pair(4.0, "far")})
    {
        ScenarioEvent event;
        event.atSeconds = seconds;
        event.sLabel = pLabel;
        scenario.events.push_back(event);
    }
    const std::string sScript = scriptOf(trackOf(0.0), scenario);
    EXPECT_THAT(sScript, HasSubstr("set label 'it''s on' at 1,"));
    EXPECT_THAT(sScript, Not(HasSubstr("crowded")));
    EXPECT_THAT(sScript, HasSubstr("set arrow from 1.5, graph 0"));
    EXPECT_THAT(sScript, HasSubstr("set label 'far' at 4,"));
}

TEST(RunPlot, IsAPictureAlsoOfARunThatNeverComesOn)
{
    Scenario scenario = makeScenario(0.6);
    scenario.sTitle = "never <on> & it's 'quoted'\nset output 'x'";
    for (const EOPCState eState : {eOPC_TX_ON, eOPC_TX_OFF}) {
        const RunTrack track = trackOf(0.0, eState);
        const std::string sSvg = runPlot(track, scenario, EPicture::Svg);
        // Not as matchers, which would show all of the picture.
        EXPECT_NE(sSvg.find("</svg>"), std::string::npos);
        EXPECT_NE(sSvg.find("never &lt;on"), std::string::npos);
        EXPECT_NE(sSvg.find("&amp; it's 'quoted' set output 'x'"), std::string::npos);
        EXPECT_TRUE(runPlot(track, scenario, EPicture::Png).starts_with("\x89PNG"));
    }
}
