/** @file
 * The two scales of power: hundredths of a decibel at the handler's table, decibels in the model.
 */
#pragma once

#include "Platform/Conversions.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

/** @return the nearest value of the table's scale, the range's end for what is beyond it */
inline std::int32_t toCentiDb(double decibels)
{
    constexpr double lowest = std::numeric_limits<std::int32_t>::min();
    constexpr double highest = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::lround(std::clamp(decibels * CENTI_DB_PER_DB, lowest, highest)));
}

inline double toDb(std::int32_t nCentiDb)
{
    return nCentiDb / CENTI_DB_PER_DB;
}
