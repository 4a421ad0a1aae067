#include "Unit/CommandLine/StatusDisplay.h"

#include "Unit/Text/PowerText.h"
#include "tests/unit/SampleMaker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>

namespace
{
struct FileCloser
{
    void operator()(std::FILE* pFile) const { (void)std::fclose(pFile); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

std::string contentsOf(std::FILE* pFile)
{
    std::rewind(pFile);
    std::string sText;
    std::array<char, 4096> chunk{};
    for (std::size_t nRead = 0; (nRead = std::fread(chunk.data(), 1, chunk.size(), pFile)) > 0;) {
        sText.append(chunk.data(), nRead);
    }
    return sText;
}

} // namespace

TEST(PowerText, NamesEveryState)
{
    EXPECT_STREQ(controllerStateName(eOPC_TX_OFF_INITIATED), "TX_OFF_INITIATED");
    EXPECT_STREQ(controllerStateName(eOPC_TX_OFF_IN_PROGRESS), "TX_OFF_IN_PROGRESS");
    EXPECT_STREQ(controllerStateName(eOPC_TX_OFF), "TX_OFF");
    EXPECT_STREQ(controllerStateName(eOPC_DELAYED_TX_ON_INITIATED), "DELAYED_TX_ON_INITIATED");
    EXPECT_STREQ(controllerStateName(eOPC_DELAYED_TX_ON_IN_PROGRESS), "DELAYED_TX_ON_IN_PROGRESS");
    EXPECT_STREQ(controllerStateName(eOPC_TX_ON_INITIATED), "TX_ON_INITIATED");
    EXPECT_STREQ(controllerStateName(eOPC_TX_ON_IN_PROGRESS), "TX_ON_IN_PROGRESS");
    EXPECT_STREQ(controllerStateName(eOPC_TX_ON_RAMPING), "TX_ON_RAMPING");
    EXPECT_STREQ(controllerStateName(eOPC_TX_ON), "TX_ON");
    EXPECT_STREQ(controllerStateName(eOPC_UNDEFINED), "UNDEFINED");
    EXPECT_STREQ(controllerStateName(-1), "UNKNOWN");
    EXPECT_STREQ(controllerStateName(10), "UNKNOWN");
}

TEST(PowerText, ShowsHundredthsAsDecibels)
{
    EXPECT_EQ(decibelText(-5), "-0.05");
    EXPECT_EQ(decibelText(1234), "12.34");
    EXPECT_EQ(powerText(0), "0.00");
    EXPECT_EQ(powerText(OPC_POWER_OFF), "off");
    EXPECT_EQ(powerText(OPC_POWER_UNKNOWN), "off");
}

TEST(PowerText, RoundsAndLimitsDecibels)
{
    EXPECT_EQ(centiDb(10.0), 1000);
    EXPECT_EQ(centiDb(0.125), 13);
    EXPECT_EQ(centiDb(-0.125), -13);
    EXPECT_EQ(centiDb(1e300), 10'000'000);
    EXPECT_EQ(centiDb(-std::numeric_limits<double>::infinity()), -10'000'000);
    EXPECT_EQ(centiDb(std::nan("")), -10'000'000);
}

TEST(StatusLine, SaysEverythingInAPlainLine)
{
    EXPECT_EQ(plainStatusLine(makeSample()),
              "    1.500 s  channel 3  TX_ON               Ptarget  10.12  Pctrl   9.87  Pmeasured  10.17 dBm  "
              "error  -0.05 dB  steps 251  failed 4  overruns 2");
}

TEST(StatusLine, FitsUnderItsHeadingOnATerminal)
{
    const std::string sLine = terminalStatusLine(makeSample());
    EXPECT_EQ(sLine, " 3 TX_ON                10.12   9.87     10.17    -0.05     251      4        2");
    EXPECT_EQ(sLine.size(), terminalHeading().size());
    EXPECT_LT(terminalHeading().size(), 80U);
}

TEST(StatusDisplay, WritesPlainLinesEachSecondAndAtChangesOfState)
{
    const File file(std::tmpfile());
    ASSERT_TRUE(file);
    StatusDisplay display(file.get(), false, 1);
    StepSample sample = makeSample();
    for (sample.nTimeUs = 0; sample.nTimeUs < 2'100'000; sample.nTimeUs += 6000) {
        sample.nState = sample.nTimeUs < 500'000 ? eOPC_TX_ON_RAMPING : eOPC_TX_ON;
        display.add(sample);
    }
    display.refresh();
    EXPECT_THAT(contentsOf(file.get()),
                testing::MatchesRegex(" +0.000 s  channel 3  TX_ON_RAMPING [^\n]*\n +0.504 s  channel 3  TX_ON [^\n]*\n"
                                      " +1.002 s  channel 3  TX_ON [^\n]*\n +2.004 s  channel 3  TX_ON [^\n]*\n"));
}

TEST(StatusDisplay, RedrawsOnATerminal)
{
    const File file(std::tmpfile());
    ASSERT_TRUE(file);
    StatusDisplay display(file.get(), true, 2);
    StepSample second = makeSample();
    second.nChannelIndex = 1;
    second.nChannelNumber = 5;
    display.add(makeSample());
    display.add(second);
    display.refresh();
    display.refresh();
    display.note("note");
    const std::string sLines =
        terminalHeading() + "\n" + terminalStatusLine(makeSample()) + "\n" + terminalStatusLine(second) + "\n";
    const std::string sErase = "\x1b[3A\r\x1b[J";
    EXPECT_EQ(contentsOf(file.get()), sLines + sErase + sLines + sErase + "note\n" + sLines);
}

TEST(StatusDisplay, NotesElsewhereAreLinesLikeOthers)
{
    const File file(std::tmpfile());
    ASSERT_TRUE(file);
    StatusDisplay display(file.get(), false, 1);
    display.note("note");
    EXPECT_EQ(contentsOf(file.get()), "note\n");
}
