#include "Unit/Recorder/RecordingExport.h"

#include "tests/unit/recorder/RecordedSteps.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace
{
using testing::ElementsAre;
using testing::HasSubstr;

class RecordingExportTest : public testing::Test
{
protected:
    RecordingExportTest()
    {
        m_request.channels = {3, 5};
        m_request.nToUs = 1'000'000'000;
        m_request.write = [this](std::string_view sText) { m_sText += sText; };
        m_request.progress = [](std::uint64_t) {};
    }

    void open(const std::vector<StepSample>& steps, const std::vector<RunEvent>& events = {})
    {
        record(recorderOf(m_folder.path("unit.db")), steps, events);
    }

    std::vector<std::string> lines(void (*write)(const Recording&, const RecordedRun&, const RecordingExport&))
    {
        const Recording recording(m_folder.path("unit.db"));
        m_sText.clear();
        write(recording, recording.runs().front(), m_request);
        std::vector<std::string> lines;
        std::istringstream stream(m_sText);
        for (std::string sLine; std::getline(stream, sLine);) {
            lines.push_back(sLine);
        }
        return lines;
    }

    TemporaryFolder m_folder;
    RecordingExport m_request;
    std::string m_sText;
};

std::ptrdiff_t cells(const std::string& sLine)
{
    return std::count(sLine.begin(), sLine.end(), ',') + 1;
}
} // namespace

TEST_F(RecordingExportTest, HasARowPerTimeWithColumnsForEachChannel)
{
    open({makeStep(0, 0), makeStep(0, 1), makeStep(6000, 1), makeStep(12'000, 0)});
    const std::vector<std::string> rows = lines(exportSteps);
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_THAT(rows[0], testing::StartsWith("time_s,time_iso,ch3/requested_power_dBm,ch3/ptarget_dBm,ch3/pctrl_dBm,"));
    EXPECT_THAT(rows[0], HasSubstr(",ch3/lateness_us,ch5/requested_power_dBm,"));
    const std::string sCells =
        ",10.00,10.12,9.87,10.17,10.16,-0.05,12.34,-3.00,25.10,5123.456,0.01,0.02,0.03,0.04,0.05,"
        "0.06,8,TX_ON,0,1,73";
    EXPECT_EQ(rows[1], "0.000000,2026-11-21T15:00:00.000000Z" + sCells + sCells);
    EXPECT_EQ(rows[2], "0.006000,2026-11-21T15:00:00.006000Z" + std::string(21, ',') + sCells);
    EXPECT_EQ(rows[3], "0.012000,2026-11-21T15:00:00.012000Z" + sCells + std::string(21, ','));
}

TEST_F(RecordingExportTest, LeavesCellsEmptyThatHaveNoValue)
{
    StepSample off = makeStep(0);
    off.nState = eOPC_TX_OFF;
    off.nPctrl = OPC_POWER_OFF;
    open({off});
    m_request.channels = {3};
    EXPECT_EQ(lines(exportSteps)[1],
              "0.000000,2026-11-21T15:00:00.000000Z,10.00,10.12,,,,,,,25.10,5123.456,,,,,,,2,TX_OFF,"
              "0,1,73");
}

TEST_F(RecordingExportTest, HasLeastMeanAndGreatestOfSecondsAndMinutes)
{
    StepSample second = makeStep(500'000);
    second.nPmeasured = 1027;
    open({makeStep(0), second, makeStep(1'000'000)});
    m_request.channels = {3};
    for (const auto& [eResolution, nRows] : {std::pair{EResolution::Seconds, 3U}, {EResolution::Minutes, 2U}}) {
        m_request.eResolution = eResolution;
        const std::vector<std::string> rows = lines(exportSteps);
        ASSERT_EQ(rows.size(), nRows);
        EXPECT_THAT(rows[0], HasSubstr(",ch3/pmeasured_dBm_min,ch3/pmeasured_dBm_mean,ch3/pmeasured_dBm_max,"));
        EXPECT_THAT(rows[1], HasSubstr(nRows == 3 ? ",10.17,10.22,10.27," : ",10.17,10.20,10.27,"));
        EXPECT_THAT(rows[1], testing::EndsWith(nRows == 3 ? ",8,TX_ON,2,0" : ",8,TX_ON,3,0"));
        EXPECT_EQ(cells(rows[0]), cells(rows[1]));
    }
}

TEST_F(RecordingExportTest, HasTheEventsOfItsChannelsAndOfTheUnit)
{
    RunEvent command;
    command.nTimeUs = 6000;
    command.nSteps = 2;
    command.nChannelNumber = 5;
    command.eEvent = ERunEvent::Command;
    command.sText = "say \"hello\", then go";
    command.sDetail = R"({"a":1})";
    RunEvent note;
    note.nTimeUs = 7000;
    note.sText = "late";
    open({makeStep(0)}, {command, note});
    EXPECT_THAT(lines(exportEvents),
                ElementsAre("time_s,time_iso,channel,kind,text,steps,detail",
                            "0.006000,2026-11-21T15:00:00.006000Z,5,command,\"say \"\"hello\"\", then go\",2,"
                            "\"{\"\"a\"\":1}\"",
                            "0.007000,2026-11-21T15:00:00.007000Z,,note,\"late\",0,"));
    m_request.channels = {3};
    EXPECT_EQ(lines(exportEvents).size(), 2U);
}

TEST_F(RecordingExportTest, KeepsToItsTimes)
{
    std::vector<StepSample> steps;
    for (std::uint64_t nStep = 0; nStep < 50'000; ++nStep) { // more than is read at a time
        steps.push_back(makeStep(nStep * 6000));
    }
    open(steps);
    m_request.channels = {3};
    EXPECT_EQ(lines(exportSteps).size(), 50'001U);
    m_request.nFromUs = 6001;
    m_request.nToUs = 18'000;
    const std::vector<std::string> rows = lines(exportSteps);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_THAT(rows[1], testing::StartsWith("0.012000,"));
    EXPECT_THAT(rows[2], testing::StartsWith("0.018000,"));
}

TEST_F(RecordingExportTest, LeavesOutTimesThatCannotBe)
{
    open({makeStep(0), makeStep(12'000)});
    SQLite::Database(m_folder.path("unit.db"), SQLite::OPEN_READWRITE)
        .exec("INSERT INTO step(run, time_us, channel) VALUES (1, -5, 3), (1, 9223372036854775807, 3)");
    m_request.nToUs = RecordedRange().nToUs;
    EXPECT_EQ(lines(exportSteps).size(), 3U);
    const auto times = Recording(m_folder.path("unit.db")).times(EResolution::Steps, 1);
    ASSERT_TRUE(times.has_value());
    EXPECT_EQ(times->nFirstUs, 0U);
    EXPECT_EQ(times->nLastUs, 12'000U);
}

TEST_F(RecordingExportTest, RefusesARunThatBeganAtNoTime)
{
    open({makeStep(0)});
    SQLite::Database(m_folder.path("unit.db"), SQLite::OPEN_READWRITE)
        .exec("UPDATE run SET started_unix_us = 9223372036854775807");
    try {
        (void)Recording(m_folder.path("unit.db")).runs();
        FAIL() << "not refused";
    }
    catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("unit.db: is damaged: run 1 began 9223372036854775807 microseconds"));
    }
}
