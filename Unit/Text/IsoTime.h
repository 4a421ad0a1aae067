/** @file
 * Times of day as text.
 */
#pragma once

#include <cstdint>
#include <string>

/** @return a time such as "2026-11-21T15:00:00.500000Z". @param nUnixUs microseconds since 1970 */
std::string isoTime(std::int64_t nUnixUs);
