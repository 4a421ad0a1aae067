#include "Unit/Simulator/Scenario.h"

#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace
{
const char* const UNIT = "[unit]\ninterval_ms = 12\nrealtime_priority = 5\ntemperature_c = 40\n"
                         "[[module]]\nname = \"A\"\nlibrary = \"libA.so\"\n[storage]\nfile = \"s.toml\"\n"
                         "[[calibration]]\nname = \"T\"\nfile = \"t.csv\"\n[trace]\ndefault = 7\n"
                         "[profile]\nfile = \"p.csv\"\n[transmitter]\nrapp_p = 3.0\nseed = 40\n"
                         "[[channel]]\nnumber = 2\npower_mode = 0\ngain_percent_on = 30\n"
                         "[[channel]]\nnumber = 3\ntx_pmax_dbm = 20\n"
                         "[[fault]]\nchannel = 2\noperation = \"getPmeasured\"\nkind = \"fail\"\n";

Scenario load(const TemporaryFolder& folder, const std::string& sText,
              const std::vector<ScenarioOverride>& overrides = {})
{
    return loadScenario(folder.write("scenario.toml", "duration_s = 10\n" + sText), overrides);
}
} // namespace

TEST(Scenario, RunsTheStandardModulesWhenItNamesNoUnitFile)
{
    const TemporaryFolder folder;
    const Scenario scenario = load(folder, "");
    EXPECT_EQ(scenario.durationSeconds, 10.0);
    EXPECT_EQ(scenario.sTitle, "");
    EXPECT_EQ(scenario.unit.sFolder + "/", folder.path(""));
    EXPECT_EQ(scenario.unit.intervalMs, 6U);
    ASSERT_EQ(scenario.unit.modules.size(), 4U);
    EXPECT_EQ(scenario.unit.modules[0].sLibrary, "libTemperatureHandler.so");
    EXPECT_EQ(scenario.unit.modules[0].eScope, EModuleScope::Unit);
    EXPECT_EQ(scenario.unit.modules[3].sName, "OutputPowerController");
    EXPECT_EQ(scenario.unit.modules[3].eScope, EModuleScope::Channel);
    ASSERT_EQ(scenario.unit.channels.size(), 1U);
    EXPECT_EQ(scenario.channel().nNumber, 0U);
    EXPECT_EQ(scenario.channel().nSeed, 1U);
    EXPECT_EQ(scenario.unit.sStorageFile, "");
    EXPECT_TRUE(scenario.drive.sFile.empty());
    EXPECT_TRUE(scenario.events.empty());
    EXPECT_TRUE(scenario.expectations.empty());
    EXPECT_EQ(scenario.measures.eReference, EPowerReference::Target);
}

TEST(Scenario, TakesTheSameModulesAndDefaultsAsTheUnitOfTheExamples)
{
    const TemporaryFolder folder;
    const Scenario scenario = load(folder, "");
    const UnitConfiguration unit = loadUnitConfiguration(OPC_EXAMPLES "/unit.toml");
    ASSERT_EQ(scenario.unit.modules.size(), unit.modules.size());
    for (std::size_t nModule = 0; nModule < unit.modules.size(); ++nModule) {
        EXPECT_EQ(scenario.unit.modules[nModule].sName, unit.modules[nModule].sName);
        EXPECT_EQ(scenario.unit.modules[nModule].sLibrary, unit.modules[nModule].sLibrary);
        EXPECT_EQ(scenario.unit.modules[nModule].eScope, unit.modules[nModule].eScope);
    }
}

TEST(Scenario, KeepsModulesTablesAndTheFirstChannelOfAUnitFile)
{
    const TemporaryFolder folder;
    folder.write("unit.toml", UNIT);
    const Scenario scenario = load(folder, "[unit]\nfile = \"unit.toml\"\n");
    EXPECT_EQ(scenario.unit.intervalMs, 12U);
    EXPECT_EQ(scenario.unit.temperatureDegrees, 40.0);
    EXPECT_EQ(scenario.unit.modules.size(), 1U);
    EXPECT_EQ(scenario.unit.sStorageFile, folder.path("s.toml"));
    EXPECT_EQ(scenario.unit.calibrations.size(), 1U);
    ASSERT_EQ(scenario.unit.channels.size(), 1U);
    EXPECT_EQ(scenario.channel().nNumber, 2U);
    EXPECT_EQ(scenario.channel().nPowerMode, 0);
    EXPECT_EQ(scenario.channel().transmitter.rappP, 3.0);
    EXPECT_EQ(scenario.channel().nSeed, 42U);
    // What belongs to a unit that runs in its own time is gone.
    EXPECT_EQ(scenario.unit.nRealtimePriority, 0);
    EXPECT_TRUE(scenario.unit.faults.empty());
    EXPECT_TRUE(scenario.unit.profile.sFile.empty());
    EXPECT_FALSE(scenario.unit.testInterface.bEnabled);
    EXPECT_EQ(scenario.unit.trace.nDefaultLevel, 1);
    EXPECT_FALSE(scenario.unit.trace.bSystemLog);
}

TEST(Scenario, LaysItsOwnKeysOverThoseOfTheUnitFile)
{
    const TemporaryFolder folder;
    folder.write("unit.toml", UNIT);
    const Scenario scenario =
        load(folder, "title = \"T\"\ndescription = \"D\"\nseed = 9\n[unit]\nfile = \"unit.toml\"\ninterval_ms = 4\n"
                     "temperature_c = -3\n[channel]\nnumber = 3\ngain_percent_ramping = [1, 2, 3]\n"
                     "[transmitter]\ndetector_noise_db = 0.5\n");
    EXPECT_EQ(scenario.sTitle, "T");
    EXPECT_EQ(scenario.sDescription, "D");
    EXPECT_EQ(scenario.unit.intervalMs, 4U);
    EXPECT_EQ(scenario.unit.temperatureDegrees, -3.0);
    const ChannelConfiguration& channel = scenario.channel();
    EXPECT_EQ(channel.nNumber, 3U);
    EXPECT_EQ(channel.txPmaxDbm, 20.0);
    EXPECT_EQ(channel.gainPercentRamping, (GainPercent{1, 2, 3}));
    EXPECT_EQ(channel.transmitter.detectorNoiseDb, 0.5);
    EXPECT_EQ(channel.transmitter.rappP, 3.0);
    EXPECT_EQ(channel.nSeed, 9U);
}

TEST(Scenario, TakesItsOwnSeedBeforeTheTransmitters)
{
    const TemporaryFolder folder;
    EXPECT_EQ(load(folder, "[transmitter]\nseed = 5\n").channel().nSeed, 5U);
    EXPECT_EQ(load(folder, "seed = 6\n[transmitter]\nseed = 5\n").channel().nSeed, 6U);
    EXPECT_EQ(load(folder, "[channel]\nnumber = 7\n").channel().nSeed, 8U);
}

TEST(Scenario, ReadsEveryKeyOfAnEvent)
{
    const TemporaryFolder folder;
    const Scenario scenario = load(
        folder, "[[event]]\nat_s = 1\nlabel = \"L\"\nevery_s = 4\nrequest = \"on\"\npower_mode = 0\ntx_pmin_dbm = -5\n"
                "tx_pmax_dbm = 25\ngain_percent_ramping = 30\ngain_percent_on = [10, 20, 30]\nproduction_test = true\n"
                "loop_mode = 2\nrequested_power_dbm = 7.5\nfrequency_mhz = 6000\ntemperature_c = 50\n"
                "transmitter = { rapp_p = 4, detector_noise_db = 0.1 }\n"
                "[[event]]\nat_s = 1\nover_s = 9\nrequested_power_dbm = 1\n[[event]]\nat_s = 2\nrequest = \"off\"\n");
    ASSERT_EQ(scenario.events.size(), 3U);
    const ScenarioEvent& event = scenario.events[0];
    EXPECT_EQ(event.atSeconds, 1.0);
    EXPECT_EQ(event.overSeconds, 0.0);
    EXPECT_EQ(event.everySeconds, 4.0);
    EXPECT_EQ(event.sLabel, "L");
    EXPECT_EQ(event.on, true);
    EXPECT_EQ(event.nPowerMode, 0);
    EXPECT_EQ(event.txPminDbm, -5.0);
    EXPECT_EQ(event.txPmaxDbm, 25.0);
    EXPECT_EQ(event.gainPercentRamping, (GainPercent{30, 30, 30}));
    EXPECT_EQ(event.gainPercentOn, (GainPercent{10, 20, 30}));
    EXPECT_EQ(event.productionTest, true);
    EXPECT_EQ(event.nLoopMode, 2);
    EXPECT_EQ(event.requestedPowerDbm, 7.5);
    EXPECT_EQ(event.frequencyMhz, 6000.0);
    EXPECT_EQ(event.temperatureDegrees, 50.0);
    ASSERT_EQ(event.transmitter.size(), 2U);
    EXPECT_STREQ(event.transmitter[0].first->pName, "rapp_p");
    EXPECT_EQ(event.transmitter[0].second, 4.0);
    EXPECT_STREQ(event.transmitter[1].first->pName, "detector_noise_db");
    EXPECT_EQ(scenario.events[1].overSeconds, 9.0);
    EXPECT_FALSE(scenario.events[1].on);
    EXPECT_EQ(scenario.events[2].on, false);
}

TEST(Scenario, ReadsFaultsOfItsChannel)
{
    const TemporaryFolder folder;
    const Scenario scenario =
        load(folder, "[channel]\nnumber = 4\n[[fault]]\noperation = \"getPmeasured\"\nkind = \"intermittent\"\n"
                     "probability = 0.25\nat_s = 2\nfor_s = 30\n");
    ASSERT_EQ(scenario.unit.faults.size(), 1U);
    EXPECT_EQ(scenario.unit.faults[0].nChannel, 4U);
    EXPECT_EQ(scenario.unit.faults[0].fault.eKind, EHandlerFault::Intermittent);
    EXPECT_EQ(scenario.unit.faults[0].fault.probability, 0.25);
    EXPECT_EQ(scenario.unit.faults[0].forSeconds, 30.0);
}

TEST(Scenario, ReadsTheDriveFromItsOwnFolder)
{
    const TemporaryFolder folder;
    folder.write("d.csv", "time_s,temperature_C\n10,20\n20,30\n");
    const DriveConfiguration drive =
        load(folder, "[drive]\nfile = \"d.csv\"\nrequested_power = \"linear\"\ntemperature = \"held\"\nstart_s = 20\n"
                     "repeat = true\n")
            .drive;
    EXPECT_EQ(drive.sFile, folder.path("d.csv"));
    EXPECT_EQ(drive.interpolation.eRequestedPower, EInterpolation::Linear);
    EXPECT_EQ(drive.interpolation.eTemperature, EInterpolation::Held);
    EXPECT_EQ(drive.startSeconds, 20.0);
    EXPECT_TRUE(drive.bRepeat);
    EXPECT_NO_THROW(load(folder, "[drive]\nfile = \"d.csv\"\n")) << "without a start it begins before its first row";
}

TEST(Scenario, ReadsMeasuresAndEveryKindOfExpectation)
{
    const TemporaryFolder folder;
    const Scenario scenario =
        load(folder, "[measures]\nreference = \"requested\"\nsettling_band_db = 0.5\nemission_tolerance_db = 2\n"
                     "[expect]\nsteps = 1000\njumps = [2, 3.5]\nsettling_max_ms = { max = 150 }\n"
                     "overshoot_db = { min = -inf }\nlimit_cycle_db = \"none\"\n");
    EXPECT_EQ(scenario.measures.eReference, EPowerReference::Requested);
    EXPECT_EQ(scenario.measures.settlingBandDb, 0.5);
    EXPECT_EQ(scenario.measures.emissionToleranceDb, 2.0);
    ASSERT_EQ(scenario.expectations.size(), 5U);
    const double infinity = std::numeric_limits<double>::infinity();
    const auto band = [&scenario](const std::string& sName) {
        for (const MeasureBand& listed : scenario.expectations) {
            if (listed.pMeasure->pName == sName) {
                return std::make_pair(listed.minimum, listed.maximum);
            }
        }
        return std::make_pair(0.0, 0.0);
    };
    EXPECT_EQ(band("steps"), std::make_pair(1000.0, 1000.0));
    EXPECT_EQ(band("jumps"), std::make_pair(2.0, 3.5));
    EXPECT_EQ(band("settling_max_ms"), std::make_pair(-infinity, 150.0));
    EXPECT_EQ(band("overshoot_db"), std::make_pair(-infinity, infinity));
    EXPECT_TRUE(std::isnan(band("limit_cycle_db").first));
    EXPECT_TRUE(std::isnan(band("limit_cycle_db").second));
}
