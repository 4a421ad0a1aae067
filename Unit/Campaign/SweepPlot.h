/** @file
 * A sweep's report as a picture.
 */
#pragma once

#include "Unit/Campaign/SweepReport.h"
#include "Unit/Plot/Gnuplot.h"

#include <string>

/**
 * Draws a row of panels for each measure. Without parameters to report by, a column for each parameter, with the mean
 * over its levels in a band from lowest to highest; otherwise the means over the first parameter, a line for each level
 * of the second, and a column for each level of the third.
 * @return what gnuplot is told
 * @throws ConfigurationError when there would be more lines or columns than can be told apart
 */
std::string sweepPlotScript(const SweepReport& report, EPicture ePicture);

/** @return the picture @throws std::runtime_error when gnuplot is not there or fails; SIGPIPE has to be ignored */
std::string sweepPlot(const SweepReport& report, EPicture ePicture);
