/** @file
 * Ranges of the values that people give the unit, in its file or by a command.
 */
#pragma once

#include "Simulation/Scenario/DriveRanges.h"

#include <cstdint>
#include <limits>

inline constexpr std::int32_t MAX_INT32 = std::numeric_limits<std::int32_t>::max();
inline constexpr std::int32_t MIN_INT32 = std::numeric_limits<std::int32_t>::min();

inline constexpr int MAX_GAIN_PERCENT = 1000;
inline constexpr int MAX_LOOP_MODE = 2;
inline constexpr int MAX_TRACE_LEVEL = 9;
inline constexpr int MAX_FAULT_DELAY_US = 10'000'000;
inline constexpr int MAX_REALTIME_PRIORITY = 99; /**< 0 is none */

inline constexpr double SHORTEST_STEPS_HOURS = 0.02; // what a recording keeps: a minute and a bit
inline constexpr double LONGEST_STEPS_HOURS = 8760.0;
inline constexpr double SHORTEST_SECONDS_HOURS = 1.0;
inline constexpr double LONGEST_SECONDS_HOURS = 87600.0;
inline constexpr double SHORTEST_MINUTES_DAYS = 1.0;
inline constexpr double LONGEST_MINUTES_DAYS = 36600.0;
inline constexpr int MIN_RECORDING_MB = 64;
inline constexpr int MAX_RECORDING_MB = 10'000'000;

/**
 * Greatest regulator interval. Above it the controller's count of the calls that it waits for when switching on, which
 * is (24 - interval) / interval, wraps, and the transmitter never comes on.
 */
inline constexpr unsigned int MAX_INTERVAL_MS = 24;
