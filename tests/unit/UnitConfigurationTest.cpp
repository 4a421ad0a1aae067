#include "Unit/Configuration/UnitConfiguration.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Process/ModuleLibrary.h"
#include "tests/unit/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace
{
const char* const MODULE = "[[module]]\nname = \"A\"\nlibrary = \"libA.so\"\n";

UnitConfiguration loadUnitFile(const TemporaryFolder& folder, const std::string& sText)
{
    return loadUnitConfiguration(folder.write("unit.toml", sText));
}

std::string refusalOf(const UnitConfiguration& configuration)
{
    try {
        checkChannelsAreApart(configuration);
    }
    catch (const ConfigurationError& error) {
        return error.what();
    }
    return "not refused";
}
} // namespace

TEST(UnitConfiguration, HasDefaultsForAllButModulesAndChannels)
{
    const TemporaryFolder folder;
    const UnitConfiguration unit = loadUnitFile(folder, std::string(MODULE) + "[[channel]]\nnumber = 0\n");
    EXPECT_EQ(unit.intervalMs, 6U);
    EXPECT_EQ(unit.temperatureDegrees, 25.0);
    ASSERT_EQ(unit.modules.size(), 1U);
    EXPECT_EQ(unit.modules[0].eScope, EModuleScope::Channel);
    EXPECT_EQ(unit.modules[0].nLine, 1U);
    EXPECT_EQ(unit.sStorageFile, "");
    EXPECT_EQ(unit.profile.sFile, "");
    EXPECT_EQ(unit.trace.nDefaultLevel, 1);
    EXPECT_TRUE(unit.trace.bSystemLog);
    ASSERT_EQ(unit.channels.size(), 1U);
    const ChannelConfiguration& channel = unit.channels[0];
    EXPECT_EQ(channel.nPowerMode, 1);
    EXPECT_EQ(channel.txPminDbm, -10.0);
    EXPECT_EQ(channel.txPmaxDbm, 30.0);
    EXPECT_EQ(channel.requestedPowerDbm, 10.0);
    EXPECT_EQ(channel.frequencyMhz, 5000.0);
    EXPECT_FALSE(channel.gainPercentOn);
    EXPECT_FALSE(channel.bProductionTest);
    EXPECT_EQ(channel.nSeed, 1U);
}

TEST(UnitConfiguration, ReadsEveryKeyOfTheUnit)
{
    const TemporaryFolder folder;
    const UnitConfiguration unit =
        loadUnitFile(folder, "[unit]\ninterval_ms = 12\nrealtime_priority = 30\ntemperature_c = -5\n"
                             "[[module]]\nname = \"A\"\nlibrary = \"libA.so\"\nscope = \"unit\"\n"
                             "[storage]\nfile = \"s.toml\"\n"
                             "[[calibration]]\nname = \"T\"\nfile = \"/c/t.csv\"\n"
                             "[trace]\ndefault = 5\nsystem_log = false\n\"RQX.OPC\" = 7\n"
                             "system_log_facility = \"local0\"\nsystem_log_severity = \"notice\"\n"
                             "[profile]\nfile = \"p.csv\"\nrequested_power = \"linear\"\n"
                             "temperature = \"held\"\nfrequency = \"linear\"\n"
                             "[[channel]]\nnumber = 0\n");
    EXPECT_EQ(unit.intervalMs, 12U);
    EXPECT_EQ(unit.nRealtimePriority, 30);
    EXPECT_EQ(unit.temperatureDegrees, -5.0);
    EXPECT_EQ(unit.modules[0].eScope, EModuleScope::Unit);
    EXPECT_EQ(unit.sStorageFile, folder.path("s.toml"));
    ASSERT_EQ(unit.calibrations.size(), 1U);
    EXPECT_EQ(unit.calibrations[0].sName, "T");
    EXPECT_EQ(unit.calibrations[0].sFile, "/c/t.csv");
    EXPECT_EQ(unit.trace.nDefaultLevel, 5);
    EXPECT_FALSE(unit.trace.bSystemLog);
    EXPECT_EQ(unit.trace.systemLog.nFacility, 16);
    EXPECT_EQ(unit.trace.systemLog.nSeverity, 5);
    ASSERT_EQ(unit.trace.levels.size(), 1U);
    EXPECT_EQ(unit.trace.levels[0].sGroup, "RQX.OPC");
    EXPECT_EQ(unit.trace.levels[0].nLevel, 7);
    EXPECT_EQ(unit.profile.sFile, folder.path("p.csv"));
    EXPECT_EQ(unit.profile.interpolation.eRequestedPower, EInterpolation::Linear);
    EXPECT_EQ(unit.profile.interpolation.eTemperature, EInterpolation::Held);
    EXPECT_EQ(unit.profile.interpolation.eFrequency, EInterpolation::Linear);
}

TEST(UnitConfiguration, ReadsTheTestInterface)
{
    const TemporaryFolder folder;
    const std::string sRest = std::string(MODULE) + "[[channel]]\nnumber = 0\n";
    const TestInterfaceConfiguration none = loadUnitFile(folder, sRest).testInterface;
    EXPECT_TRUE(none.bEnabled);
    EXPECT_EQ(none.sAddress, "127.0.0.1");
    EXPECT_EQ(none.nPort, 8080);
    EXPECT_EQ(none.sTokenFile, "");
    const TestInterfaceConfiguration all =
        loadUnitFile(folder,
                     "[test_interface]\nenabled = false\naddress = \"::1\"\nport = 0\ntoken_file = \"t\"\n" + sRest)
            .testInterface;
    EXPECT_FALSE(all.bEnabled);
    EXPECT_EQ(all.sAddress, "::1");
    EXPECT_EQ(all.nPort, 0);
    EXPECT_TRUE(std::filesystem::path(all.sTokenFile).is_absolute());
    EXPECT_EQ(std::filesystem::path(all.sTokenFile).filename(), "t");
}

TEST(UnitConfiguration, ReadsWhatIsRecorded)
{
    const TemporaryFolder folder;
    const std::string sRest = std::string(MODULE) + "[[channel]]\nnumber = 0\n";
    const RecorderConfiguration none = loadUnitFile(folder, sRest).recorder;
    EXPECT_EQ(none.sFile, "");
    EXPECT_EQ(none.stepsHours, 1.0);
    EXPECT_EQ(none.secondsHours, 24.0);
    EXPECT_EQ(none.minutesDays, 366.0);
    EXPECT_EQ(none.maxMb, 2048);
    const RecorderConfiguration all =
        loadUnitFile(folder, "[recorder]\nfile = \"r/u.db\"\nsteps_hours = 0.5\nseconds_hours = 2\n"
                             "minutes_days = 3\nmax_mb = 100\n" +
                                 sRest)
            .recorder;
    EXPECT_EQ(std::filesystem::path(all.sFile).parent_path().filename(), "r");
    EXPECT_TRUE(std::filesystem::path(all.sFile).is_absolute());
    EXPECT_EQ(all.stepsHours, 0.5);
    EXPECT_EQ(all.secondsHours, 2.0);
    EXPECT_EQ(all.minutesDays, 3.0);
    EXPECT_EQ(all.maxMb, 100);
}

TEST(UnitConfiguration, ReadsEveryKeyOfAChannel)
{
    const TemporaryFolder folder;
    const UnitConfiguration unit = loadUnitFile(
        folder, std::string(MODULE) + "[transmitter]\nseed = 40\nrapp_p = 3.0\ndetector_noise_db = 0.5\n"
                                      "[[channel]]\nnumber = 2\npower_mode = 0\ntx_pmin_dbm = -5.5\ntx_pmax_dbm = 20\n"
                                      "requested_power_dbm = 7.25\nfrequency_mhz = 23000.5\n"
                                      "gain_percent_ramping = 30\ngain_percent_on = [10, 20, 30]\n"
                                      "production_test = true\nloop_mode = 2\ntransmitter = { rapp_p = 4.0 }\n"
                                      "[[channel]]\nnumber = 3\ntransmitter = { seed = 7 }\n");
    ASSERT_EQ(unit.channels.size(), 2U);
    const ChannelConfiguration& channel = unit.channels[0];
    EXPECT_EQ(channel.nNumber, 2U);
    EXPECT_EQ(channel.nPowerMode, 0);
    EXPECT_EQ(channel.txPminDbm, -5.5);
    EXPECT_EQ(channel.txPmaxDbm, 20.0);
    EXPECT_EQ(channel.requestedPowerDbm, 7.25);
    EXPECT_EQ(channel.frequencyMhz, 23000.5);
    EXPECT_EQ(channel.gainPercentRamping, (GainPercent{30, 30, 30}));
    EXPECT_EQ(channel.gainPercentOn, (GainPercent{10, 20, 30}));
    EXPECT_TRUE(channel.bProductionTest);
    EXPECT_EQ(channel.nLoopMode, 2);
    EXPECT_EQ(channel.transmitter.rappP, 4.0);
    EXPECT_EQ(channel.transmitter.detectorNoiseDb, 0.5);
    EXPECT_EQ(channel.nSeed, 42U); // the common one and the channel's number
    EXPECT_EQ(unit.channels[1].transmitter.rappP, 3.0);
    EXPECT_EQ(unit.channels[1].nSeed, 7U);
}

TEST(UnitConfiguration, ReadsFaults)
{
    const TemporaryFolder folder;
    const UnitConfiguration unit =
        loadUnitFile(folder, std::string(MODULE) + "[[channel]]\nnumber = 4\n[[fault]]\nchannel = 4\n"
                                                   "operation = \"getPmeasured\"\nkind = \"wrong-value\"\ntimes = 5\n"
                                                   "value = -700\ndelay_us = 20\nat_s = 1.5\nfor_s = 0.25\n");
    ASSERT_EQ(unit.faults.size(), 1U);
    const FaultConfiguration& fault = unit.faults[0];
    EXPECT_EQ(fault.nChannel, 4U);
    EXPECT_EQ(fault.eOperation, EHandlerOperation::GetPmeasured);
    EXPECT_EQ(fault.fault.eKind, EHandlerFault::WrongValue);
    EXPECT_EQ(fault.fault.nTimes, 5U);
    EXPECT_EQ(fault.fault.nValue, -700);
    EXPECT_EQ(fault.fault.delayUs, 20U);
    EXPECT_EQ(fault.atSeconds, 1.5);
    EXPECT_EQ(fault.forSeconds, 0.25);
}

TEST(UnitConfiguration, OfTheExamplesIsGood)
{
    const UnitConfiguration unit = loadUnitConfiguration(OPC_EXAMPLES "/unit.toml");
    EXPECT_EQ(unit.modules.size(), 4U);
    EXPECT_EQ(unit.channels.size(), 2U);
    EXPECT_NO_THROW(checkChannelsAreApart(unit));
    EXPECT_NO_THROW(Profile(unit.profile.sFile, unit.profile.interpolation));
}

TEST(ChannelSelection, KeepsTheFirstAndTheirFaults)
{
    UnitConfiguration unit;
    for (const unsigned int nNumber : {0U, 1U, 2U}) {
        unit.channels.emplace_back().nNumber = nNumber;
        unit.faults.emplace_back().nChannel = nNumber;
    }
    selectChannels(unit, std::nullopt);
    EXPECT_EQ(unit.channels.size(), 3U);
    selectChannels(unit, 2U);
    EXPECT_EQ(unit.channels.size(), 2U);
    ASSERT_EQ(unit.faults.size(), 2U);
    EXPECT_EQ(unit.faults[1].nChannel, 1U);
    EXPECT_THROW(selectChannels(unit, 3U), ConfigurationError);
    EXPECT_THROW(selectChannels(unit, 0U), ConfigurationError);
}

TEST(ChannelsApart, AreRefusedWhenTwoMeetTheSameHandler)
{
    struct Case
    {
        std::vector<unsigned int> numbers;
        std::string sRefusal;
    };
    const std::vector<Case> cases = {
        {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, "not refused"},
        {{12}, "not refused"},
        {{12, 23}, "not refused"},
        {{1, 12},
         "u.toml:101: channels 1 and 12 would both meet the handler \"IOutputPowerHandler.1\"; choose numbers that "
         "differ in their first digit"},
        {{31, 4, 39},
         "u.toml:102: channels 31 and 39 would both meet the handler \"IOutputPowerHandler.3\"; choose numbers that "
         "differ in their first digit"},
        {{5, 5},
         "u.toml:101: channel 5 is listed twice, first in line 100; give each [[channel]] a number of its own"}};
    for (const Case& listed : cases) {
        UnitConfiguration unit;
        unit.sPath = "u.toml";
        for (const unsigned int nNumber : listed.numbers) {
            ChannelConfiguration& channel = unit.channels.emplace_back();
            channel.nNumber = nNumber;
            channel.nLine = 99 + unit.channels.size();
        }
        EXPECT_EQ(refusalOf(unit), listed.sRefusal) << testing::PrintToString(listed.numbers);
    }
}

TEST(Names, AreBuiltAsTheControllerLooksThemUp)
{
    EXPECT_EQ(outputPowerHandlerName(0), "IOutputPowerHandler.0");
    EXPECT_EQ(outputPowerHandlerName(12), "IOutputPowerHandler.1");
    EXPECT_EQ(channelInterfaceName("IFrequencyHandler_Tx", 0), "IFrequencyHandler_Tx");
    EXPECT_EQ(channelInterfaceName("IFrequencyHandler_Tx", 12), "IFrequencyHandler_Tx_12");
}

TEST(ModuleLibraryCandidates, AreTheFilesFolderTheBuildsTheInstallationsAndTheSystems)
{
    const std::string sPrefix = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path().string();
    const std::string sBuilt = sPrefix + "/lib/libA.so";
    const std::string sInstalled = sPrefix + "/" OPC_MODULE_FOLDER "/libA.so";
    EXPECT_THAT(moduleLibraryCandidates("/units", "libA.so"),
                testing::ElementsAre("/units/libA.so", sBuilt, sInstalled, "libA.so"));
    EXPECT_THAT(moduleLibraryCandidates("", "libA.so"),
                testing::ElementsAre("./libA.so", sBuilt, sInstalled, "libA.so"));
    EXPECT_THAT(moduleLibraryCandidates("/units", "more/libA.so"), testing::ElementsAre("/units/more/libA.so"));
    EXPECT_THAT(moduleLibraryCandidates("/units", "/lib/libA.so"), testing::ElementsAre("/lib/libA.so"));
}
