/** @file
 * Ranges of the values that people give the unit, in its file or by a command.
 */
#pragma once

inline constexpr double LOWEST_POWER_DBM = -98.0; /**< above the controller's markers for off and unknown */
inline constexpr double HIGHEST_POWER_DBM = 100.0;
inline constexpr double HIGHEST_FREQUENCY_MHZ = 300000.0;
inline constexpr double COLDEST_DEGREES = -100.0;
inline constexpr double HOTTEST_DEGREES = 200.0;
inline constexpr int MAX_GAIN_PERCENT = 1000;
inline constexpr int MAX_LOOP_MODE = 2;
inline constexpr int MAX_TRACE_LEVEL = 9;
inline constexpr int MAX_FAULT_DELAY_US = 10'000'000;
inline constexpr int MAX_REALTIME_PRIORITY = 99; /**< 0 is none */

/**
 * Greatest regulator interval. Above it the controller's count of the calls that it waits for when switching on, which
 * is (24 - interval) / interval, wraps, and the transmitter never comes on.
 */
inline constexpr unsigned int MAX_INTERVAL_MS = 24;
