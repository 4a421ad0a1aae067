/** @file
 * The monotonic clock in nanoseconds.
 */
#pragma once

#include <cstdint>
#include <ctime>

inline constexpr std::int64_t NANOSECONDS_PER_SECOND = 1'000'000'000;

inline std::int64_t monotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * NANOSECONDS_PER_SECOND + now.tv_nsec;
}

/** @param nNanoseconds 0 or more */
inline timespec toTimespec(std::int64_t nNanoseconds)
{
    timespec time{};
    time.tv_sec = static_cast<time_t>(nNanoseconds / NANOSECONDS_PER_SECOND);
    time.tv_nsec = static_cast<long>(nNanoseconds % NANOSECONDS_PER_SECOND);
    return time;
}
