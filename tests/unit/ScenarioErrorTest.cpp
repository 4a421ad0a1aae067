#include "Platform/ConfigurationError.h"
#include "Unit/Simulator/Scenario.h"
#include "tests/unit/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <ostream>

namespace
{
/** A scenario that is refused. In the texts, SHORT stands for a first line with a duration of 10 s, FOLDER for the
 * folder. */
struct BadScenario
{
    const char* pWhat;
    const char* pText;
    const char* pError; /**< after the file's path; whole when there is an override */
    const char* pOverride = nullptr;
};

const BadScenario BAD_SCENARIOS[] = {
    {"NoToml", "SHORT[unit\n", ":2:6: not valid TOML: Error while parsing table header: expected ']', saw '\\n'"},
    {"UnknownTable", "SHORT[transmiter]\n",
     ":2:2: unknown key \"transmiter\" in the file; did you mean transmitter? known keys: title, description, "
     "duration_s, seed, unit, channel, transmitter, drive, measures, event, fault, expect"},
    {"UnknownKeyOfUnit", "SHORT[unit]\nstorage = 1\n",
     ":3:1: unknown key \"storage\" in [unit]; known keys: file, interval_ms, temperature_c"},
    {"UnknownKeyOfChannel", "SHORT[channel]\ntransmitter = {}\n",
     ":3:1: unknown key \"transmitter\" in [channel]; known keys: number, power_mode, tx_pmin_dbm, tx_pmax_dbm, "
     "requested_power_dbm, frequency_mhz, gain_percent_ramping, gain_percent_on, production_test, loop_mode"},
    {"UnknownKeyOfTransmitter", "SHORT[transmitter]\ndetector_nois_db = 1\n",
     ":3:1: unknown key \"detector_nois_db\" in [transmitter]; did you mean detector_noise_db? known keys: seed, "
     "max_power_dbm, min_power_dbm, amplifier_count, chain_gain_db, max_reduction_per_amplifier_db, actuator_step_db, "
     "psat_above_max_db, rapp_p, gain_per_degree_db, self_heating_degrees, self_heating_seconds, "
     "reference_frequency_mhz, gain_per_ghz_db, detector_offset_db, detector_step_db, detector_noise_db, "
     "detector_floor_below_max_db, detector_drift_per_degree_db"},
    {"UnknownKeyOfDrive", "SHORT[drive]\nspeed = 1\n",
     ":3:1: unknown key \"speed\" in [drive]; known keys: file, requested_power, temperature, frequency, start_s, "
     "repeat"},
    {"UnknownKeyOfMeasures", "SHORT[measures]\nband = 1\n",
     ":3:1: unknown key \"band\" in [measures]; known keys: reference, settling_band_db, emission_tolerance_db"},
    {"UnknownKeyOfEvent", "SHORT[[event]]\nat = 1\n",
     ":3:1: unknown key \"at\" in [[event]]; known keys: at_s, label, every_s, over_s, request, power_mode, "
     "tx_pmin_dbm, tx_pmax_dbm, gain_percent_ramping, gain_percent_on, production_test, loop_mode, "
     "requested_power_dbm, frequency_mhz, temperature_c, transmitter"},
    {"UnknownKeyOfFault", "SHORT[[fault]]\nchannel = 1\n",
     ":3:1: unknown key \"channel\" in [[fault]]; known keys: operation, kind, times, value, delay_us, probability, "
     "at_s, for_s"},
    {"UnknownMeasure", "SHORT[expect]\nsettling_maximum_ms = 1\n",
     ":3:1: unknown key \"settling_maximum_ms\" in [expect]; did you mean settling_max_ms? known keys: steps, "
     "failed_steps, overruns, refused_calls, safety_violations, switch_ons, switch_ons_in_band, "
     "switch_on_to_1_db_ms, "
     "switch_on_to_0_1_db_ms, ramp_steps, switch_offs, switch_off_ms, radiating_off_s, jumps, jumps_settled, "
     "settling_mean_ms, settling_max_ms, overshoot_db, steady_steps, steady_mean_db, steady_rms_db, steady_p999_db, "
     "steady_max_db, limit_cycle_db, limit_cycle_ms, largest_pctrl_step_db, at_upper_clamp_s, at_lower_clamp_s, "
     "spurious_steps, spurious_max_db, outside_1_db_s, outside_2_db_s, detector_state_0_share, "
     "detector_state_1_share, detector_state_2_share, request_error_mean_db, request_error_max_db"},
    {"TitleAsNumber", "SHORTtitle = 3\n", ":2:9: title in the file is 3; it must be a text in quotes"},
    {"NoDuration", "title = \"x\"\n", ":1:1: the file has no key duration_s; add it"},
    {"DurationOfZero", "duration_s = 0\n",
     ":1:14: duration_s in the file is 0; it must be a number above 0, at most 1000000000"},
    {"DurationNegative", "duration_s = -1.5\n",
     ":1:14: duration_s in the file is -1.5; it must be a number above 0, at most 1000000000"},
    {"DurationNotANumber", "duration_s = nan\n",
     ":1:14: duration_s in the file is nan; it must be a number above 0, at most 1000000000"},
    {"DurationTooLong", "duration_s = 1000000001\n",
     ":1:14: duration_s in the file is 1000000001; it must be a number above 0, at most 1000000000"},
    {"DurationAsText", "duration_s = \"10\"\n",
     ":1:14: duration_s in the file is \"10\"; it must be a number above 0, at most 1000000000"},
    {"SeedNegative", "SHORTseed = -1\n",
     ":2:8: seed in the file is -1; it must be a whole number from 0 to 2147483647"},
    {"NoUnitFile", "SHORT[unit]\nfile = \"none.toml\"\n",
     ":3:8: file in [unit] is \"none.toml\"; it must be a file that can be read; there is none at FOLDERnone.toml"},
    {"IntervalOfZero", "SHORT[unit]\ninterval_ms = 0\n",
     ":3:15: interval_ms in [unit] is 0; it must be a whole number from 1 to 24"},
    {"TooHot", "SHORT[unit]\ntemperature_c = 201\n",
     ":3:17: temperature_c in [unit] is 201; it must be a number from -100 to 200"},
    {"ChannelThatTheUnitHasNot", "SHORT[unit]\nfile = \"unit.toml\"\n[channel]\nnumber = 4\n",
     ":5:10: number in [channel] is 4; it must be the number of a channel of FOLDERunit.toml, which are 2, 3"},
    {"PminAbovePmax", "SHORT[channel]\ntx_pmax_dbm = -20\n",
     ":3:15: tx_pmin_dbm in [channel] is -10, above tx_pmax_dbm, which is -20; lower it"},
    {"TransmitterLimitsCrossed", "SHORT[transmitter]\nmin_power_dbm = 30\n",
     ":3:17: the transmitter's lower limit of the control power is 30 dBm, not below the upper one of 30 dBm; set them "
     "apart"},
    {"TransmitterOutOfRange", "SHORT[transmitter]\nrapp_p = 0.4\n",
     ":3:10: rapp_p in [transmitter] is 0.4; it must be a number from 0.5 to 20"},
    {"DriveWithoutFile", "SHORT[drive]\nrepeat = true\n", ":2:1: [drive] has no key file; add it"},
    {"NoDriveFile", "SHORT[drive]\nfile = \"none.csv\"\n",
     ":3:8: file in [drive] is \"none.csv\"; it must be a file that can be read; there is none at FOLDERnone.csv"},
    {"DriveInterpolation", "SHORT[drive]\nfile = \"drive.csv\"\ntemperature = \"cubic\"\n",
     ":4:15: temperature in [drive] is \"cubic\"; it must be \"held\" or \"linear\""},
    {"DriveStartsBefore", "SHORT[drive]\nfile = \"drive.csv\"\nstart_s = 0\n",
     ":4:11: start_s in [drive] is 0; it must be a time of the drive, which goes from 10 s to 20 s"},
    {"DriveStartsBehind", "SHORT[drive]\nfile = \"drive.csv\"\nstart_s = 21\n",
     ":4:11: start_s in [drive] is 21; it must be a time of the drive, which goes from 10 s to 20 s"},
    {"DriveOfOneRowRepeated", "SHORT[drive]\nfile = \"row.csv\"\nrepeat = true\n",
     ":4:10: repeat in [drive] is true; it must be false for a drive of a single row"},
    {"ReferenceOfNoName", "SHORT[measures]\nreference = \"power\"\n",
     ":3:13: reference in [measures] is \"power\"; it must be \"target\" or \"requested\""},
    {"BandOfZero", "SHORT[measures]\nsettling_band_db = 0\n",
     ":3:20: settling_band_db in [measures] is 0; it must be a number from 0.001 to 20"},
    {"ToleranceNegative", "SHORT[measures]\nemission_tolerance_db = -1\n",
     ":3:25: emission_tolerance_db in [measures] is -1; it must be a number from 0 to 100"},
    {"EventWithoutTime", "SHORT[[event]]\nrequest = \"on\"\n", ":2:1: [[event]] has no key at_s; add it"},
    {"EventWithoutAnything", "SHORT[[event]]\nat_s = 1\nlabel = \"x\"\n",
     ":2:1: [[event]] says nothing that happens; add one or more of request, power_mode, tx_pmin_dbm, tx_pmax_dbm, "
     "gain_percent_ramping, gain_percent_on, production_test, loop_mode, requested_power_dbm, frequency_mhz, "
     "temperature_c, transmitter"},
    {"EventAtTheEnd", "SHORT[[event]]\nat_s = 10\nrequest = \"on\"\n",
     ":3:8: at_s in [[event]] is 10; it must be a number from 0 to below duration_s, which is 10"},
    {"EventBeforeTheBeginning", "SHORT[[event]]\nat_s = -1\nrequest = \"on\"\n",
     ":3:8: at_s in [[event]] is -1; it must be a number from 0 to 1000000000"},
    {"EventsOutOfOrder", "SHORT[[event]]\nat_s = 5\nrequest = \"on\"\n[[event]]\nat_s = 4.5\nrequest = \"off\"\n",
     ":6:8: at_s in [[event]] is 4.5 after 5 in the one before; order events by ascending time"},
    {"EveryZeroSeconds", "SHORT[[event]]\nat_s = 1\nevery_s = 0\nrequest = \"on\"\n",
     ":4:11: every_s in [[event]] is 0; it must be a number from 0.001 to 1000000000"},
    {"EveryLessThanOver", "SHORT[[event]]\nat_s = 1\nevery_s = 2\nover_s = 3\nfrequency_mhz = 5000\n",
     ":4:11: every_s in [[event]] is 2; it must be at least over_s, which is 3"},
    {"OverNegative", "SHORT[[event]]\nat_s = 1\nover_s = -3\nfrequency_mhz = 5000\n",
     ":4:10: over_s in [[event]] is -3; it must be a number from 0 to 1000000000"},
    {"OverWithARequest", "SHORT[[event]]\nat_s = 1\nover_s = 3\nfrequency_mhz = 5000\nrequest = \"on\"\n",
     ":6:11: request in [[event]] goes with over_s, but does not move; over_s goes with requested_power_dbm, "
     "frequency_mhz, temperature_c, transmitter only"},
    {"OverBeyondTheRun", "SHORT[[event]]\nat_s = 8\nover_s = 3\ntemperature_c = 5\n",
     ":4:10: over_s in [[event]] is 3 from 8 on, beyond duration_s, which is 10; it must be at most 2"},
    {"RequestOfNoWord", "SHORT[[event]]\nat_s = 1\nrequest = \"start\"\n",
     ":4:11: request in [[event]] is \"start\"; it must be \"on\" or \"off\""},
    {"PowerTooHigh", "SHORT[[event]]\nat_s = 1\nrequested_power_dbm = 101\n",
     ":4:23: requested_power_dbm in [[event]] is 101; it must be a number from -98 to 100"},
    {"FrequencyNegative", "SHORT[[event]]\nat_s = 1\nfrequency_mhz = -1\n",
     ":4:17: frequency_mhz in [[event]] is -1; it must be a number from 0 to 300000"},
    {"TooCold", "SHORT[[event]]\nat_s = 1\ntemperature_c = -101\n",
     ":4:17: temperature_c in [[event]] is -101; it must be a number from -100 to 200"},
    {"GainTooHigh", "SHORT[[event]]\nat_s = 1\ngain_percent_on = [20, 20, 1001]\n",
     ":4:28: gain_percent_on in [[event]] holds 1001; it must be a whole number from 0 to 1000"},
    {"LoopModeOfNoMeaning", "SHORT[[event]]\nat_s = 1\nloop_mode = 3\n",
     ":4:13: loop_mode in [[event]] is 3; it must be a whole number from 0 to 2"},
    {"ProductionTestAsNumber", "SHORT[[event]]\nat_s = 1\nproduction_test = 1\n",
     ":4:19: production_test in [[event]] is 1; it must be true or false"},
    {"SeedOfAnEvent", "SHORT[[event]]\nat_s = 1\ntransmitter = { seed = 1 }\n",
     ":4:17: unknown key \"seed\" in [transmitter]; known keys: max_power_dbm, min_power_dbm, amplifier_count, "
     "chain_gain_db, max_reduction_per_amplifier_db, actuator_step_db, psat_above_max_db, rapp_p, gain_per_degree_db, "
     "self_heating_degrees, self_heating_seconds, reference_frequency_mhz, gain_per_ghz_db, detector_offset_db, "
     "detector_step_db, detector_noise_db, detector_floor_below_max_db, detector_drift_per_degree_db"},
    {"EmptyTransmitter", "SHORT[[event]]\nat_s = 1\ntransmitter = {}\n",
     ":4:15: transmitter in [[event]] is an empty table; it must be a table with one or more keys of a transmitter"},
    {"EventCrossesLimits", "SHORT[[event]]\nat_s = 1\ntx_pmin_dbm = 31\n",
     ":4:15: [[event]] leaves tx_pmin_dbm at 31, above tx_pmax_dbm, which is 30; give both"},
    {"EventCrossesTransmitterLimits", "SHORT[[event]]\nat_s = 1\ntransmitter = { max_power_dbm = -10 }\n",
     ":4:33: the transmitter's lower limit of the control power is -10 dBm, not below the upper one of -10 dBm; set "
     "them apart"},
    {"RepeatedEventCrossesLimits",
     "SHORT[[event]]\nat_s = 1\nevery_s = 4\ntx_pmax_dbm = 5\n[[event]]\nat_s = 2\ntx_pmin_dbm = 10\ntx_pmax_dbm = "
     "20\n",
     ":5:15: [[event]] leaves tx_pmin_dbm at 10, above tx_pmax_dbm, which is 5; give both"},
    {"FaultBeyondTheRun", "SHORT[[fault]]\noperation = \"getPmeasured\"\nkind = \"fail\"\nat_s = 12\n",
     ":5:8: at_s in [[fault]] is 12; it must be a number from 0 to below duration_s, which is 10"},
    {"FaultForNoTime", "SHORT[[fault]]\noperation = \"getPmeasured\"\nkind = \"fail\"\nfor_s = 0\n",
     ":5:9: for_s in [[fault]] is 0; it must be a number above 0, at most 1000000000"},
    {"FaultOfNoKind", "SHORT[[fault]]\noperation = \"getPmeasured\"\nkind = \"broken\"\n",
     ":4:8: kind in [[fault]] is \"broken\"; it must be one of none, fail, fail-times, stuck, wrong-value, slow, "
     "intermittent"},
    {"FaultOfNoOperation", "SHORT[[fault]]\noperation = \"getPower\"\nkind = \"fail\"\n",
     ":3:13: operation in [[fault]] is \"getPower\"; it must be one of setOutputPower, setTxState, "
     "setProductionTestSettings, getReducedGainFromAmplifier, getTxPowerReadings, calculateDetectorUsage, "
     "getPmeasured, setZembraMlmTrafTx, getPctrlLimits"},
    {"ProbabilityAboveOne",
     "SHORT[[fault]]\noperation = \"getPmeasured\"\nkind = \"intermittent\"\nprobability = 1.5\n",
     ":5:15: probability in [[fault]] is 1.5; it must be a number from 0 to 1"},
    {"ExpectMinimumAboveMaximum", "SHORT[expect]\nsettling_max_ms = [150, 60]\n",
     ":3:19: settling_max_ms in [expect] has a minimum of 150, above its maximum of 60; exchange them"},
    {"ExpectListOfThree", "SHORT[expect]\nsettling_max_ms = [1, 2, 3]\n",
     ":3:19: settling_max_ms in [expect] is [1, 2, 3]; it must be a number, a list of a minimum and a maximum, a table "
     "with min or max, or \"none\""},
    {"ExpectOtherWord", "SHORT[expect]\nsettling_max_ms = \"nothing\"\n",
     ":3:19: settling_max_ms in [expect] is \"nothing\"; it must be a number, a list of a minimum and a maximum, a "
     "table with min or max, or \"none\""},
    {"ExpectNotANumber", "SHORT[expect]\nsettling_max_ms = nan\n",
     ":3:19: settling_max_ms in [expect] is nan; it must be a number, a list of a minimum and a maximum, a table with "
     "min or max, or \"none\""},
    {"ExpectEmptyTable", "SHORT[expect]\nsettling_max_ms = {}\n",
     ":3:19: settling_max_ms in [expect] is an empty table; it must be a number, a list of a minimum and a maximum, a "
     "table with min or max, or \"none\""},
    {"ExpectMaximumAsText", "SHORT[expect]\nsettling_max_ms = { max = \"5\" }\n",
     ":3:27: max in [settling_max_ms] is \"5\"; it must be a number"},
    {"OverriddenValue", "SHORT[transmitter]\nrapp_p = 2\n",
     "--set transmitter.rapp_p=99: rapp_p in [transmitter] is 99; it must be a number from 0.5 to 20",
     "transmitter.rapp_p=99"},
    {"OverriddenElement", "SHORT[channel]\ngain_percent_on = [1, 2, 3]\n",
     "--set channel.gain_percent_on.1=2000: gain_percent_on in [channel] holds 2000; it must be a whole number from 0 "
     "to 1000",
     "channel.gain_percent_on.1=2000"},
    {"OverriddenUnknownKey", "SHORT",
     "--set transmitter.rapp=2: unknown key \"rapp\" in [transmitter]; known keys: seed, max_power_dbm, min_power_dbm, "
     "amplifier_count, chain_gain_db, max_reduction_per_amplifier_db, actuator_step_db, psat_above_max_db, rapp_p, "
     "gain_per_degree_db, self_heating_degrees, self_heating_seconds, reference_frequency_mhz, gain_per_ghz_db, "
     "detector_offset_db, detector_step_db, detector_noise_db, detector_floor_below_max_db, "
     "detector_drift_per_degree_db",
     "transmitter.rapp=2"},
    {"OverriddenTable", "SHORT",
     "--set transmitter={ rapp_p = 0 }: rapp_p in [transmitter] is 0; it must be a number from 0.5 to 20",
     "transmitter={ rapp_p = 0 }"},
    {"OverriddenDuration", "SHORT\n[[event]]\nat_s = 5\nrequest = \"on\"\n",
     "--set duration_s=4: duration_s in the file is 4; it must be above at_s in [[event]] of line 3, which is 5",
     "duration_s=4"},
    {"OverriddenEarlierEvent", "SHORT[[event]]\nat_s = 1\nrequest = \"on\"\n[[event]]\nat_s = 2\nrequest = \"off\"\n",
     "--set event.0.at_s=3: at_s in [[event]] is 2 after 3 in the one before; order events by ascending time",
     "event.0.at_s=3"},
    {"OverriddenLimit", "SHORT[channel]\ntx_pmin_dbm = 5\n",
     "--set channel.tx_pmax_dbm=4: tx_pmin_dbm in [channel] is 5, above tx_pmax_dbm, which is 4; lower it",
     "channel.tx_pmax_dbm=4"},
    {"OverrideMakesATableWithoutItsKeys", "SHORT", "--set fault.0.kind=fail: [[fault]] has no key operation; add it",
     "fault.0.kind=fail"},
    {"OverrideBeyondAList", "SHORT[[event]]\nat_s = 1\nrequest = \"on\"\n",
     "--set event.2.at_s=3: \"2\" is no place in a list of 1; give 0 to 0, or 1 for a new one", "event.2.at_s=3"},
    {"OverrideOfAListByName", "SHORT[[event]]\nat_s = 1\nrequest = \"on\"\n",
     "--set event.first.at_s=3: \"first\" is no place in a list of 1; give 0 to 0, or 1 for a new one",
     "event.first.at_s=3"},
    {"OverrideIntoAValue", "SHORT",
     "--set duration_s.seconds=3: there is no seconds in a single value; give the place of a key of the file",
     "duration_s.seconds=3"},
    {"OverrideThatNeedsNoQuotes", "SHORT",
     "--set unit.interval_ms=six: interval_ms in [unit] is \"six\"; it must be a whole number from 1 to 24",
     "unit.interval_ms=six"},
};

void PrintTo(const BadScenario& scenario, std::ostream* pStream)
{
    *pStream << scenario.pWhat;
}

class BadScenarioFile : public testing::TestWithParam<BadScenario>
{
};

std::string replaced(std::string sText, const std::string& sMark, const std::string& sBy)
{
    for (auto nAt = sText.find(sMark); nAt != std::string::npos; nAt = sText.find(sMark)) {
        sText.replace(nAt, sMark.size(), sBy);
    }
    return sText;
}
} // namespace

TEST_P(BadScenarioFile, IsRefusedInOneLineWithPlaceWhatWasReadAndWhatIsAllowed)
{
    const TemporaryFolder folder;
    folder.write("drive.csv", "time_s,temperature_C\n10,20\n20,30\n");
    folder.write("row.csv", "time_s,temperature_C\n0,20\n");
    folder.write("unit.toml", "[[module]]\nname = \"A\"\nlibrary = \"a.so\"\n[[channel]]\nnumber = 2\n"
                              "[[channel]]\nnumber = 3\n");
    const std::string sPath = folder.write("scenario.toml", replaced(GetParam().pText, "SHORT", "duration_s = 10\n"));
    std::vector<ScenarioOverride> overrides;
    if (GetParam().pOverride != nullptr) {
        overrides.push_back(parseOverride(GetParam().pOverride));
    }
    try {
        loadScenario(sPath, overrides);
        FAIL() << "not refused";
    }
    catch (const ConfigurationError& error) {
        const std::string sPlace = GetParam().pOverride == nullptr ? sPath : "";
        EXPECT_EQ(error.what(), sPlace + replaced(GetParam().pError, "FOLDER", folder.path("")));
    }
}

INSTANTIATE_TEST_SUITE_P(Files, BadScenarioFile, testing::ValuesIn(BAD_SCENARIOS),
                         [](const auto& information) { return std::string(information.param.pWhat); });
