/** @file
 * What the measures of a run are taken against.
 */
#pragma once

/** The power that the output power should have. */
enum class EPowerReference
{
    Target,   /**< the requested power with the calibration tables' offsets, as the controller regulates to */
    Requested /**< the requested power itself */
};

/** How the measures of a run are taken. */
struct MeasureSettings
{
    EPowerReference eReference = EPowerReference::Target;
    double settlingBandDb = 0.1;      /**< errors up to this count as settled */
    double emissionToleranceDb = 1.0; /**< output power further above the upper limit is spurious */
};
