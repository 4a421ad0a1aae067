/** @file
 * How many of a smaller unit make a larger one, for values that become numbers with a fraction.
 */
#pragma once

inline constexpr double CENTI_DB_PER_DB = 100.0; /**< hundredths of a decibel in one */
inline constexpr double MS_PER_S = 1e3;          /**< milliseconds in a second */
inline constexpr double US_PER_MS = 1e3;         /**< microseconds in a millisecond */
inline constexpr double US_PER_S = 1e6;          /**< microseconds in a second */
