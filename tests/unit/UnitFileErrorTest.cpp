#include "Platform/ConfigurationError.h"
#include "Unit/Configuration/TomlTable.h"
#include "Unit/Configuration/UnitConfiguration.h"
#include "tests/unit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <ostream>

namespace
{
/** A unit file that is refused. In the text, MODULE stands for a complete module of three lines. */
struct BadFile
{
    const char* pWhat;
    const char* pText;
    const char* pError; /**< after the file's path */
};

const BadFile BAD_FILES[] = {
    {"Empty", "", ":1:1: lists no module; add [[module]] tables with name and library"},
    {"NoChannel", "MODULE", ":1:1: lists no channel; add a [[channel]] table with a number"},
    {"UnknownTable", "[units]\n",
     ":1:2: unknown key \"units\" in the file; did you mean unit? known keys: unit, module, storage, calibration, "
     "trace, test_interface, recorder, profile, transmitter, channel, fault"},
    {"UnknownKeyOfUnit", "[unit]\n\nintervall_ms = 6\n",
     ":3:1: unknown key \"intervall_ms\" in [unit]; did you mean interval_ms? known keys: interval_ms, "
     "realtime_priority, temperature_c"},
    {"UnknownKeyOfModule", "[[module]]\nname = \"A\"\nlib = \"x\"\n",
     ":3:1: unknown key \"lib\" in [[module]]; known keys: name, library, scope"},
    {"UnknownKeyOfProfile", "MODULE[profile]\nfile = \"p\"\npower = \"held\"\n",
     ":6:1: unknown key \"power\" in [profile]; known keys: file, requested_power, temperature, frequency"},
    {"UnknownKeyOfChannel", "MODULE[[channel]]\nnumber = 0\npmin = 3\n",
     ":6:1: unknown key \"pmin\" in [[channel]]; known keys: number, power_mode, tx_pmin_dbm, tx_pmax_dbm, "
     "requested_power_dbm, frequency_mhz, gain_percent_ramping, gain_percent_on, production_test, loop_mode, "
     "transmitter"},
    {"IntervalOfZero", "[unit]\ninterval_ms = 0\n",
     ":2:15: interval_ms in [unit] is 0; it must be a whole number from 1 to 24"},
    {"IntervalTooLong", "[unit]\ninterval_ms = 25\n",
     ":2:15: interval_ms in [unit] is 25; it must be a whole number from 1 to 24"},
    {"IntervalNotWhole", "[unit]\ninterval_ms = 6.5\n",
     ":2:15: interval_ms in [unit] is 6.5; it must be a whole number from 1 to 24"},
    {"IntervalAsText", "[unit]\ninterval_ms = \"6\"\n",
     ":2:15: interval_ms in [unit] is \"6\"; it must be a whole number from 1 to 24"},
    {"PriorityTooHigh", "[unit]\nrealtime_priority = 100\n",
     ":2:21: realtime_priority in [unit] is 100; it must be a whole number from 0 to 99"},
    {"TemperatureNotANumber", "[unit]\ntemperature_c = nan\n",
     ":2:17: temperature_c in [unit] is nan; it must be a number from -100 to 200"},
    {"UnitNotATable", "unit = 3\n", ":1:8: unit in the file is 3; it must be a table, written [unit]"},
    {"ModuleNotAList", "[module]\nname = \"A\"\n",
     ":1:1: module in the file is a table; it must be a list of tables, each written [[module]]"},
    {"ModuleWithoutName", "[[module]]\nlibrary = \"x\"\n", ":1:1: [[module]] has no key name; add it"},
    {"ModuleWithEmptyName", "[[module]]\nname = \"\"\nlibrary = \"x\"\n",
     ":2:8: name in [[module]] is \"\"; it must be a text that is not empty"},
    {"ModuleWithNumberAsName", "[[module]]\nname = 3\nlibrary = \"x\"\n",
     ":2:8: name in [[module]] is 3; it must be a text in quotes"},
    {"UnknownScope", "[[module]]\nname = \"A\"\nlibrary = \"x\"\nscope = \"all\"\n",
     ":4:9: scope in [[module]] is \"all\"; it must be \"channel\" or \"unit\""},
    {"StorageWithoutFile", "MODULE[storage]\n", ":4:1: [storage] has no key file; add it"},
    {"CalibrationWithoutFile", "MODULE[[calibration]]\nname = \"T\"\n",
     ":4:1: [[calibration]] has no key file; add it"},
    {"TraceLevelAsText", "MODULE[trace]\n\"RQX.OPC\" = \"all\"\n",
     ":5:13: RQX.OPC in [trace] is \"all\"; it must be a whole number from 0 to 9"},
    {"SystemLogAsNumber", "MODULE[trace]\nsystem_log = 1\n",
     ":5:14: system_log in [trace] is 1; it must be true or false"},
    {"PortTooHigh", "MODULE[test_interface]\nport = 65536\n",
     ":5:8: port in [test_interface] is 65536; it must be a whole number from 0 to 65535"},
    {"UnknownKeyOfTestInterface", "MODULE[test_interface]\ntoken = \"secret\"\n",
     ":5:1: unknown key \"token\" in [test_interface]; known keys: enabled, address, port, token_file"},
    {"UnknownKeyOfRecorder", "MODULE[recorder]\nmax_gb = 2\n",
     ":5:1: unknown key \"max_gb\" in [recorder]; did you mean max_mb? known keys: file, steps_hours, seconds_hours, "
     "minutes_days, max_mb"},
    {"RecordingTooSmall", "MODULE[recorder]\nmax_mb = 63\n",
     ":5:10: max_mb in [recorder] is 63; it must be a whole number from 64 to 10000000"},
    {"StepsTooShort", "MODULE[recorder]\nsteps_hours = 0.01\n",
     ":5:15: steps_hours in [recorder] is 0.01; it must be a number from 0.02 to 8760"},
    {"AddressAsNumber", "MODULE[test_interface]\naddress = 127\n",
     ":5:11: address in [test_interface] is 127; it must be a text in quotes"},
    {"EnabledAsNumber", "MODULE[test_interface]\nenabled = 0\n",
     ":5:11: enabled in [test_interface] is 0; it must be true or false"},
    {"FacilityOfNoName", "MODULE[trace]\nsystem_log_facility = 16\n",
     ":5:23: system_log_facility in [trace] is 16; it must be a text in quotes"},
    {"UnknownFacility", "MODULE[trace]\nsystem_log_facility = \"local8\"\n",
     ":5:23: system_log_facility in [trace] is \"local8\"; it must be one of user, mail, daemon, auth, syslog, lpr, "
     "news, uucp, cron, authpriv, ftp, ntp, audit, alert, clock, local0, local1, local2, local3, local4, local5, "
     "local6, local7"},
    {"FacilityOfTheKernel", "MODULE[trace]\nsystem_log_facility = \"kern\"\n",
     ":5:23: system_log_facility in [trace] is \"kern\"; it must be one of user, mail, daemon, auth, syslog, lpr, "
     "news, uucp, cron, authpriv, ftp, ntp, audit, alert, clock, local0, local1, local2, local3, local4, local5, "
     "local6, local7"},
    {"UnknownSeverity", "MODULE[trace]\n\"RQX.OPC\" = 4\nsystem_log_severity = \"warn\"\n",
     ":6:23: system_log_severity in [trace] is \"warn\"; it must be one of emerg, alert, crit, err, warning, notice, "
     "info, debug"},
    {"UnknownInterpolation", "MODULE[profile]\nfile = \"p\"\ntemperature = \"cubic\"\n",
     ":6:15: temperature in [profile] is \"cubic\"; it must be \"held\" or \"linear\""},
    {"TransmitterOutOfRange", "MODULE[transmitter]\namplifier_count = 7\n",
     ":5:19: amplifier_count in [transmitter] is 7; it must be a number from 0 to 6"},
    {"TransmitterLimitsCrossed", "MODULE[transmitter]\nmax_power_dbm = -20\n",
     ":5:17: the transmitter's lower limit of the control power is -10 dBm, not below the upper one of -20 dBm; set "
     "them apart"},
    {"ChannelWithoutNumber", "MODULE[[channel]]\npower_mode = 1\n", ":4:1: [[channel]] has no key number; add it"},
    {"NegativeChannel", "MODULE[[channel]]\nnumber = -1\n",
     ":5:10: number in [[channel]] is -1; it must be a whole number from 0 to 2147483647"},
    {"PminUnknown", "MODULE[[channel]]\nnumber = 0\ntx_pmin_dbm = -100\n",
     ":6:15: tx_pmin_dbm in [[channel]] is -100; it must be a number from -98 to 100"},
    {"PminAbovePmax", "MODULE[[channel]]\nnumber = 0\ntx_pmin_dbm = 20\ntx_pmax_dbm = 10\n",
     ":6:15: tx_pmin_dbm in [[channel]] is 20, above tx_pmax_dbm, which is 10; lower it"},
    {"GainsOfTwo", "MODULE[[channel]]\nnumber = 0\ngain_percent_on = [20, 20]\n",
     ":6:19: gain_percent_on in [[channel]] is [20, 20]; it must be a whole number or a list of 3"},
    {"GainAsText", "MODULE[[channel]]\nnumber = 0\ngain_percent_on = [20, 20, \"20\"]\n",
     ":6:28: gain_percent_on in [[channel]] holds \"20\"; it must be a whole number from 0 to 1000"},
    {"FaultOfNoChannel",
     "MODULE[[channel]]\nnumber = 0\n[[fault]]\nchannel = 1\noperation = \"getPmeasured\"\nkind = \"fail\"\n",
     ":7:11: [[fault]] is for channel 1, which the file does not list; use the number of a [[channel]]"},
    {"FaultOfNoOperation",
     "MODULE[[channel]]\nnumber = 0\n[[fault]]\nchannel = 0\noperation = \"getPower\"\nkind = \"fail\"\n",
     ":8:13: operation in [[fault]] is \"getPower\"; it must be one of setOutputPower, setTxState, "
     "setProductionTestSettings, getReducedGainFromAmplifier, getTxPowerReadings, calculateDetectorUsage, "
     "getPmeasured, setZembraMlmTrafTx, getPctrlLimits"},
    {"FaultOfNoKind",
     "MODULE[[channel]]\nnumber = 0\n[[fault]]\nchannel = 0\noperation = \"getPmeasured\"\nkind = \"broken\"\n",
     ":9:8: kind in [[fault]] is \"broken\"; it must be one of none, fail, fail-times, stuck, wrong-value, slow, "
     "intermittent"},
};

void PrintTo(const BadFile& file, std::ostream* pStream)
{
    *pStream << file.pWhat;
}

class BadUnitFile : public testing::TestWithParam<BadFile>
{
};
} // namespace

TEST_P(BadUnitFile, IsRefusedWithFileLineAndRemedy)
{
    const TemporaryFolder folder;
    std::string sText = GetParam().pText;
    const std::string sMark = "MODULE";
    if (const auto nAt = sText.find(sMark); nAt != std::string::npos) {
        sText.replace(nAt, sMark.size(), "[[module]]\nname = \"A\"\nlibrary = \"libA.so\"\n");
    }
    const std::string sPath = folder.write("unit.toml", sText);
    try {
        loadUnitConfiguration(sPath);
        FAIL() << "not refused";
    }
    catch (const ConfigurationError& error) {
        EXPECT_EQ(error.what(), sPath + GetParam().pError);
    }
}

INSTANTIATE_TEST_SUITE_P(Files, BadUnitFile, testing::ValuesIn(BAD_FILES),
                         [](const auto& information) { return std::string(information.param.pWhat); });

TEST(UnitFile, ThatIsNotThereIsRefused)
{
    try {
        loadUnitConfiguration("/nowhere/unit.toml");
        FAIL() << "not refused";
    }
    catch (const ConfigurationError& error) {
        EXPECT_STREQ(error.what(), "/nowhere/unit.toml: cannot be read (No such file or directory); give the path of a "
                                   "file that this user may read");
    }
}

TEST(UnitFile, ThatIsAFolderIsRefused)
{
    try {
        loadUnitConfiguration("/tmp");
        FAIL() << "not refused";
    }
    catch (const ConfigurationError& error) {
        EXPECT_STREQ(error.what(),
                     "/tmp: cannot be read (Is a directory); give the path of a file that this user may read");
    }
}

TEST(UnitFile, WithAKeyOfVeryManyPartsIsRefused)
{
    std::string sKey = "a";
    for (int nPart = 0; nPart < 300'000; ++nPart) {
        sKey += ".a";
    }
    try {
        (void)parseToml("[unit]\n" + sKey + " = 1\n", "unit.toml");
        FAIL() << "not refused";
    }
    catch (const ConfigurationError& error) {
        EXPECT_STREQ(error.what(),
                     "unit.toml:2: a key has more than 32 parts; write a name that has dots in quotation marks");
    }
}
