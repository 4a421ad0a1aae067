#include "Unit/Simulator/RunReport.h"

#include "tests/unit/simulator/VirtualSteps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>

using testing::HasSubstr;
using testing::Not;

namespace
{
constexpr double INFINITE = std::numeric_limits<double>::infinity();

MeasureBand band(const char* pName, double minimum, double maximum)
{
    return {measureKey(pName), minimum, maximum};
}

RunReport makeReport()
{
    RunReport report;
    report.scenario = makeScenario(60.0);
    report.scenario.sTitle = "A title";
    report.scenario.unit.channels.front().nSeed = 7;
    report.overrides = {{"transmitter.detector_noise_db", "0.1"}};
    report.measures.steps = 10000.0;
    report.measures.settlingMaxMs = 150.0;
    report.measures.steadyMeanDb = 0.0625;
    report.expectations = checkExpectations({band("settling_max_ms", -INFINITE, 120.0), band("steps", 1.0, INFINITE),
                                             band("ramp_steps", NO_MEASURE, NO_MEASURE)},
                                            report.measures);
    report.wallSeconds = 0.5;
    report.outputs = {"run.csv (1000 rows)"};
    return report;
}
} // namespace

TEST(Expectations, AreMetWithinTheirBoundsOrByAMeasureThatIsNotThere)
{
    const struct
    {
        double minimum;
        double maximum;
        double value;
        bool bMet;
    } cases[] = {{1.0, 2.0, 1.0, true},
                 {1.0, 2.0, 2.0, true},
                 {1.0, 2.0, 2.1, false},
                 {1.0, 2.0, 0.9, false},
                 {-INFINITE, 2.0, -5.0, true},
                 {1.0, INFINITE, 0.0, false},
                 {-INFINITE, INFINITE, NO_MEASURE, false},
                 {NO_MEASURE, NO_MEASURE, NO_MEASURE, true},
                 {NO_MEASURE, NO_MEASURE, 0.0, false}};
    for (const auto& [minimum, maximum, value, bMet] : cases) {
        EXPECT_EQ(isWithin(band("steps", minimum, maximum), value), bMet) << minimum << maximum << value;
    }
}

TEST(RunReportText, GroupsTheMeasuresWithTheirUnits)
{
    const std::string sText = reportText(makeReport());
    EXPECT_THAT(sText, HasSubstr("  scenario                run.toml\n"));
    EXPECT_THAT(sText, HasSubstr("  with                    transmitter.detector_noise_db = 0.1\n"));
    EXPECT_THAT(sText, HasSubstr("  simulated               60 s at 6 ms, seed 7\n"));
    EXPECT_THAT(sText, HasSubstr("  took                    0.500 s, 20000 steps/s, 120 times real time\n"));
    EXPECT_THAT(sText, HasSubstr("  written                 run.csv (1000 rows)\n"));
    EXPECT_THAT(sText, HasSubstr("\njumps\n  jumps                             0  "));
    EXPECT_THAT(sText, HasSubstr("\n  settling_max_ms            150.0 ms  from a jump"));
    EXPECT_THAT(sText, HasSubstr("\n  steady_mean_db             0.062 dB  "));
    EXPECT_THAT(sText, HasSubstr("\n  ramp_steps                        -  "));
    EXPECT_THAT(sText, HasSubstr("\nexpectations\n  2 of 3 met\n"));
    for (const RunMeasureKey& key : runMeasureKeys()) {
        EXPECT_THAT(sText, HasSubstr(key.pMeaning));
    }
}

TEST(RunReportText, ListsMissedExpectations)
{
    RunReport report = makeReport();
    EXPECT_FALSE(report.allMet());
    EXPECT_EQ(missedText(report), "missed: settling_max_ms is 150.0 ms, expected at most 120 ms\n");
    report.expectations = checkExpectations({band("ramp_steps", 3.0, 3.0), band("jumps", NO_MEASURE, NO_MEASURE),
                                             band("steps", 1.0, 2.5), band("steady_steps", 5.0, INFINITE)},
                                            report.measures);
    EXPECT_EQ(missedText(report), "missed: ramp_steps is none, expected exactly 3\n"
                                  "missed: jumps is 0, expected none\n"
                                  "missed: steps is 10000, expected 1 to 2.5\n"
                                  "missed: steady_steps is 0, expected at least 5\n");
}

TEST(RunReportJson, HasEveryMeasureAndNullForThoseThatAreNotThere)
{
    const auto json = nlohmann::json::parse(reportJson(makeReport()));
    EXPECT_EQ(json.at("scenario"), "run.toml");
    EXPECT_EQ(json.at("title"), "A title");
    EXPECT_EQ(json.at("seed"), 7);
    EXPECT_EQ(json.at("overrides")[0].at("path"), "transmitter.detector_noise_db");
    EXPECT_EQ(json.at("measures").size(), RUN_MEASURE_COUNT);
    EXPECT_TRUE(json.at("measures").at("steps").is_number_integer());
    EXPECT_EQ(json.at("measures").at("steady_mean_db"), 0.0625);
    EXPECT_TRUE(json.at("measures").at("ramp_steps").is_null());
    const auto& expectations = json.at("expectations");
    EXPECT_EQ(expectations[0].at("maximum"), 120);
    EXPECT_TRUE(expectations[0].at("minimum").is_null());
    EXPECT_EQ(expectations[0].at("met"), false);
    EXPECT_EQ(expectations[2].at("expected"), "none");
    EXPECT_EQ(expectations[2].at("met"), true);
}

TEST(RunReportJson, SaysNothingOfHowLongItTook)
{
    RunReport report = makeReport();
    const std::string sFirst = reportJson(report);
    report.wallSeconds = 5.0;
    EXPECT_EQ(reportJson(report), sFirst);
}

TEST(RunReportJson, BearsAPathThatIsNoText)
{
    RunReport report = makeReport();
    report.scenario.sPath = "run\xff.toml";
    EXPECT_TRUE(nlohmann::json::accept(reportJson(report)));
}

TEST(ReplayCommand, QuotesWhatAShellWouldReadOtherwise)
{
    RunReport report = makeReport();
    report.scenario.sPath = "my runs/it's.toml";
    report.overrides.push_back({"channel.gain_percent_on", "[20, 20, 20]"});
    EXPECT_EQ(replayCommand(report), "opc simulate 'my runs/it'\\''s.toml' --set transmitter.detector_noise_db=0.1 "
                                     "--set 'channel.gain_percent_on=[20, 20, 20]'");
}
