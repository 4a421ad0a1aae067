/** @file
 * Reads the parameters of a sweep.
 */
#pragma once

#include "Unit/Campaign/SweepDefinition.h"
#include "Unit/Configuration/TomlTable.h"

/** @return a number as a value; whole ones without a point, so that they also go where a whole number is asked for */
SweepValue numberValue(double number);

/** Reads a [[parameter]]. @throws ConfigurationError */
SweepParameter readParameter(const TomlTable& table, ESweepMethod eMethod);
