#include "Unit/LivePage/SampleJson.h"

#include "tests/unit/SampleMaker.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <vector>

namespace
{
using nlohmann::json;

json parsed(const fmt::memory_buffer& buffer)
{
    return json::parse(fmt::to_string(buffer));
}

json samplesJson(const std::vector<StepSample>& samples)
{
    fmt::memory_buffer buffer;
    appendSamples(buffer, samples);
    return parsed(buffer);
}
} // namespace

TEST(SampleJson, HasAColumnForEachQuantity)
{
    const json expected = json::parse(R"([{"c":10,"t_us":[6000],"state":[3],"result":[0],"detector_state":[1],
        "requested_cdb":[1000],"ptarget_cdb":[1006],"pctrl_cdb":[1010],"pmeasured_cdb":[1004],"ppredicted_cdb":[1008],
        "error_cdb":[2],"rf_gain_cdb":[3300],"if_power_cdb":[-300],"temperature_cc":[2513],"frequency_khz":[5000500],
        "reduced_gain_cdb":[[1],[2],[3],[4],[5],[6]]}])");
    json found = samplesJson({stepOnTheAir(6000)});
    EXPECT_EQ(found[0]["state"][0], static_cast<int>(eOPC_TX_ON));
    found[0]["state"][0] = 3;
    EXPECT_EQ(found, expected);
}

TEST(SampleJson, PutsEachChannelsSamplesTogetherInTheOrderOfTheChannels)
{
    const json found = samplesJson({stepOnTheAir(0, 2), stepOnTheAir(6, 0), stepOnTheAir(6, 2), stepOnTheAir(12, 0)});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0]["c"], 10);
    EXPECT_EQ(found[0]["t_us"], json({6, 12}));
    EXPECT_EQ(found[1]["c"], 12);
    EXPECT_EQ(found[1]["t_us"], json({0, 6}));
}

TEST(SampleJson, IsAnEmptyListForNoSamples)
{
    EXPECT_EQ(samplesJson({}), json::array());
}

TEST(SampleJson, HasNoPowersWhileTheTransmitterIsOff)
{
    StepSample off = stepOnTheAir(0);
    off.nState = eOPC_TX_OFF;
    StepSample unknown = stepOnTheAir(6);
    unknown.nPctrl = OPC_POWER_OFF;
    unknown.nPtarget = OPC_POWER_UNKNOWN;
    const json found = samplesJson({off, unknown});
    for (const char* pColumn :
         {"pctrl_cdb", "pmeasured_cdb", "ppredicted_cdb", "error_cdb", "rf_gain_cdb", "if_power_cdb"}) {
        EXPECT_EQ(found[0][pColumn], json({nullptr, nullptr})) << pColumn;
    }
    EXPECT_EQ(found[0]["reduced_gain_cdb"][5], json({nullptr, nullptr}));
    EXPECT_EQ(found[0]["ptarget_cdb"], json({1006, nullptr}));
    EXPECT_EQ(found[0]["requested_cdb"], json({1000, 1000}));
}

TEST(SampleJson, HasNoErrorBeforeThereIsAMeasuredPower)
{
    StepSample sample = stepOnTheAir(0);
    sample.nPmeasured = OPC_POWER_UNKNOWN;
    const json found = samplesJson({sample});
    EXPECT_EQ(found[0]["error_cdb"], json::array({nullptr}));
    EXPECT_EQ(found[0]["pmeasured_cdb"], json::array({nullptr}));
    EXPECT_EQ(found[0]["pctrl_cdb"], json::array({1010}));
}

TEST(SampleJson, HasNothingOfTheChainWhenTheHandlerIsNotSimulated)
{
    StepSample sample = stepOnTheAir(0);
    sample.nIfPower = sample.nRfGain = OPC_POWER_UNKNOWN;
    sample.reducedGain.fill(OPC_POWER_UNKNOWN);
    const json found = samplesJson({sample});
    EXPECT_EQ(found[0]["rf_gain_cdb"], json::array({nullptr}));
    EXPECT_EQ(found[0]["if_power_cdb"], json::array({nullptr}));
    EXPECT_EQ(found[0]["reduced_gain_cdb"], json::parse("[[null],[null],[null],[null],[null],[null]]"));
}

TEST(SummaryJson, HasColumnsOfMinimaMeansAndMaxima)
{
    StepSummary part;
    part.nTimeUs = 105;
    part.nSteps = 7;
    part.nFailedSteps = 2;
    part.nState = 3;
    for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
        const auto nValue = static_cast<std::int64_t>(nQuantity * 10);
        part.quantities[nQuantity] = QuantitySummary{nValue - 1, nValue, nValue + 2};
    }
    StepSummary empty;
    empty.nTimeUs = 110;
    fmt::memory_buffer buffer;
    appendSummaries(buffer, 10, std::vector{part, empty});
    const json found = parsed(buffer);
    EXPECT_EQ(found["c"], 10);
    EXPECT_EQ(found["t_us"], json({105, 110}));
    EXPECT_EQ(found["n"], json({7, 0}));
    EXPECT_EQ(found["failed"], json({2, 0}));
    EXPECT_EQ(found["state"], json({3, 0}));
    EXPECT_EQ(found["pctrl_cdb"], json::parse(R"({"min":[19,null],"mean":[20,null],"max":[22,null]})"));
    ASSERT_EQ(found["reduced_gain_cdb"].size(), 6U);
    EXPECT_EQ(found["reduced_gain_cdb"][1], json::parse(R"({"min":[109,null],"mean":[110,null],"max":[112,null]})"));
}

TEST(EventJson, HasNullForAnEventOfTheUnitAndMendsTextThatIsNoUtf8)
{
    RunEvent unit;
    unit.nId = 3;
    unit.nTimeUs = 5;
    unit.sText = "a \"quoted\" \xff";
    RunEvent channel;
    channel.nChannelNumber = 7;
    channel.eEvent = ERunEvent::State;
    fmt::memory_buffer buffer;
    appendEvents(buffer, std::vector<RunEvent>{unit, channel});
    EXPECT_EQ(parsed(buffer),
              json::parse(R"([{"id":3,"t_us":5,"channel":null,"kind":"note","text":"a \"quoted\" \ufffd"},
                                              {"id":0,"t_us":0,"channel":7,"kind":"state","text":""}])"));
}
