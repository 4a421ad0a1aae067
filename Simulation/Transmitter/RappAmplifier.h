/** @file
 * Rapp's model of an amplifier that compresses.
 */
#pragma once

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
    const double exponent = (linearDbm - saturatedDbm) * 2.0 * p / 20.0;
    // Written around the larger term, so that an extreme overdrive ends at saturation instead of overflowing.
    const double ceilingDbm = std::min(linearDbm, saturatedDbm);
    return ceilingDbm - 20.0 / (2.0 * p) * std::log10(1.0 + std::pow(10.0, -std::abs(exponent)));
}
