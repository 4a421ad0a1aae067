#include "Unit/Campaign/SweepPlot.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/private/PlotPanels.h"
#include "Unit/Simulator/MeasureText.h"
#include "Unit/Text/OneLine.h"

#include <fmt/format.h>

#include <cmath>

namespace
{
constexpr std::size_t MOST_LINES = 8;
constexpr std::size_t MOST_COLUMNS = 8;

PlotPoint pointOf(const RunMeasureKey& key, const MeasureStatistics& statistics, double x)
{
    const double scale = measureScale(key);
    return {x, scale * statistics.mean, scale * statistics.minimum, scale * statistics.maximum};
}

void checkNumber(const SweepReport& report, std::size_t nBy, std::size_t nMost, const char* pWhat)
{
    const std::size_t nParameter = report.question.by[nBy];
    const std::size_t nLevels = report.runs.parameters[nParameter].levels.size();
    if (nLevels > nMost) {
        throw ConfigurationError(
            fmt::format("--by: {} has {} values, and a picture can have at most {} {}; name it first, or leave it out",
                        report.parameter(nParameter).sPath, nLevels, nMost, pWhat));
    }
}

PanelPicture effectsPicture(const SweepReport& report)
{
    PanelPicture picture;
    const auto& columns = report.runs.parameters;
    for (std::size_t nParameter = 0; nParameter < columns.size(); ++nParameter) {
        picture.xAxes.push_back(levelAxis(report.parameter(nParameter), columns[nParameter]));
    }
    for (const MeasureEffects& effects : report.effects) {
        const RunMeasureKey& key = *report.runs.measures[effects.nMeasure];
        std::vector<PlotPanel> row(columns.size());
        for (const ParameterEffect& effect : effects.parameters) {
            PlotLine line{"mean", {}};
            for (std::size_t n = 0; n < effect.levels.size(); ++n) {
                line.points.push_back(pointOf(key, effect.levels[n], columns[effect.nParameter].levels[n].position));
            }
            row[effect.nParameter].lines.push_back(std::move(line));
        }
        picture.yAxes.push_back(measureAxis(key, row));
        picture.bounds.emplace_back();
        picture.rows.push_back(std::move(row));
    }
    return picture;
}

/** @return bounds of conditions on a measure */
std::vector<double> boundsOn(const SweepReport& report, const RunMeasureKey& key)
{
    std::vector<double> bounds;
    for (const SweepCondition& condition : report.question.conditions) {
        if (condition.pMeasure == &key) {
            bounds.push_back(measureScale(key) * condition.bound);
        }
    }
    return bounds;
}

/** Makes panels without points: a column for each level of the third parameter, a line for each of the second. */
std::vector<PlotPanel> emptyRow(const SweepReport& report)
{
    const auto& by = report.question.by;
    std::vector<PlotPanel> row(by.size() > 2 ? report.runs.parameters[by[2]].levels.size() : 1);
    for (std::size_t nColumn = 0; nColumn < row.size(); ++nColumn) {
        if (by.size() > 2) {
            row[nColumn].sHeading = fmt::format("{}: {}", oneLine(report.parameter(by[2]).sName),
                                                report.runs.parameters[by[2]].levels[nColumn].sLabel);
        }
        if (by.size() == 1) {
            row[nColumn].lines.push_back({"mean", {}});
            continue;
        }
        for (const SweepLevel& level : report.runs.parameters[by[1]].levels) {
            row[nColumn].lines.push_back({level.sLabel, {}});
        }
    }
    return row;
}

/** Bands of several lines would hide each other: each point is its mean only. */
std::vector<PlotPanel> groupsRow(const SweepReport& report, std::size_t nMeasure)
{
    const auto& by = report.question.by;
    const SweepColumn& first = report.runs.parameters[by.front()];
    std::vector<PlotPanel> row = emptyRow(report);
    for (const SweepGroup& group : report.groups) { // ascending by the first parameter
        PlotPanel& panel = row[by.size() > 2 ? group.levels[2] : 0];
        PlotPoint point = pointOf(*report.question.measures[nMeasure], group.measures[nMeasure],
                                  first.levels[group.levels.front()].position);
        if (by.size() > 1) {
            point.minimum = point.mean;
            point.maximum = point.mean;
        }
        panel.lines[by.size() > 1 ? group.levels[1] : 0].points.push_back(point);
    }
    return row;
}

PanelPicture groupsPicture(const SweepReport& report)
{
    const auto& by = report.question.by;
    if (by.size() > 1) {
        checkNumber(report, 1, MOST_LINES, "lines");
    }
    if (by.size() > 2) {
        checkNumber(report, 2, MOST_COLUMNS, "columns");
    }
    PanelPicture picture;
    picture.sKeyTitle = by.size() > 1 ? oneLine(report.parameter(by[1]).sName) : "";
    for (std::size_t nMeasure = 0; nMeasure < report.question.measures.size(); ++nMeasure) {
        const RunMeasureKey& key = *report.question.measures[nMeasure];
        picture.rows.push_back(groupsRow(report, nMeasure));
        picture.yAxes.push_back(measureAxis(key, picture.rows.back()));
        picture.bounds.push_back(boundsOn(report, key));
    }
    picture.xAxes.assign(picture.rows.front().size(),
                         levelAxis(report.parameter(by.front()), report.runs.parameters[by.front()]));
    return picture;
}
} // namespace

std::string sweepPlotScript(const SweepReport& report, EPicture ePicture)
{
    PanelPicture picture = report.question.by.empty() ? effectsPicture(report) : groupsPicture(report);
    picture.sTitle = report.definition().sTitle;
    return panelScript(picture, ePicture);
}

std::string sweepPlot(const SweepReport& report, EPicture ePicture)
{
    return runGnuplot(sweepPlotScript(report, ePicture));
}
