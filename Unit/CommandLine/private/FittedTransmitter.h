/** @file
 * Settings of the simulated transmitter that make it a measured amplifier.
 */
#pragma once

#include "Simulation/Transmitter/TransmitterParameters.h"
#include "Unit/CommandLine/private/AmplifierSweep.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

/** A sweep's place and the amplifier that was fitted there. */
struct FittedSweep
{
    SweepPlace place;
    std::size_t nPoints;
    AmplifierFit fit;
};

/** A line through the gain over frequency. */
struct GainSlope
{
    double perGhzDb;
    double largestErrorDb; /**< of the line, at the worst of its frequencies */
    std::size_t nFrequencies;
};

/** @return the line through the gains of all frequencies at a supply; none when there are less than two */
std::optional<GainSlope> gainSlope(const std::vector<FittedSweep>& fits, const std::optional<double>& supplyVolts);

/**
 * Gives the keys of the unit file's transmitter, in its order, for a fitted amplifier.
 * @param maxPowerDbm upper limit of the control power
 * @throws ConfigurationError when the transmitter cannot be set like that
 */
std::vector<std::pair<std::string, double>> transmitterSettings(const FittedSweep& fitted, double maxPowerDbm,
                                                                const std::optional<GainSlope>& slope);
