/** @file
 * A run as a picture.
 */
#pragma once

#include "Unit/Plot/Gnuplot.h"
#include "Unit/Simulator/RunTrack.h"
#include "Unit/Simulator/Scenario.h"

#include <string>

/** @return what gnuplot is told: powers, error, what else moves, and the state, over one time axis */
std::string runPlotScript(const RunTrack& track, const Scenario& scenario, EPicture ePicture);

/** @return the picture @throws std::runtime_error when gnuplot is not there or fails; SIGPIPE has to be ignored */
std::string runPlot(const RunTrack& track, const Scenario& scenario, EPicture ePicture);
