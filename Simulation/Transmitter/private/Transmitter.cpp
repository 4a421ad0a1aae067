#include "Simulation/Transmitter/Transmitter.h"

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

/** @return the sum of two powers in dBm, either of which may be -infinity */
double powerSumDbm(double a, double b)
{
    const double larger = std::max(a, b);
    const double smaller = std::min(a, b);
    return larger + 10.0 * std::log10(1.0 + std::pow(10.0, (smaller - larger) / 10.0));
}

/** Rapp's amplifier: linear far below saturation, approaching it from below. */
double compressedDbm(double linearDbm, double saturatedDbm, double p)
{
    const double exponent = (linearDbm - saturatedDbm) * 2.0 * p / 20.0;
    // Written around the larger term, so that an extreme overdrive ends at saturation instead of overflowing.
    const double ceilingDbm = std::min(linearDbm, saturatedDbm);
    return ceilingDbm - 20.0 / (2.0 * p) * std::log10(1.0 + std::pow(10.0, -std::abs(exponent)));
}
} // namespace

Transmitter::Transmitter(const TransmitterParameters& parameters, std::uint64_t nSeed)
    : m_parameters(parameters), m_knownChainGainDb(parameters.chainGainDb), m_controlPowerDbm(parameters.minPowerDbm),
      m_random(nSeed), m_noise(0.0, 1.0), m_frequencyMhz(parameters.referenceFrequencyMhz)
{
    setControlPowerDbm(parameters.minPowerDbm);
}

void Transmitter::change(const TransmitterParameters& parameters)
{
    m_parameters = parameters;
    setControlPowerDbm(m_controlPowerDbm);
}

void Transmitter::setControlPowerDbm(double controlPowerDbm)
{
    m_controlPowerDbm = controlPowerDbm;
    const auto nAmplifiers =
        static_cast<unsigned int>(std::clamp(std::round(m_parameters.amplifierCount), 0.0, double{MAX_AMPLIFIERS}));
    const double reductionDb = quantised(m_parameters.maxPowerDbm - controlPowerDbm, m_parameters.actuatorStepDb);

    double perAmplifierDb = 0.0;
    if (nAmplifiers > 0) {
        perAmplifierDb = std::clamp(reductionDb / nAmplifiers, 0.0, m_parameters.maxReductionPerAmplifierDb);
    }
    m_setting.gainReductionDb.fill(0.0);
    std::fill_n(m_setting.gainReductionDb.begin(), nAmplifiers, perAmplifierDb);

    const double takenDb = perAmplifierDb * nAmplifiers;
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
        m_selfHeatingDegrees += (goal - m_selfHeatingDegrees) * -std::expm1(-seconds / m_parameters.selfHeatingSeconds);
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
    return compressedDbm(linearDbm, m_parameters.maxPowerDbm + m_parameters.psatAboveMaxDb, m_parameters.rappP);
}

double Transmitter::readDetectorDbm()
{
    const double floorDbm = m_parameters.maxPowerDbm - m_parameters.detectorFloorBelowMaxDb;
    const double errorDb = m_parameters.detectorOffsetDb +
                           m_parameters.detectorDriftPerDegreeDb * (amplifierDegrees() - REFERENCE_DEGREES) +
                           m_parameters.detectorNoiseDb * m_noise(m_random);
    return quantised(powerSumDbm(outputPowerDbm(), floorDbm) + errorDb, m_parameters.detectorStepDb);
}
