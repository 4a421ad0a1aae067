#include "Unit/Campaign/SweepDefinition.h"
#include "Unit/Campaign/private/RunDraw.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace
{
std::vector<std::string> valuesOf(const SweepDefinition& definition, std::uint64_t nRun)
{
    std::vector<std::string> texts;
    for (const SweepValue& value : planRun(definition, nRun).values) {
        texts.push_back(value.sToml);
    }
    return texts;
}

using Texts = std::vector<std::string>;

constexpr const char* RANDOM_SWEEP = R"([sweep]
scenario = "s.toml"
method = "random"
runs = 1000
seed = 5
[[parameter]]
path = "transmitter.chain_gain_db"
distribution = "uniform"
minimum = 30
maximum = 36
[[parameter]]
path = "transmitter.detector_noise_db"
distribution = "log-uniform"
minimum = 0.01
maximum = 0.5
[[parameter]]
path = "transmitter.detector_offset_db"
distribution = "normal"
mean = 0
deviation = 0.3
[[parameter]]
path = "channel.power_mode"
distribution = "uniform"
minimum = 1
maximum = 3
integer = true
[[parameter]]
path = "measures.reference"
distribution = "choice"
values = ["target", "requested"]
)";
} // namespace

// The numbers were computed by another program, so that the rule itself is held, and not only this implementation.
TEST(RunDrawTest, CountersGiveTheNumbersOfTheRule)
{
    EXPECT_EQ(counterRandom(0, 0, 0), 0x238275bc38fcbe91U);
    EXPECT_EQ(counterRandom(1, 0, 0), 0xb18a02f46d8d86c3U);
    EXPECT_EQ(counterRandom(1, 1, 0), 0x9edbe9bd18ad781dU);
    EXPECT_EQ(counterRandom(7, 999, streamOf("a.b")), 0xf70b75869f1d662cU);
}

TEST(RunDrawTest, LogarithmAndPowerAgreeWithTheLibrarys)
{
    for (int nPower = -65; nPower < 66; ++nPower) { // 1e-9 to 1e9
        const double value = std::pow(1.37, nPower);
        EXPECT_NEAR(exactLog(value), std::log(value), 4e-15 * std::max(1.0, std::abs(std::log(value))));
        EXPECT_NEAR(exactExp(std::log(value)) / value, 1.0, 1e-14);
    }
}

TEST(RunDrawTest, NormalQuantilesAreThoseOfTables)
{
    EXPECT_NEAR(normalQuantile(0.5), 0.0, 1e-9);
    EXPECT_NEAR(normalQuantile(0.975), 1.959963985, 1e-8);
    EXPECT_NEAR(normalQuantile(0.001), -3.090232306, 1e-8);
    EXPECT_NEAR(normalQuantile(0.999999), 4.753424309, 1e-8);
}

TEST(RunPlanTest, RandomRunsAreWhatTheRuleSays)
{
    const SweepDefinition definition = parseSweepDefinition(RANDOM_SWEEP, "sweep.toml");
    ASSERT_EQ(definition.nRuns, 1000U);
    EXPECT_EQ(planRun(definition, 0).nSeed, 1401475285U);
    EXPECT_EQ(planRun(definition, 1).nSeed, 648391716U);
    EXPECT_EQ(planRun(definition, 2).nSeed, 1194523752U);
    EXPECT_EQ(valuesOf(definition, 0), (Texts{"34.6502664", "0.175719837", "-0.0570247549", "3", "\"target\""}));
    EXPECT_EQ(valuesOf(definition, 1), (Texts{"34.2270811", "0.0233843399", "0.667553376", "3", "\"requested\""}));
    EXPECT_EQ(valuesOf(definition, 2), (Texts{"32.6993593", "0.308905039", "-0.316237036", "1", "\"requested\""}));
}

TEST(RunPlanTest, DrawsKeepTheirDistributions)
{
    const SweepDefinition definition = parseSweepDefinition(RANDOM_SWEEP, "sweep.toml");
    double sum = 0.0;
    double squares = 0.0;
    std::array<int, 4> modes{};
    for (std::uint64_t nRun = 0; nRun < definition.nRuns; ++nRun) {
        const RunPlan plan = planRun(definition, nRun);
        EXPECT_GE(*plan.values[0].number, 30.0);
        EXPECT_LE(*plan.values[0].number, 36.0);
        sum += *plan.values[2].number;
        squares += *plan.values[2].number * *plan.values[2].number;
        ++modes.at(static_cast<std::size_t>(*plan.values[3].number));
    }
    EXPECT_NEAR(sum / 1000.0, 0.0, 0.03);                // three standard errors of the mean
    EXPECT_NEAR(std::sqrt(squares / 1000.0), 0.3, 0.02); // three of the deviation
    EXPECT_EQ(modes[0], 0);
    for (const std::size_t nMode : {1U, 2U, 3U}) {
        EXPECT_NEAR(modes.at(nMode), 333, 45);
    }
}

TEST(RunPlanTest, AParametersDrawsDoNotDependOnTheOthers)
{
    const SweepDefinition alone = parseSweepDefinition(R"([sweep]
scenario = "s.toml"
method = "random"
runs = 10
seed = 5
[[parameter]]
path = "transmitter.detector_offset_db"
distribution = "normal"
mean = 0
deviation = 0.3
)",
                                                       "sweep.toml");
    EXPECT_EQ(valuesOf(alone, 1), Texts{"0.667553376"});
}

TEST(RunPlanTest, DrawsStayWithinTheBoundsOfANormalDistribution)
{
    const SweepDefinition definition = parseSweepDefinition(R"([sweep]
scenario = "s.toml"
method = "random"
runs = 200
[[parameter]]
path = "a"
distribution = "normal"
mean = 0
deviation = 1
minimum = -0.5
maximum = 0.25
)",
                                                            "sweep.toml");
    std::set<double> values;
    for (std::uint64_t nRun = 0; nRun < definition.nRuns; ++nRun) {
        values.insert(*planRun(definition, nRun).values[0].number);
    }
    EXPECT_EQ(*values.begin(), -0.5);
    EXPECT_EQ(*values.rbegin(), 0.25);
    EXPECT_GT(values.size(), 40U);
}

TEST(RunPlanTest, AGridHasEveryCombinationWithTheLastParameterFastest)
{
    const SweepDefinition definition = parseSweepDefinition(R"([sweep]
scenario = "s.toml"
method = "grid"
repeats = 2
[[parameter]]
path = "channel.gain_percent_on"
values = [5, 40]
[[parameter]]
path = "transmitter.actuator_step_db"
values = [0.0, 0.25, 0.5]
)",
                                                            "sweep.toml");
    ASSERT_EQ(definition.nRuns, 12U);
    const std::vector<Texts> expected = {{"5", "0"},     {"5", "0"},     {"5", "0.25"}, {"5", "0.25"},
                                         {"5", "0.5"},   {"5", "0.5"},   {"40", "0"},   {"40", "0"},
                                         {"40", "0.25"}, {"40", "0.25"}, {"40", "0.5"}, {"40", "0.5"}};
    std::set<std::uint64_t> seeds;
    for (std::uint64_t nRun = 0; nRun < 12; ++nRun) {
        EXPECT_EQ(valuesOf(definition, nRun), expected[static_cast<std::size_t>(nRun)]) << nRun;
        seeds.insert(planRun(definition, nRun).nSeed);
    }
    EXPECT_EQ(seeds.size(), 12U); // repeats of a point have seeds of their own
}

TEST(RunPlanTest, SpacedValuesBeginAndEndWhereTheyAreTold)
{
    const auto spaced = [](const std::string& sKeys) {
        const SweepDefinition definition = parseSweepDefinition(
            "[sweep]\nscenario = \"s.toml\"\nmethod = \"grid\"\n[[parameter]]\npath = \"a\"\n" + sKeys, "sweep.toml");
        Texts texts;
        for (std::uint64_t nRun = 0; nRun < definition.nRuns; ++nRun) {
            texts.push_back(valuesOf(definition, nRun)[0]);
        }
        return texts;
    };
    EXPECT_EQ(spaced("from = 0\nto = 1\ncount = 11\n"),
              (Texts{"0", "0.1", "0.2", "0.3", "0.4", "0.5", "0.6", "0.7", "0.8", "0.9", "1"}));
    EXPECT_EQ(spaced("from = 5\nto = 320\ncount = 7\nscale = \"log\"\n"),
              (Texts{"5", "10", "20", "40", "80", "160", "320"}));
    EXPECT_EQ(spaced("from = 3\nto = -3\ncount = 3\n"), (Texts{"3", "0", "-3"}));
    EXPECT_EQ(spaced("from = 1\nto = 2\ncount = 5\ninteger = true\n"), (Texts{"1", "2"}));
}
