/** @file
 * Fits Rapp's amplifier to a measured power sweep.
 */
#pragma once

#include <cstddef>
#include <stdexcept>
#include <vector>

/** One point of a power sweep. */
struct AmplifierPoint
{
    double inputDbm;
    double outputDbm;
};

/** The amplifier that comes nearest to a sweep, and how near. */
struct AmplifierFit
{
    double gainDb;        /**< far below saturation */
    double saturatedDbm;  /**< limit of the output power */
    double rappP;         /**< smoothness of the compression */
    double compressedDbm; /**< output power where it has compressed by 1 dB */
    double rmsResidualDb; /**< rms of measured minus fitted output power */
    double maxResidualDb; /**< largest such difference, without its sign */
};

/** Fewest points that are fitted: one more than there are parameters. */
inline constexpr std::size_t LEAST_AMPLIFIER_POINTS = 4;

/** A sweep from which an amplifier cannot be told; the text says why and what to measure instead. */
class AmplifierFitError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/**
 * Finds gain, saturated power and smoothness with the least squares of the output power's differences in dB.
 * @param points in any order
 * @throws AmplifierFitError for too few points, values that are not finite, a sweep that does not compress enough to
 *         tell the saturated power, and one that no such amplifier fits
 */
AmplifierFit fitAmplifier(const std::vector<AmplifierPoint>& points);
