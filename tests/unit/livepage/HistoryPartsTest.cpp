#include "Unit/LivePage/private/HistoryParts.h"

#include "Platform/EAFResult.h"
#include "tests/unit/SampleMaker.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
constexpr std::size_t PCTRL = 2; // of summaryColumns()
constexpr std::size_t ERROR = 5;

std::vector<StepSummary> partsOf(const std::vector<StepSample>& steps, std::uint64_t nFirstUs, std::uint64_t nLastUs,
                                 std::size_t nParts)
{
    HistoryParts parts(nFirstUs, nLastUs, nParts);
    for (const StepSample& step : steps) {
        parts.add(step);
    }
    return parts.parts();
}
} // namespace

TEST(HistoryParts, HaveMinimumMeanAndMaximumOfTheirSteps)
{
    std::vector<StepSample> steps;
    for (const std::uint64_t nTimeUs : {100U, 110U, 150U, 199U}) {
        steps.push_back(stepOnTheAir(nTimeUs));
        steps.back().nPctrl = static_cast<std::int32_t>(nTimeUs);
    }
    steps[1].nState = eOPC_TX_ON_RAMPING;
    steps[1].nResult = EAF_FAILED;
    const std::vector<StepSummary> parts = partsOf(steps, 100, 199, 2);
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].nTimeUs, 105U);
    EXPECT_EQ(parts[1].nTimeUs, 174U);
    EXPECT_EQ(parts[0].nSteps, 2U);
    EXPECT_EQ(parts[0].nFailedSteps, 1U);
    EXPECT_EQ(parts[0].nState, eOPC_TX_ON_RAMPING);
    EXPECT_EQ(parts[1].nState, eOPC_TX_ON);
    EXPECT_EQ(parts[0].quantities[PCTRL], (QuantitySummary{100, 105, 110}));
    EXPECT_EQ(parts[1].quantities[PCTRL], (QuantitySummary{150, 175, 199}));
}

TEST(HistoryParts, LeaveOutPartsWithoutStepsAndValuesThatDoNotExist)
{
    std::vector<StepSample> steps = {stepOnTheAir(0), stepOnTheAir(10), stepOnTheAir(90)};
    steps[1].nPctrl = OPC_POWER_OFF;
    steps[2].nPctrl = OPC_POWER_OFF;
    const std::vector<StepSummary> parts = partsOf(steps, 0, 99, 5);
    ASSERT_EQ(parts.size(), 2U);
    EXPECT_EQ(parts[0].nSteps, 2U);
    EXPECT_EQ(parts[0].quantities[PCTRL], (QuantitySummary{1010, 1010, 1010}));
    EXPECT_EQ(parts[1].quantities[PCTRL], std::nullopt);
}

TEST(HistoryParts, RoundMeansToTheNearest)
{
    std::vector<StepSample> steps = {stepOnTheAir(0), stepOnTheAir(1), stepOnTheAir(2)};
    steps[0].nPowerError = -1;
    steps[1].nPowerError = -2;
    steps[2].nPowerError = -2;
    EXPECT_EQ(partsOf(steps, 0, 9, 1)[0].quantities[ERROR]->nMean, -2);
    steps[1].nPowerError = -1;
    EXPECT_EQ(partsOf(steps, 0, 9, 1)[0].quantities[ERROR]->nMean, -1);
}

TEST(HistoryParts, AreNeverMoreThanWasAskedFor)
{
    std::vector<StepSample> steps;
    for (std::uint64_t nTimeUs = 0; nTimeUs < 1009; ++nTimeUs) {
        steps.push_back(stepOnTheAir(7000 + nTimeUs));
    }
    for (const std::size_t nParts : {1U, 2U, 3U, 10U, 100U, 1000U, 1008U}) {
        EXPECT_EQ(partsOf(steps, 7000, 8008, nParts).size(), nParts);
    }
    EXPECT_EQ(partsOf(steps, 7000, 7000, 10).size(), 1U) << "what is later counts for the last one";
}

TEST(HistoryParts, TakeSecondsByTheirSteps)
{
    StepSummary second;
    second.nTimeUs = 2'000'000;
    second.nSteps = 3;
    second.nFailedSteps = 1;
    second.nState = eOPC_TX_ON;
    second.quantities[PCTRL] = QuantitySummary{-10, 0, 20};
    HistoryParts parts(2'000'000, 3'999'999, 1);
    parts.add(second, 1'000'000);
    StepSample step = stepOnTheAir(3'500'000);
    step.nPctrl = 8;
    step.nState = eOPC_TX_OFF_INITIATED;
    parts.add(step);
    const StepSummary part = parts.parts().at(0);
    EXPECT_EQ(part.nTimeUs, 2'750'000U);
    EXPECT_EQ(part.nSteps, 4U);
    EXPECT_EQ(part.nFailedSteps, 1U);
    EXPECT_EQ(part.nState, eOPC_TX_OFF_INITIATED);
    EXPECT_EQ(part.quantities[PCTRL], (QuantitySummary{-10, 2, 20}));
}
