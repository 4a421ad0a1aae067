/** @file
 * The numbers behind the picture of a run.
 */
#pragma once

#include "Unit/Simulator/RunTrack.h"

#include <string>
#include <vector>

/** What the time axis counts. */
struct TimeAxis
{
    const char* pUnit;
    double secondsPerUnit;
};

/** @return the axis that suits a run of this length */
TimeAxis timeAxisFor(double seconds);

/** Columns of plotData(). */
enum EPlotColumn
{
    eCOLUMN_TIME = 1,
    eCOLUMN_REQUESTED,
    eCOLUMN_TARGET,
    eCOLUMN_PCTRL,
    eCOLUMN_OUTPUT_MIN,
    eCOLUMN_OUTPUT,
    eCOLUMN_OUTPUT_MAX,
    eCOLUMN_ERROR_MIN,
    eCOLUMN_ERROR,
    eCOLUMN_ERROR_MAX,
    eCOLUMN_TEMPERATURE,
    eCOLUMN_FREQUENCY
};

/** @return a line per bucket with the columns of EPlotColumn; "NaN" where there is nothing */
std::string plotData(const std::vector<StepBucket>& buckets, const TimeAxis& axis);

/** @return lines of time and EOnDegree */
std::string stateData(const std::vector<StepBucket>& buckets, const TimeAxis& axis);

/** @return the names of EOnDegree on an axis, as gnuplot reads them */
const char* stateTics();

/** @return smallest and largest value of a quantity over all buckets */
ValueRange rangeOver(const std::vector<StepBucket>& buckets, EQuantity eQuantity);
