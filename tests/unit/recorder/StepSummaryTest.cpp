#include "Unit/Recorder/StepSummary.h"

#include "Platform/EAFResult.h"
#include "tests/unit/SampleMaker.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::optional<QuantitySummary> quantity(const StepSummary& summary, const std::string& sName)
{
    for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
        if (summaryColumns().at(nQuantity).pName == sName) {
            return summary.quantities.at(nQuantity);
        }
    }
    ADD_FAILURE() << sName;
    return std::nullopt;
}
} // namespace

TEST(StepSummary, HasLeastMeanAndGreatest)
{
    SummaryBuilder builder(7'000'000);
    EXPECT_TRUE(builder.isEmpty());
    for (const int nMeasured : {1000, -200, 1003}) {
        StepSample sample = makeSample();
        sample.nPmeasured = nMeasured;
        sample.reducedGain[5] = nMeasured / 100;
        builder.add(sample);
    }
    const StepSummary summary = builder.summary();
    EXPECT_EQ(summary.nTimeUs, 7'000'000U);
    EXPECT_EQ(summary.nChannelNumber, 3U);
    EXPECT_EQ(summary.nSteps, 3U);
    EXPECT_EQ(quantity(summary, "pmeasured_cdb"), (QuantitySummary{-200, 601, 1003}));
    EXPECT_EQ(quantity(summary, "reduced_gain_6_cdb"), (QuantitySummary{-2, 6, 10}));
    EXPECT_EQ(quantity(summary, "temperature_cc"), (QuantitySummary{2525, 2525, 2525}));
}

TEST(StepSummary, LeavesOutWhatAStepDoesNotHave)
{
    SummaryBuilder builder;
    StepSample sample = makeSample();
    builder.add(sample);
    sample.nState = eOPC_TX_OFF;
    sample.nPctrl = OPC_POWER_OFF;
    sample.nPtarget = OPC_POWER_OFF;
    sample.nResult = EAF_FAILED;
    builder.add(sample);
    const StepSummary both = builder.summary();
    EXPECT_EQ(quantity(both, "pctrl_cdb"), (QuantitySummary{987, 987, 987}));
    EXPECT_EQ(both.nSteps, 2U);
    EXPECT_EQ(both.nFailedSteps, 1U);
    EXPECT_EQ(both.nState, eOPC_TX_OFF);
    SummaryBuilder off;
    off.add(sample);
    EXPECT_EQ(quantity(off.summary(), "pctrl_cdb"), std::nullopt);
    EXPECT_EQ(quantity(off.summary(), "ptarget_cdb"), std::nullopt);
    EXPECT_EQ(quantity(off.summary(), "requested_cdb"), (QuantitySummary{1000, 1000, 1000}));
}
