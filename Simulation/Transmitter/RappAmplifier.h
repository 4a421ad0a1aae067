/** @file
 * Rapp's model of an amplifier that compresses.
 */
#pragma once

#include "Simulation/Transmitter/Decibels.h"

#include <algorithm>
#include <cmath>

/**
 * What Rapp's amplifier puts out: linear far below saturation, approaching it from below.
 * @param linearDbm output without compression
 * @param saturatedDbm limit of the output
 * @param p smoothness, greater than 0; higher is more abrupt
 */
inline double rappOutputDbm(double linearDbm, double saturatedDbm, double p)
{
    // Written around the larger term, so that an extreme overdrive ends at saturation instead of overflowing.
    const double sharpness = p * LOG_PER_DB;
    return std::min(linearDbm, saturatedDbm) - log1pExp(-std::abs(linearDbm - saturatedDbm) * sharpness) / sharpness;
}
