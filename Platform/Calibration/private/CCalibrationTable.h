/** @file
 * A calibration table and its interpolation.
 */
#pragma once

#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/Calibration/CalibrationTables.h"

/** What modules hold a pointer to. */
struct CCalibrationTable
{
    CalibrationGrid grid;

    bool isValid() const { return !grid.values.empty(); }

    /** @return the value at a position, clamped to the grid's edges, rounded to nearest with halves away from zero */
    int32_t interpolate(int32_t nX, int32_t nY) const;
};
