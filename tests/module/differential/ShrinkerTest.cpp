// What is found is shown short: the shrinker alone, then differences planted in the reference.
#include "tests/module/differential/Shrinker.h"

#include "tests/module/differential/Campaign.h"
#include "tests/module/differential/Generator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace Differential; // NOLINT(google-build-using-namespace)
using ::testing::HasSubstr;

namespace
{
/** @return whether a power of at least 101 is regulated to, and the transmitter requested off after it */
bool showsPowerThenOff(const Sequence& sequence)
{
    const auto& operations = sequence.operations;
    const auto power = std::find_if(operations.begin(), operations.end(), [](const Operation& operation) {
        return operation.eKind == EOperation::Regulate && operation.anArgument[0] >= 101;
    });
    return std::find_if(power, operations.end(), [](const Operation& operation) {
               return operation.eKind == EOperation::Request && operation.anArgument[0] == 0;
           }) != operations.end();
}

/** A constant of the reference that is not the behaviour's. */
struct Planted
{
    const char* pName;
    Constants constants;
    std::size_t nOperations; /**< that show it, at most */
    const char* pShown;      /**< among what is printed */
};

std::ostream& operator<<(std::ostream& stream, const Planted& planted)
{
    return stream << planted.pName;
}

class PlantedDifference : public ::testing::TestWithParam<Planted>
{
};
} // namespace

TEST(Shrinker, LeavesWhatIsNeededWithValuesNearestToZero)
{
    Sequence sequence = Generator(7, true).sequence();
    sequence.nChannel = 12;
    sequence.operations.insert(sequence.operations.begin() + 50, {EOperation::Regulate, {INT32_MAX}});
    sequence.operations.push_back({EOperation::Request, {0, INT32_MIN}});
    ASSERT_TRUE(showsPowerThenOff(sequence));
    const Sequence shortest = shrunk(sequence, showsPowerThenOff);
    EXPECT_EQ(shortest.nChannel, 0U);
    EXPECT_EQ(shortest.operations,
              (std::vector<Operation>{{EOperation::Regulate, {101}}, {EOperation::Request, {0, 0}}}));
}

TEST(Shrinker, KeepsASequenceThatShowsItOnlyAsItIs)
{
    const Sequence sequence = {3, {{EOperation::Regulate, {-5}}, {EOperation::SetGain, {1, 8, INT32_MIN}}}};
    const Sequence shortest = shrunk(sequence, [&sequence](const Sequence& candidate) {
        return candidate.nChannel == 3 && candidate.operations == sequence.operations;
    });
    EXPECT_EQ(shortest.nChannel, 3U);
    EXPECT_EQ(shortest.operations, sequence.operations);
}

TEST(Shrinker, StopsWhenItsTrialsAreUsedUp)
{
    const Sequence sequence = Generator(7, true).sequence();
    unsigned int nTrials = 0;
    const Sequence kept = shrunk(
        sequence,
        [&nTrials](const Sequence&) {
            ++nTrials;
            return false;
        },
        10);
    EXPECT_EQ(nTrials, 10U);
    EXPECT_EQ(kept.operations, sequence.operations);
}

TEST(Shrinker, PrintsASequenceAsItsInitialiser)
{
    EXPECT_EQ(textOf(Sequence{12, {{EOperation::SetGain, {1, 8, INT32_MIN}}, {EOperation::Heal, {}}}}),
              "{12, {\n"
              "    {EOperation::SetGain, {1, 8, INT32_MIN}},\n"
              "    {EOperation::Heal},\n"
              "}}");
}

TEST_P(PlantedDifference, IsFoundAndShrunk)
{
    if (DIFFERENTIAL_SLOW) {
        GTEST_SKIP() << "shrinking takes minutes in this build, and is the same in every build";
    }
    const std::unique_ptr<ModuleDoor> pDoor = openDoor();
    Campaign campaign({.nSteps = 200'000, .nSeed = 1, .nShrinkTrials = 1500});
    const std::optional<Finding> finding = campaign.run(*pDoor, GetParam().constants);
    ASSERT_TRUE(finding.has_value());
    EXPECT_LE(finding->nOperations, GetParam().nOperations) << finding->sText;
    EXPECT_THAT(finding->sText, HasSubstr(GetParam().pShown));
    RecordProperty("steps", std::to_string(finding->nSteps));
    RecordProperty("operations", std::to_string(finding->nOperations));

    // The seed that is printed shows it again.
    Campaign again({.nSteps = 1, .nSeed = finding->nSeed, .nShrinkTrials = 0});
    EXPECT_TRUE(again.run(*pDoor, GetParam().constants).has_value());
    EXPECT_FALSE(Campaign({.nSteps = 1, .nSeed = finding->nSeed, .nShrinkTrials = 0}).run(*pDoor).has_value());
}

// A switch-on with an interval above 24 takes a request, limits, a connection and three steps.
INSTANTIATE_TEST_SUITE_P(Constants, PlantedDifference,
                         ::testing::Values(Planted{"RampErrorBound", {.nRampErrorBound = 101}, 10, "TX ON"},
                                           Planted{"Rounding", {.nRounding = 49}, 12, "setOutputPower"},
                                           Planted{"TransientSamples", {.nTransientSamples = 201}, 215, "TxRfPowerSet"},
                                           Planted{
                                               "ModeKeptForTwo", {.nModeKeptForTwo = 2}, 16, "EOperation::Request, {"}),
                         [](const auto& parameter) { return std::string(parameter.param.pName); });
