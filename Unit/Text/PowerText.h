/** @file
 * Powers and states as people read them.
 */
#pragma once

#include <cstdint>
#include <string>

/** @return the controller's state by name, such as "TX_ON"; "UNKNOWN" for a number that is none */
const char* controllerStateName(std::int32_t nState);

/** @return hundredths of a decibel as decibels with two decimals: -5 gives "-0.05" */
std::string decibelText(std::int32_t nCentiDb);

/** @return decibelText(), or "off" for the controller's markers of a power that is off or not known */
std::string powerText(std::int32_t nCentiDbm);

/** @return the nearest whole number; limited to +-10 million, below which not-a-number counts */
std::int32_t nearestInteger(double value);

/** @return decibels in hundredths, rounded and limited as nearestInteger() does */
std::int32_t centiDb(double decibels);
