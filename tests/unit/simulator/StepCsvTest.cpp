#include "Unit/Simulator/StepCsv.h"

#include "tests/unit/TemporaryFolder.h"
#include "tests/unit/simulator/VirtualSteps.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <sstream>
#include <vector>

namespace
{
std::vector<std::string> linesOf(const std::string& sPath)
{
    std::istringstream stream(TemporaryFolder::read(sPath));
    std::vector<std::string> lines;
    for (std::string sLine; std::getline(stream, sLine);) {
        lines.push_back(sLine);
    }
    return lines;
}

/** @return a row's cells by the names of its columns */
std::map<std::string, std::string> cellsOf(const std::vector<std::string>& lines, std::size_t nLine)
{
    std::istringstream names(lines.at(0));
    std::istringstream values(lines.at(nLine) + ",");
    std::map<std::string, std::string> cells;
    for (std::string sName; std::getline(names, sName, ',');) {
        std::getline(values, cells[sName], ',');
    }
    return cells;
}

VirtualStep offStep(std::uint64_t nTimeUs)
{
    VirtualStep step = makeStep(nTimeUs);
    step.sample.nStateBefore = eOPC_TX_OFF;
    step.sample.nState = eOPC_TX_OFF;
    step.sample.nPctrl = OPC_POWER_OFF;
    step.sample.nPmeasured = OPC_POWER_UNKNOWN;
    step.outputPowerDbm = -std::numeric_limits<double>::infinity();
    return step;
}
} // namespace

TEST(StepCsv, HasARowPerStepWithTheTruePowerAndTheClampsLast)
{
    const TemporaryFolder folder;
    StepCsv csv(folder.path("run.csv"), {});
    csv.onStep(makeStep(1'500'000));
    csv.onStep(offStep(1'506'000));
    csv.finish();
    EXPECT_EQ(csv.rows(), 2U);
    const auto lines = linesOf(folder.path("run.csv"));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0],
              "time_s,channel,state,requested_power_dBm,ptarget_dBm,pctrl_dBm,pmeasured_dBm,ppredicted_dBm,error_dB,"
              "result,detector_state,temperature_C,frequency_MHz,lateness_us,output_power_dBm,lower_clamp_dBm,"
              "upper_clamp_dBm");
    EXPECT_EQ(lines[1], "1.500,3,TX_ON,10.00,10.12,9.87,10.17,10.16,-0.05,0,1,25.25,5000.500,73,10.0000,-5.00,20.00");
    EXPECT_EQ(cellsOf(lines, 2)["output_power_dBm"], "-99.0000") << "stands for off, as in every recording";
}

TEST(StepCsv, TakesTheFirstOfSoManySteps)
{
    const TemporaryFolder folder;
    StepCsv csv(folder.path("run.csv"), {.nEvery = 10, .bucketSeconds = {}});
    for (std::uint64_t nStep = 0; nStep < 25; ++nStep) {
        csv.onStep(makeStep(nStep * 6000));
    }
    csv.finish();
    const auto lines = linesOf(folder.path("run.csv"));
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(cellsOf(lines, 1)["time_s"], "0.000");
    EXPECT_EQ(cellsOf(lines, 2)["time_s"], "0.060");
    EXPECT_EQ(cellsOf(lines, 3)["time_s"], "0.120");
}

TEST(StepCsv, HasMinimumMeanAndMaximumPerBucketOfTime)
{
    const TemporaryFolder folder;
    StepCsv csv(folder.path("run.csv"), {.nEvery = 1, .bucketSeconds = 0.018});
    for (std::uint64_t nStep = 0; nStep < 7; ++nStep) {
        VirtualStep step = makeStep(nStep * 6000);
        step.sample.nPctrl = static_cast<std::int32_t>(1000 + 30 * nStep);
        csv.onStep(step);
    }
    csv.finish();
    const auto lines = linesOf(folder.path("run.csv"));
    ASSERT_EQ(lines.size(), 4U);
    auto cells = cellsOf(lines, 2);
    EXPECT_EQ(cells["time_s"], "0.018");
    EXPECT_EQ(cells["steps"], "3");
    EXPECT_EQ(cells["failed_steps"], "0");
    EXPECT_EQ(cells["state"], "TX_ON");
    EXPECT_EQ(cells["pctrl_min_dBm"], "10.90");
    EXPECT_EQ(cells["pctrl_mean_dBm"], "11.2000");
    EXPECT_EQ(cells["pctrl_max_dBm"], "11.50");
    EXPECT_EQ(cells["output_error_min_dB"], "-0.1200");
    EXPECT_EQ(cells["frequency_mean_MHz"], "5000.50000");
    EXPECT_EQ(cellsOf(lines, 3)["steps"], "1") << "the last bucket has what is left";
}

TEST(StepCsv, LeavesOutOfABucketWhatIsOffOrFailed)
{
    const TemporaryFolder folder;
    StepCsv csv(folder.path("run.csv"), {.nEvery = 1, .bucketSeconds = 1.0});
    csv.onStep(offStep(0));
    csv.onStep(makeStep(6000));
    VirtualStep failed = makeStep(12000);
    failed.sample.nResult = EAF_FAILED;
    failed.sample.nPowerError = 5000;
    csv.onStep(failed);
    csv.onStep(offStep(1'200'000));
    csv.finish();
    const auto lines = linesOf(folder.path("run.csv"));
    auto cells = cellsOf(lines, 1);
    EXPECT_EQ(cells["failed_steps"], "1");
    EXPECT_EQ(cells["pctrl_min_dBm"], "9.87");
    EXPECT_EQ(cells["output_power_mean_dBm"], "10.000000");
    EXPECT_EQ(cells["error_max_dB"], "-0.05");
    cells = cellsOf(lines, 2);
    EXPECT_EQ(cells["pctrl_mean_dBm"], "");
    EXPECT_EQ(cells["output_error_max_dB"], "");
    EXPECT_EQ(cells["requested_power_mean_dBm"], "10.0000");
}

TEST(StepCsv, LeavesNothingBehindWithoutAnEnd)
{
    const TemporaryFolder folder;
    {
        StepCsv csv(folder.path("run.csv"), {});
        csv.onStep(makeStep(0));
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("")));
}
