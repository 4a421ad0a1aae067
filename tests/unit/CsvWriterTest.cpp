#include "Unit/Recorder/CsvWriter.h"

#include "Platform/ConfigurationError.h"
#include "tests/unit/SampleMaker.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
const std::string HEADER = "time_s,channel,state,requested_power_dBm,ptarget_dBm,pctrl_dBm,pmeasured_dBm,"
                           "ppredicted_dBm,error_dB,result,detector_state,temperature_C,frequency_MHz,lateness_us\n";
} // namespace

TEST(CsvWriter, WritesARowPerStepUnderItsHeader)
{
    const TemporaryFolder folder;
    CsvWriter writer(folder.path("run.csv"));
    writer.begin();
    writer.add(makeSample());
    StepSample failed = makeSample();
    failed.nTimeUs = 1'506'000;
    failed.nResult = EAF_FAILED;
    failed.nState = eOPC_TX_OFF;
    failed.nPctrl = OPC_POWER_OFF;
    writer.add(failed);
    writer.flush();
    EXPECT_EQ(TemporaryFolder::read(folder.path("run.csv")),
              HEADER + "1.500,3,TX_ON,10.00,10.12,9.87,10.17,10.16,-0.05,0,1,25.25,5000.500,73\n"
                       "1.506,3,TX_OFF,10.00,10.12,-99.00,10.17,10.16,-0.05,32768,1,25.25,5000.500,73\n");
    EXPECT_EQ(writer.rowsWritten(), 2U);
    EXPECT_EQ(writer.error(), "");
}

TEST(CsvWriter, ReplacesWhatTheFileHeld)
{
    const TemporaryFolder folder;
    const std::string sPath = folder.write("run.csv", std::string(10000, 'x'));
    CsvWriter writer(sPath);
    EXPECT_EQ(TemporaryFolder::read(sPath).size(), 10000U); // not before it begins
    writer.begin();
    EXPECT_EQ(TemporaryFolder::read(sPath), HEADER);
}

TEST(CsvWriter, ReplacesAFileThatDoesNotFit31Bits)
{
    static_assert(sizeof(off_t) == sizeof(std::int64_t), "files may grow beyond 2 GiB");
    const TemporaryFolder folder;
    const std::string sPath = folder.write("run.csv", "");
    ASSERT_EQ(truncate(sPath.c_str(), off_t{3} * 1024 * 1024 * 1024), 0); // a hole, which takes no space
    CsvWriter writer(sPath);
    writer.begin();
    EXPECT_EQ(writer.error(), "");
    struct stat information = {};
    ASSERT_EQ(stat(sPath.c_str(), &information), 0);
    EXPECT_EQ(information.st_size, static_cast<off_t>(HEADER.size()));
}

TEST(CsvWriter, WritesWhatIsLeftWhenItGoes)
{
    const TemporaryFolder folder;
    constexpr int ROWS = 3000; // more than it gathers before it writes
    {
        CsvWriter writer(folder.path("run.csv"));
        writer.begin();
        for (int nRow = 0; nRow < ROWS; ++nRow) {
            writer.add(makeSample());
        }
    }
    const std::string sText = TemporaryFolder::read(folder.path("run.csv"));
    EXPECT_EQ(std::count(sText.begin(), sText.end(), '\n'), ROWS + 1);
}

TEST(CsvWriter, LeavesNoFileBehindThatWasNeverBegun)
{
    const TemporaryFolder folder;
    const std::string sOlder = folder.write("older.csv", "kept\n");
    {
        const CsvWriter newFile(folder.path("new.csv"));
        const CsvWriter olderFile(sOlder);
        EXPECT_TRUE(std::filesystem::exists(folder.path("new.csv")));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path("new.csv")));
    EXPECT_EQ(TemporaryFolder::read(sOlder), "kept\n");
}

TEST(CsvWriter, RefusesAFileThatCannotBeOpened)
{
    try {
        const CsvWriter writer("/nowhere/run.csv");
        FAIL() << "opened";
    }
    catch (const ConfigurationError& error) {
        EXPECT_STREQ(error.what(), "/nowhere/run.csv: cannot record there: No such file or directory; name a file that "
                                   "can be written with --csv");
    }
}

TEST(CsvWriter, DoesNotWaitForTheReaderOfAPipe)
{
    const TemporaryFolder folder;
    const std::string sPipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(sPipe.c_str(), 0600), 0);
    EXPECT_THROW(CsvWriter{sPipe}, ConfigurationError);
    EXPECT_TRUE(std::filesystem::exists(sPipe));
}

TEST(CsvWriter, StopsAtAWriteErrorAndKeepsTheFirst)
{
    CsvWriter writer("/dev/full");
    writer.begin();
    EXPECT_EQ(writer.error(), "/dev/full: cannot write to it: No space left on device; recording has stopped");
    writer.add(makeSample());
    writer.flush();
    EXPECT_EQ(writer.rowsWritten(), 0U);
    EXPECT_THAT(writer.error(), testing::HasSubstr("No space left"));
}
