/** @file
 * How exactly the meters of a run compare.
 */
#pragma once

/** Differences of decibels in floating point miss the hundredths that they stand for by far less than this. */
inline constexpr double METER_ROUNDING_DB = 1e-6;
