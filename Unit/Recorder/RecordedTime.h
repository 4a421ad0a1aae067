/** @file
 * Times of a run as people write them.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

inline constexpr std::int64_t SECOND_US = 1'000'000;
inline constexpr std::int64_t MINUTE_US = 60 * SECOND_US;

/**
 * Reads seconds since the run began, such as "12.5", or a time of day, such as "2026-11-21T15:00:00.5Z", with an offset
 * such as "+01:00", or in UTC without either.
 * @param nStartedUnixUs when the run began
 * @return microseconds since the run began, negative before it; none for another text
 */
std::optional<std::int64_t> parseRunTime(const std::string& sText, std::int64_t nStartedUnixUs);
