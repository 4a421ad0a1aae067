/** @file
 * The columns of a recorded step.
 */
#pragma once

#include "Unit/Process/StepSample.h"

#include <fmt/format.h>

#include <string_view>

/** @return the names of the columns, with their units, commas between them */
std::string_view stepColumnNames();

/** Appends a step's values in the order of stepColumnNames(), commas between them. */
void appendStepColumns(fmt::memory_buffer& buffer, const StepSample& sample);
