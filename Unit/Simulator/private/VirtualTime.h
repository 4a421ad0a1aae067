/** @file
 * The time of a run: whole nanoseconds since it began, so that no time of day is off after years.
 */
#pragma once

#include <cmath>
#include <cstdint>

inline constexpr std::int64_t NS_PER_MS = 1'000'000;
inline constexpr std::int64_t NS_PER_US = 1000;
inline constexpr double NS_PER_S = 1e9;

inline std::int64_t toNs(double seconds)
{
    return std::llround(seconds * NS_PER_S);
}

inline double toSeconds(std::int64_t nNs)
{
    return static_cast<double>(nNs) / NS_PER_S;
}
