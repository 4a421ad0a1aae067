/** @file
 * Sums of powers in decibels, by the natural logarithm, which costs the least.
 */
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

/** Natural logarithm of a power ratio of one decibel. */
inline constexpr double LOG_PER_DB = std::numbers::ln10 / 10.0;

/** @return the natural logarithm of 1 + exp(x), for x of 0 and less */
inline double log1pExp(double x)
{
    constexpr double nothing = -37.0; // exp() of less is lost beside 1 in a double
    return x < nothing ? 0.0 : std::log1p(std::exp(x));
}

/** @return the sum of two powers in dBm, one of which may be -infinity */
inline double powerSumDbm(double a, double b)
{
    return std::max(a, b) + log1pExp(-std::abs(a - b) * LOG_PER_DB) / LOG_PER_DB;
}
