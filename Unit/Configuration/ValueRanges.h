/** @file
 * Ranges of the values that people give the unit, in its file or by a command.
 */
#pragma once

#include "Simulation/Scenario/DriveRanges.h"

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
