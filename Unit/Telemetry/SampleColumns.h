/** @file
 * The quantities of a sample as people are shown them.
 */
#pragma once

#include "Unit/Process/StepSample.h"

#include <array>
#include <cstdint>
#include <optional>

/** A whole number, such as hundredths of a decibel; nothing where there is none. */
using ColumnValue = std::optional<std::int64_t>;

/** A column, and how to read it from a sample. */
struct SampleColumn
{
    const char* pName;
    ColumnValue (*read)(const StepSample&);
};

/** @return all columns that every part of a range has minimum, mean and maximum of */
const std::array<SampleColumn, 10>& quantityColumns();

/** @return the reduction of an amplifier's gain. @param nAmplifier from 0 */
ColumnValue reducedGain(const StepSample& sample, std::size_t nAmplifier);
