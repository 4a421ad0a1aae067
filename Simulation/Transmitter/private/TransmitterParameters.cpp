#include "Simulation/Transmitter/TransmitterParameters.h"

const std::array<TransmitterKey, TRANSMITTER_KEY_COUNT>& transmitterKeys()
{
    using P = TransmitterParameters;
    static const std::array<TransmitterKey, TRANSMITTER_KEY_COUNT> s_keys = {{
        {"max_power_dbm", &P::maxPowerDbm, -30.0, 60.0, "upper limit of the control power"},
        {"min_power_dbm", &P::minPowerDbm, -60.0, 60.0, "lower limit of the control power"},
        {"amplifier_count", &P::amplifierCount, 0.0, 6.0, "number of amplifiers whose gain is set"},
        {"chain_gain_db", &P::chainGainDb, -20.0, 80.0, "gain of the whole chain with nothing reduced"},
        {"max_reduction_per_amplifier_db", &P::maxReductionPerAmplifierDb, 0.0, 40.0,
         "how far one amplifier's gain can be reduced"},
        {"actuator_step_db", &P::actuatorStepDb, 0.0, 3.0, "resolution of the gain setting, 0 for continuous"},
        {"psat_above_max_db", &P::psatAboveMaxDb, -10.0, 30.0, "saturated power above the upper limit"},
        {"rapp_p", &P::rappP, 0.5, 20.0, "smoothness of the compression, higher is more abrupt"},
        {"gain_per_degree_db", &P::gainPerDegreeDb, -0.5, 0.5, "gain drift per degree Celsius away from 25 degrees"},
        {"self_heating_degrees", &P::selfHeatingDegrees, 0.0, 100.0,
         "warming of the amplifiers above their surroundings when on"},
        {"self_heating_seconds", &P::selfHeatingSeconds, 0.1, 86400.0, "time constant of the warming"},
        {"reference_frequency_mhz", &P::referenceFrequencyMhz, 1.0, 200000.0,
         "frequency at which the chain gain holds"},
        {"gain_per_ghz_db", &P::gainPerGhzDb, -10.0, 10.0, "gain slope over frequency"},
        {"detector_offset_db", &P::detectorOffsetDb, -10.0, 10.0, "constant error of the power reading"},
        {"detector_step_db", &P::detectorStepDb, 0.0, 3.0, "quantisation of the power reading, 0 for continuous"},
        {"detector_noise_db", &P::detectorNoiseDb, 0.0, 5.0, "rms noise of the power reading"},
        {"detector_floor_below_max_db", &P::detectorFloorBelowMaxDb, 0.0, 100.0,
         "lowest power reading, below the upper limit"},
        {"detector_drift_per_degree_db", &P::detectorDriftPerDegreeDb, -0.5, 0.5,
         "drift of the power reading per degree Celsius away from 25 degrees"},
    }};
    return s_keys;
}
