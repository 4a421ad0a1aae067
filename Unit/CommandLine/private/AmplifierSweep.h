/** @file
 * A measured power sweep in a file.
 */
#pragma once

#include "Simulation/Transmitter/AmplifierFit.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

inline constexpr double LOWEST_SUPPLY_VOLTS = -10000.0;
inline constexpr double HIGHEST_SUPPLY_VOLTS = 10000.0;

/** Where a sweep was measured; what the file does not say is missing. */
struct SweepPlace
{
    std::optional<double> frequencyMhz;
    std::optional<double> supplyVolts;
};

/** The points of one frequency and supply. */
struct AmplifierSweep
{
    SweepPlace place;
    std::size_t nLine; /**< of the file, where its first point stands */
    std::vector<AmplifierPoint> points;
};

/**
 * Reads sweeps from CSV: a header row, pin_dBm, pout_dBm and any of frequency_MHz and supply_V; other columns are left
 * out.
 * @return the sweeps by ascending frequency and supply, at least one
 * @throws ConfigurationError that names file, line, column, what was read and what is allowed
 */
std::vector<AmplifierSweep> readAmplifierSweeps(const std::string& sPath);

/** @return the sweep's place for a message, such as "at 2000 MHz and 12 V"; "in the file" when it has none */
std::string placeText(const SweepPlace& place);
