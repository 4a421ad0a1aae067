/** @file
 * Ranges of what drives a transmitter, and of the times that it is driven at.
 */
#pragma once

inline constexpr double LOWEST_POWER_DBM = -98.0; /**< above the controller's markers for off and unknown */
inline constexpr double HIGHEST_POWER_DBM = 100.0;
inline constexpr double HIGHEST_FREQUENCY_MHZ = 300000.0;
inline constexpr double COLDEST_DEGREES = -100.0;
inline constexpr double HOTTEST_DEGREES = 200.0;
inline constexpr double LONGEST_RUN_SECONDS = 1e9;
