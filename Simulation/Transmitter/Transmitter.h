/** @file
 * A transmitter's physics: gain chain, compression, drift, detector, actuator. No input or output, no clock.
 */
#pragma once

#include "Simulation/Transmitter/TransmitterParameters.h"

#include <array>
#include <cstdint>
#include <random>

/** Greatest number of amplifiers in a chain. */
inline constexpr unsigned int MAX_AMPLIFIERS = 6;

/** Where a control power leaves the chain. */
struct ChainSetting
{
    double ifPowerDbm = 0.0;
    double rfGainDb = 0.0;
    std::array<double, MAX_AMPLIFIERS> gainReductionDb{}; /**< amplifier 1 first */
};

/** A simulated transmitter. Deterministic for a seed and a sequence of calls; use it from one thread at a time. */
class Transmitter
{
public:
    explicit Transmitter(const TransmitterParameters& parameters = {}, std::uint64_t nSeed = 1);

    const TransmitterParameters& parameters() const { return m_parameters; }

    /**
     * Changes what the transmitter is made of, and nothing else: its warmth, its noise and its control power go on. The
     * gain setting keeps going by the chain gain of the start, so that a chain that has lost gain gives less power.
     */
    void change(const TransmitterParameters& parameters);

    /** Sets the gain chain for a control power, as closely as the actuator's resolution allows. */
    void setControlPowerDbm(double controlPowerDbm);

    /** Lets the transmitter radiate, or not. */
    void setRadiating(bool bRadiating) { m_bRadiating = bRadiating; }

    void setAmbientTemperature(double degreesCelsius) { m_ambientDegrees = degreesCelsius; }
    void setFrequencyMhz(double frequencyMhz) { m_frequencyMhz = frequencyMhz; }

    /** Lets time pass: the amplifiers warm up or cool down. */
    void advance(double seconds);

    const ChainSetting& setting() const { return m_setting; }
    double amplifierDegrees() const { return m_ambientDegrees + m_selfHeatingDegrees; }

    /** @return the true output power, without a detector's errors; -infinity when not radiating */
    double outputPowerDbm() const;

    /** @return one reading of the detector; draws its noise */
    double readDetectorDbm();

private:
    void derive();

    TransmitterParameters m_parameters;

    // What follows from the parameters, so that a step need not find it out again.
    unsigned int m_nAmplifiers = 0;
    double m_saturatedDbm = 0.0;
    double m_floorDbm = 0.0;

    double m_knownChainGainDb; // what the gain setting goes by
    double m_controlPowerDbm;
    std::mt19937_64 m_random;
    std::normal_distribution<double> m_noise;
    ChainSetting m_setting;
    bool m_bRadiating = false;
    double m_ambientDegrees = 25.0;
    double m_selfHeatingDegrees = 0.0;
    double m_frequencyMhz;
    double m_decaySeconds = 0.0; // that m_decay is for
    double m_decay = 0.0;        // share of the way to the final warmth
};
