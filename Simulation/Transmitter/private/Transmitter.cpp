#include "Simulation/Transmitter/Transmitter.h"

#include "Simulation/Transmitter/Decibels.h"
#include "Simulation/Transmitter/RappAmplifier.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr double REFERENCE_DEGREES = 25.0;
constexpr double MHZ_PER_GHZ = 1000.0;

/** @return the multiple of a step that is nearest to a value; the value itself for a step of 0 */
double quantised(double value, double step)
{
    return step > 0.0 ? std::round(value / step) * step : value;
}
} // namespace

Transmitter::Transmitter(const TransmitterParameters& parameters, std::uint64_t nSeed)
    : m_parameters(parameters), m_knownChainGainDb(parameters.chainGainDb), m_controlPowerDbm(parameters.minPowerDbm),
      m_random(nSeed), m_noise(0.0, 1.0), m_frequencyMhz(parameters.referenceFrequencyMhz)
{
    derive();
    setControlPowerDbm(parameters.minPowerDbm);
}

void Transmitter::derive()
{
    m_nAmplifiers =
        static_cast<unsigned int>(std::clamp(std::round(m_parameters.amplifierCount), 0.0, double{MAX_AMPLIFIERS}));
    m_saturatedDbm = m_parameters.maxPowerDbm + m_parameters.psatAboveMaxDb;
    m_floorDbm = m_parameters.maxPowerDbm - m_parameters.detectorFloorBelowMaxDb;
    m_decaySeconds = 0.0;
}

void Transmitter::change(const TransmitterParameters& parameters)
{
    m_parameters = parameters;
    derive();
    setControlPowerDbm(m_controlPowerDbm);
}

void Transmitter::setControlPowerDbm(double controlPowerDbm)
{
    m_controlPowerDbm = controlPowerDbm;
    const double reductionDb = quantised(m_parameters.maxPowerDbm - controlPowerDbm, m_parameters.actuatorStepDb);

    double perAmplifierDb = 0.0;
    if (m_nAmplifiers > 0) {
        perAmplifierDb = std::clamp(reductionDb / m_nAmplifiers, 0.0, m_parameters.maxReductionPerAmplifierDb);
    }
    m_setting.gainReductionDb.fill(0.0);
    std::fill_n(m_setting.gainReductionDb.begin(), m_nAmplifiers, perAmplifierDb);

    const double takenDb = perAmplifierDb * m_nAmplifiers;
    m_setting.rfGainDb = m_parameters.chainGainDb - takenDb;
    // What the amplifiers could not take; negative above the upper limit, where the IF power has to rise.
    m_setting.ifPowerDbm = m_parameters.maxPowerDbm - m_knownChainGainDb - (reductionDb - takenDb);
}

void Transmitter::advance(double seconds)
{
    if (!(seconds > 0.0)) {
        return;
    }
    const double goal = m_bRadiating ? m_parameters.selfHeatingDegrees : 0.0;
    if (m_parameters.selfHeatingSeconds > 0.0) {
        if (seconds != m_decaySeconds) {
            m_decaySeconds = seconds;
            m_decay = -std::expm1(-seconds / m_parameters.selfHeatingSeconds);
        }
        m_selfHeatingDegrees += (goal - m_selfHeatingDegrees) * m_decay;
    }
    else {
        m_selfHeatingDegrees = goal;
    }
}

double Transmitter::outputPowerDbm() const
{
    if (!m_bRadiating) {
        return -std::numeric_limits<double>::infinity();
    }
    const double driftDb = m_parameters.gainPerDegreeDb * (amplifierDegrees() - REFERENCE_DEGREES);
    const double slopeDb =
        m_parameters.gainPerGhzDb * (m_frequencyMhz - m_parameters.referenceFrequencyMhz) / MHZ_PER_GHZ;
    const double linearDbm = m_setting.ifPowerDbm + m_setting.rfGainDb + driftDb + slopeDb;
    return rappOutputDbm(linearDbm, m_saturatedDbm, m_parameters.rappP);
}

double Transmitter::readDetectorDbm()
{
    const double errorDb = m_parameters.detectorOffsetDb +
                           m_parameters.detectorDriftPerDegreeDb * (amplifierDegrees() - REFERENCE_DEGREES) +
                           m_parameters.detectorNoiseDb * m_noise(m_random);
    return quantised(powerSumDbm(outputPowerDbm(), m_floorDbm) + errorDb, m_parameters.detectorStepDb);
}
