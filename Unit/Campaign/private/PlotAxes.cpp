#include "Unit/Campaign/private/PlotPanels.h"
#include "Unit/Simulator/MeasureText.h"
#include "Unit/Text/OneLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace
{
constexpr std::size_t MOST_LABELLED_LEVELS = 8;
constexpr double WIDE_RANGE = 50.0;      // of a measure: more would hide the small values
constexpr double WIDEST_RANGE = 1e4;     // below which values count as zero
constexpr double WIDE_LEVELS = 10.0;     // of a parameter
constexpr double DECADES_WITH_FEW = 2.5; // an axis of fewer has labels in between

/** @return whether the levels' ratios are more alike than their differences */
bool isLogLike(const std::vector<SweepLevel>& levels)
{
    if (levels.size() < 3 || levels.front().position <= 0.0 ||
        levels.back().position < WIDE_LEVELS * levels.front().position)
    {
        return false;
    }
    double smallestStep = INFINITY;
    double largestStep = 0.0;
    double smallestRatio = INFINITY;
    double largestRatio = 0.0;
    for (std::size_t n = 1; n < levels.size(); ++n) {
        const double step = levels[n].position - levels[n - 1].position;
        const double ratio = std::log(levels[n].position / levels[n - 1].position);
        smallestStep = std::min(smallestStep, step);
        largestStep = std::max(largestStep, step);
        smallestRatio = std::min(smallestRatio, ratio);
        largestRatio = std::max(largestRatio, ratio);
    }
    return largestRatio * smallestStep < largestStep * smallestRatio;
}

/** @return powers of ten in a range, and 2 and 5 times those where there would be few */
std::vector<AxisTic> logarithmicTics(double minimum, double maximum)
{
    const bool bFew = std::log10(maximum / minimum) < DECADES_WITH_FEW;
    std::vector<AxisTic> tics;
    for (int nDecade = static_cast<int>(std::floor(std::log10(minimum))); std::pow(10.0, nDecade) <= maximum; ++nDecade)
    {
        for (const double factor : {1.0, 2.0, 5.0}) {
            const double value = factor * std::pow(10.0, nDecade);
            if (value >= minimum && value <= maximum && (bFew || factor == 1.0)) {
                tics.push_back({value, fmt::format("{:.6g}", value)});
            }
        }
    }
    return tics;
}

void setRange(PlotAxis& axis, double minimum, double maximum)
{
    axis.minimum = minimum;
    axis.maximum = maximum > minimum ? maximum : minimum + 1.0;
}
} // namespace

double PlotAxis::place(double value) const
{
    switch (eScale) {
    case EAxisScale::Logarithmic:
        return std::log10(value);
    case EAxisScale::LogarithmicWithZero:
        return std::asinh(value / unit);
    case EAxisScale::Linear:
        break;
    }
    return value;
}

PlotAxis levelAxis(const SweepParameter& parameter, const SweepColumn& column)
{
    PlotAxis axis;
    axis.sTitle = oneLine(parameter.sName);
    const auto& levels = column.levels;
    setRange(axis, levels.front().position, levels.back().position);
    if (column.bNumbers && (parameter.bLogarithmic ? levels.front().position > 0.0 : isLogLike(levels))) {
        axis.eScale = EAxisScale::Logarithmic;
    }
    if (!column.bGrouped && (levels.size() <= MOST_LABELLED_LEVELS || !column.bNumbers)) {
        constexpr std::size_t LONGEST_LABEL = 16;
        for (const SweepLevel& level : levels) {
            axis.tics.push_back({level.position, oneLine(level.sLabel, LONGEST_LABEL)});
        }
    }
    else if (axis.eScale == EAxisScale::Logarithmic) {
        axis.tics = logarithmicTics(axis.minimum, axis.maximum);
    }
    return axis;
}

PlotAxis measureAxis(const RunMeasureKey& key, const std::vector<PlotPanel>& panels)
{
    double minimum = NO_MEASURE;
    double maximum = NO_MEASURE;
    double smallest = NO_MEASURE; // above 0
    for (const PlotPanel& panel : panels) {
        for (const PlotLine& line : panel.lines) {
            for (const PlotPoint& point : line.points) {
                minimum = std::fmin(minimum, point.minimum);
                maximum = std::fmax(maximum, point.maximum);
                for (const double value : {point.minimum, point.mean, point.maximum}) {
                    smallest = value > 0.0 ? std::fmin(smallest, value) : smallest;
                }
            }
        }
    }
    PlotAxis axis;
    const std::string sUnit = measureUnit(key);
    axis.sTitle = measureTitle(key) + (sUnit.empty() ? "" : " in " + sUnit);
    if (!std::isnan(minimum)) {
        setRange(axis, minimum, maximum);
    }
    smallest = std::fmax(smallest, maximum / WIDEST_RANGE);
    if (minimum >= 0.0 && maximum > WIDE_RANGE * smallest) {
        axis.eScale = minimum > 0.0 ? EAxisScale::Logarithmic : EAxisScale::LogarithmicWithZero;
        axis.unit = smallest;
        axis.tics = logarithmicTics(smallest, maximum);
        if (minimum == 0.0) {
            axis.tics.insert(axis.tics.begin(), {0.0, "0"});
        }
    }
    return axis;
}
