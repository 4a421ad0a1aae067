#include "Unit/Campaign/ScenarioRunner.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/ResultsCsv.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace
{
/** A folder with a unit file, a scenario for it, a drive beside the scenario and another one beside the sweep. */
class ScenarioRunnerTest : public testing::Test
{
protected:
    ScenarioRunnerTest()
    {
        std::filesystem::create_directories(m_folder.path("base"));
        std::filesystem::create_directories(m_folder.path("sweeps"));
        std::string sModules;
        for (const char* pName :
             {"TemperatureHandler", "FrequencyHandler", "OutputPowerHandler", "OutputPowerController"}) {
            sModules += std::string("[[module]]\nname = \"") + pName + "\"\nlibrary = \"" OPC_LIBRARY_FOLDER "/lib" +
                        pName + ".so\"\n" + (pName[0] == 'T' ? "scope = \"unit\"\n" : "");
        }
        m_folder.write("base/unit.toml", sModules + "[[channel]]\nnumber = 0\n");
        m_folder.write("base/drive.csv", "time_s,requested_power_dBm\n0,10\n");
        m_folder.write("sweeps/drive.csv", "time_s,requested_power_dBm\n0,10\n1,15\n");
        m_folder.write("base/base.toml",
                       "duration_s = 2\n[unit]\nfile = \"unit.toml\"\n[drive]\nfile = \"drive.csv\"\n"
                       "[transmitter]\ndetector_noise_db = 0.05\n[[event]]\nat_s = 0\nrequest = \"on\"\n");
        m_definition = parseSweepDefinition("[sweep]\nscenario = \"../base/base.toml\"\nmethod = \"grid\"\n"
                                            "[[parameter]]\npath = \"drive.file\"\nvalues = [\"drive.csv\"]\n",
                                            m_folder.path("sweeps/sweep.toml"));
    }

    TemporaryFolder m_folder;
    SweepDefinition m_definition;
};

const std::vector<ScenarioOverride> DRIVE_OF_SWEEP = {{"drive.file", "\"drive.csv\""}};
} // namespace

TEST_F(ScenarioRunnerTest, MakesTheSameRunForTheSameSeedAndNotForAnother)
{
    const ScenarioRunner runner(m_definition);
    const RunMeasures first = runner.run({}, 7);
    EXPECT_EQ(first.steps, 334.0);
    EXPECT_EQ(first.switchOns, 1.0);
    EXPECT_EQ(first.steadyRmsDb, runner.run({}, 7).steadyRmsDb);
    EXPECT_NE(first.steadyRmsDb, runner.run({}, 8).steadyRmsDb);
}

TEST_F(ScenarioRunnerTest, TakesFilesThatTheSweepNamesFromTheSweepsFolder)
{
    const ScenarioRunner runner(m_definition);
    EXPECT_EQ(runner.run({}, 1).jumps, 0.0);
    EXPECT_EQ(runner.run(DRIVE_OF_SWEEP, 1).jumps, 1.0);
}

TEST_F(ScenarioRunnerTest, NamesEveryFileThatARunUses)
{
    std::vector<std::string> roles;
    std::string sDrive;
    for (const CampaignInput& input : ScenarioRunner(m_definition).check(DRIVE_OF_SWEEP)) {
        roles.push_back(input.sRole);
        EXPECT_TRUE(std::filesystem::is_regular_file(input.sPath)) << input.sPath;
        sDrive = input.sRole == "drive" ? input.sPath : sDrive;
    }
    EXPECT_THAT(roles, testing::ElementsAre("scenario", "unit file", "drive", "module TemperatureHandler",
                                            "module FrequencyHandler", "module OutputPowerHandler",
                                            "module OutputPowerController"));
    EXPECT_EQ(sDrive, m_folder.path("sweeps/drive.csv"));
}

TEST_F(ScenarioRunnerTest, RefusesBadValuesAndModulesThatAreNotThere)
{
    EXPECT_THROW(ScenarioRunner(m_definition).check({{"channel.nonsense", "1"}}), ConfigurationError);
    const std::string sUnit = TemporaryFolder::read(m_folder.path("base/unit.toml"));
    m_folder.write("base/unit.toml", "[[module]]\nname = \"Nobody\"\nlibrary = \"./libNobody.so\"\n" + sUnit);
    EXPECT_THROW(ScenarioRunner(m_definition).tryStart({}, 1), ConfigurationError);
}

TEST_F(ScenarioRunnerTest, WritesResultsAsCommaSeparatedValues)
{
    CampaignDescription description;
    description.sSweepFile = "sweep.toml";
    description.sSweep = m_definition.sText;
    ResultRow well{0, 5, m_definition.parameters.front().values, "", {}};
    well.measures.steps = 334.0;
    well.measures.steadyRmsDb = 0.0125;
    {
        ResultsFile results = ResultsFile::openForRuns(m_folder.path("results.db"), description);
        results.add({well});
    }
    const std::string sCsv = m_folder.path("results.csv");
    writeResultsCsv(ResultsFile::openToRead(m_folder.path("results.db")), sCsv);
    const std::string sText = TemporaryFolder::read(sCsv);
    EXPECT_THAT(sText, testing::StartsWith("run,seed,drive.file,steps,failed_steps,"));
    EXPECT_THAT(sText, testing::HasSubstr(",error\n0,5,drive.csv,334,0,"));
    EXPECT_THAT(sText, testing::HasSubstr(",0.0125,"));
    EXPECT_THAT(sText, testing::EndsWith(",\n"));
}
