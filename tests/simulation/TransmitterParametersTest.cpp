#include "Simulation/Transmitter/TransmitterParameters.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace
{
TEST(TransmitterKeys, HoldTheDefaultsWithinTheirRanges)
{
    const TransmitterParameters defaults;
    for (const TransmitterKey& key : transmitterKeys()) {
        EXPECT_LT(key.minimum, key.maximum) << key.pName;
        EXPECT_GE(defaults.*key.pField, key.minimum) << key.pName;
        EXPECT_LE(defaults.*key.pField, key.maximum) << key.pName;
        EXPECT_FALSE(std::string(key.pMeaning).empty()) << key.pName;
    }
}

TEST(TransmitterKeys, ReachEveryParameterOnceInTheOrderOfTheStructure)
{
    static_assert(sizeof(TransmitterParameters) == TRANSMITTER_KEY_COUNT * sizeof(double));
    TransmitterParameters parameters;
    std::set<std::string> names;
    const double* pExpected = &parameters.maxPowerDbm;
    for (const TransmitterKey& key : transmitterKeys()) {
        EXPECT_EQ(&(parameters.*key.pField), pExpected++) << key.pName;
        names.insert(key.pName);
    }
    EXPECT_EQ(names.size(), TRANSMITTER_KEY_COUNT);
}

TEST(TransmitterKeys, HaveUnitsInTheirNamesAndPhysicalRanges)
{
    const std::map<std::string, std::pair<double, double>> expected = {
        {"max_power_dbm", {-30.0, 60.0}},
        {"min_power_dbm", {-60.0, 60.0}},
        {"amplifier_count", {0.0, 6.0}},
        {"chain_gain_db", {-20.0, 80.0}},
        {"max_reduction_per_amplifier_db", {0.0, 40.0}},
        {"actuator_step_db", {0.0, 3.0}},
        {"psat_above_max_db", {-10.0, 30.0}},
        {"rapp_p", {0.5, 20.0}},
        {"gain_per_degree_db", {-0.5, 0.5}},
        {"self_heating_degrees", {0.0, 100.0}},
        {"self_heating_seconds", {0.1, 86400.0}},
        {"reference_frequency_mhz", {1.0, 200000.0}},
        {"gain_per_ghz_db", {-10.0, 10.0}},
        {"detector_offset_db", {-10.0, 10.0}},
        {"detector_step_db", {0.0, 3.0}},
        {"detector_noise_db", {0.0, 5.0}},
        {"detector_floor_below_max_db", {0.0, 100.0}},
        {"detector_drift_per_degree_db", {-0.5, 0.5}},
    };
    std::map<std::string, std::pair<double, double>> actual;
    for (const TransmitterKey& key : transmitterKeys()) {
        actual[key.pName] = {key.minimum, key.maximum};
    }
    EXPECT_EQ(actual, expected);
}
} // namespace
