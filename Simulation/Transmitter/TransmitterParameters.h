/** @file
 * What a simulated transmitter is made of.
 */
#pragma once

#include <array>
#include <string>

/** Parameters of a transmitter; the defaults are typical published values. Powers in dBm, gains in dB. */
struct TransmitterParameters
{
    double maxPowerDbm = 30.0;  /**< upper limit of the control power */
    double minPowerDbm = -10.0; /**< lower limit of the control power */

    double amplifierCount = 6.0;              /**< gain blocks, 0 to 6 */
    double chainGainDb = 33.0;                /**< gain of the whole chain with nothing reduced */
    double maxReductionPerAmplifierDb = 12.0; /**< how far one amplifier's gain can be reduced */
    double actuatorStepDb = 0.01;             /**< resolution of the gain setting; 0 for continuous */

    double psatAboveMaxDb = 3.0; /**< saturated power above maxPowerDbm */
    double rappP = 2.5;          /**< smoothness of the Rapp compression */

    double gainPerDegreeDb = -0.05;        /**< gain drift per degree Celsius away from 25 degrees */
    double selfHeatingDegrees = 15.0;      /**< warming of the amplifiers above their surroundings when on */
    double selfHeatingSeconds = 60.0;      /**< time constant of that warming */
    double referenceFrequencyMhz = 5000.0; /**< frequency at which the chain gain holds */
    double gainPerGhzDb = -0.5;            /**< gain slope over frequency */

    double detectorOffsetDb = 0.0;
    double detectorStepDb = 0.028;         /**< quantisation of the reading; 0 for continuous */
    double detectorNoiseDb = 0.02;         /**< rms of the reading's noise */
    double detectorFloorBelowMaxDb = 40.0; /**< the reading's floor below maxPowerDbm */
    double detectorDriftPerDegreeDb = 0.0; /**< drift of the reading per degree Celsius away from 25 degrees */
};

/** One parameter as a person sets it. */
struct TransmitterKey
{
    const char* pName;                     /**< key in a configuration file, unit included */
    double TransmitterParameters::*pField; /**< where its value goes */
    double minimum;
    double maximum;
    const char* pMeaning; /**< one line for help texts */
};

/** Number of keys in transmitterKeys(). */
inline constexpr std::size_t TRANSMITTER_KEY_COUNT = 18;

/** @return every parameter with its allowed range, in the order of TransmitterParameters */
const std::array<TransmitterKey, TRANSMITTER_KEY_COUNT>& transmitterKeys();
