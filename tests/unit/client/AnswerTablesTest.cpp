#include "Unit/Client/private/AnswerTables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using nlohmann::ordered_json;
using testing::ElementsAre;

namespace
{
const ordered_json NOTHING = ordered_json::object();

ordered_json opcLog(const std::string& sName)
{
    return {{sName,
             {{{"ObjectName", "TxRfDetectedPower"}, {"ActualValue", -10000}, {"MinValue", -9900}, {"MaxValue", 4001}},
              {{"ObjectName", "GainReductionAmplifier6"}, {"ActualValue", 1}, {"MinValue", 0}, {"MaxValue", -9900}}}}};
}
} // namespace

TEST(AnswerTables, KnowAnOpcLogWhoseNameIsCut)
{
    for (const char* pName : {"Channel.3.TxOutputPowerControlLog", "Channel.12.TxOutputPowerControlLo",
                              "Channel.123456789.TxOutputPowerControl"})
    {
        const Table table = OPC_LOG_FORM.csv(opcLog(pName));
        ASSERT_EQ(table.rows.size(), 2U) << pName;
        EXPECT_THAT(table.rows[0], ElementsAre("TxRfDetectedPower", "dBm", "", "", "40.01"));
        EXPECT_THAT(table.rows[1], ElementsAre("GainReductionAmplifier6", "dB", "0.01", "0.00", "-99.00"));
    }
    EXPECT_THROW(OPC_LOG_FORM.csv(opcLog("Channel.3.Other")), std::runtime_error);
}

TEST(AnswerTables, ShowPowersThatAreOffOrUnknownInWords)
{
    EXPECT_EQ(OPC_LOG_FORM.text(opcLog("Channel.3.TxOutputPowerControlLog")),
              "object                   unit   actual  minimum  maximum\n"
              "TxRfDetectedPower         dBm  unknown      off    40.01\n"
              "GainReductionAmplifier6    dB     0.01     0.00   -99.00\n");
}

TEST(AnswerTables, NumberTheSamplesFromOne)
{
    const ordered_json sample = {{"TxRfGain", 5005}, {"TxIfPower", -1005}, {"TxRfPowerSet", 1}};
    const Table table = TRANSIENT_LOG_FORM.csv({{"OPCLog", {sample, NOTHING}}});
    ASSERT_EQ(table.rows.size(), 2U);
    EXPECT_THAT(table.rows[0], ElementsAre("1", "0.01", "", "", "-10.05", "50.05"));
    EXPECT_THAT(table.rows[1], ElementsAre("2", "", "", "", "", ""));
    EXPECT_EQ(table.headings.size(), 6U);
}

TEST(AnswerTables, HaveACellForEachHeading)
{
    const ordered_json answer = {{"Channels", {NOTHING, {{"RadioChannelID", 1}}}},
                                 {"Ramping", {1}},
                                 {"On", {1, 2, 3, 4}},
                                 {"OPCLog", {NOTHING, 5}},
                                 {"Groups", {NOTHING}},
                                 {"Faults", {"text", NOTHING}},
                                 {"Channel.0.TxOutputPowerControlLog", {NOTHING, 1}}};
    for (const AnswerForm* pForm :
         {&STATUS_FORM, &GAIN_FORM, &TRANSIENT_LOG_FORM, &OPC_LOG_FORM, &TRACE_LEVEL_FORM, &FAULT_FORM})
    {
        const Table table = pForm->csv(answer);
        EXPECT_FALSE(table.rows.empty());
        for (const auto& row : table.rows) {
            EXPECT_EQ(row.size(), table.headings.size()) << table.headings.front();
        }
        EXPECT_FALSE(pForm->text(answer).empty());
        EXPECT_THROW(pForm->csv(NOTHING), std::runtime_error) << table.headings.front();
        EXPECT_THROW((void)pForm->text(ordered_json("text")), std::runtime_error) << table.headings.front();
    }
}

TEST(AnswerTables, ShowAUnitWithoutChannels)
{
    const ordered_json answer = {{"IntervalMs", 6}, {"Channels", ordered_json::array()}};
    EXPECT_THAT(STATUS_FORM.text(answer), testing::StartsWith("interval 6 ms, up - s, temperature - C\n"));
    EXPECT_TRUE(STATUS_FORM.csv(answer).rows.empty());
}
