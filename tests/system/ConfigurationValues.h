/** @file
 * Prints the values that configuration files lead to, one a line, so that tests can compare what two files come to.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>

/** Prints "table.key = value". */
template <class TValue> void show(const char* pTable, const char* pKey, const TValue& value)
{
    fmt::print("{}.{} = {}\n", pTable, pKey, value);
}

/** The same for a value that may not be there. */
template <class TValue> void show(const char* pTable, const char* pKey, const std::optional<TValue>& value)
{
    fmt::print("{}.{} = {}\n", pTable, pKey, value ? fmt::format("{}", *value) : "none");
}

/** Prints what unit files and scenarios have in common. */
void showUnit(const UnitConfiguration& unit);
void showInterpolation(const char* pTable, const Profile::Interpolation& interpolation);
void showChannel(const ChannelConfiguration& channel);
void showFault(const FaultConfiguration& fault);
