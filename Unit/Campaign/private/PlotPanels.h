/** @file
 * Panels of a picture: what they show and along which axes.
 */
#pragma once

#include "Unit/Campaign/SweepReport.h"
#include "Unit/Plot/Gnuplot.h"

#include <optional>
#include <string>
#include <vector>

/** How values become places along an axis. */
enum class EAxisScale
{
    Linear,
    Logarithmic,
    LogarithmicWithZero /**< linear near 0, logarithmic far from it */
};

/** A label on an axis. */
struct AxisTic
{
    double value = 0.0;
    std::string sLabel;
};

/** One direction of a panel. */
struct PlotAxis
{
    EAxisScale eScale = EAxisScale::Linear;
    double unit = 1.0; /**< where a LogarithmicWithZero axis begins to be logarithmic */
    double minimum = 0.0;
    double maximum = 1.0;
    std::string sTitle;
    std::vector<AxisTic> tics; /**< none: every so often, as gnuplot finds fit */

    /** @return where a value is drawn */
    double place(double value) const;
};

/** A point of a line: a mean, and the range around it. */
struct PlotPoint
{
    double x = 0.0;
    double mean = 0.0; /**< NO_MEASURE interrupts the line */
    double minimum = 0.0;
    double maximum = 0.0;
};

/** A line in a panel. */
struct PlotLine
{
    std::string sTitle;
    std::vector<PlotPoint> points;
};

/** One of the drawings that make a picture. */
struct PlotPanel
{
    std::string sHeading; /**< above the panel; empty for none */
    std::vector<PlotLine> lines;
};

/** Panels in rows and columns; those of a row have the same vertical axis, those of a column the same horizontal one.
 */
struct PanelPicture
{
    std::string sTitle;
    std::string sKeyTitle; /**< what tells the lines apart; empty where there is one, which gets its range */
    std::vector<PlotAxis> xAxes;
    std::vector<PlotAxis> yAxes;
    std::vector<std::vector<double>> bounds; /**< by row: where conditions end */
    std::vector<std::vector<PlotPanel>> rows;
};

/** @return the axis along a parameter's levels */
PlotAxis levelAxis(const SweepParameter& parameter, const SweepColumn& column);

/** @return the axis for the values of a measure */
PlotAxis measureAxis(const RunMeasureKey& key, const std::vector<PlotPanel>& panels);

/** @return what gnuplot is told */
std::string panelScript(const PanelPicture& picture, EPicture ePicture);
