#include "Unit/Client/private/TransientPlot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using nlohmann::ordered_json;
using testing::HasSubstr;
using testing::Not;

namespace
{
const ordered_json ANSWER = {
    {"RadioChannelID", 4},
    {"OPCLog",
     {{{"TxRfPowerSet", 3995},
       {"TxRfPowerTarget", -9900},
       {"TxRfDetectedPower", -10000},
       {"TxIfPower", -5},
       {"TxRfGain", -9900}},
      {{"TxRfPowerSet", 1}, {"TxRfPowerTarget", -9900}, {"TxRfDetectedPower", 2}, {"TxIfPower", "quit\n!ls"}}}}};
}

TEST(TransientPlotScript, HasTheSamplesInDecibels)
{
    EXPECT_THAT(transientPlotScript(ANSWER, true), HasSubstr("$samples << END_OF_SAMPLES\n"
                                                             "1 39.95 ? ? -0.05 -99.00\n"
                                                             "2 0.01 ? 0.02 ? ?\n"
                                                             "END_OF_SAMPLES\n"));
}

TEST(TransientPlotScript, DrawsOnlyWhatHasValues)
{
    const std::string sScript = transientPlotScript(ANSWER, true);
    EXPECT_THAT(sScript, HasSubstr("$samples using 1:2 axes x1y1"));
    EXPECT_THAT(sScript, HasSubstr("title 'target: no values'"));
    EXPECT_THAT(sScript, Not(HasSubstr("using 1:3 ")));
    EXPECT_THAT(sScript, HasSubstr("$samples using 1:6 axes x1y2"));
    EXPECT_THAT(sScript, HasSubstr("Transient log of channel 4"));
}

TEST(TransientPlotScript, TakesNoWordsFromTheUnit)
{
    ordered_json answer = ANSWER;
    EXPECT_THAT(transientPlotScript(answer, false), Not(HasSubstr("quit")));
    answer["RadioChannelID"] = "'; system 'ls";
    EXPECT_THAT(transientPlotScript(answer, false), Not(HasSubstr("system")));
}

TEST(TransientPlotScript, ChoosesTheKindOfPicture)
{
    EXPECT_THAT(transientPlotScript(ANSWER, true), HasSubstr("set terminal svg "));
    EXPECT_THAT(transientPlotScript(ANSWER, false), HasSubstr("set terminal pngcairo "));
}

TEST(TransientPlotScript, NeedsALog)
{
    EXPECT_THROW((void)transientPlotScript(ordered_json::object(), true), std::runtime_error);
}
