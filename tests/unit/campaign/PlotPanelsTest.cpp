#include "Unit/Campaign/private/PlotPanels.h"

#include "tests/unit/campaign/SweepRunMaker.h"

#include <gmock/gmock.h>

#include <cmath>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace
{
SweepColumn columnWith(const std::vector<double>& positions)
{
    SweepColumn column;
    column.bNumbers = true;
    for (const double position : positions) {
        column.levels.push_back({std::to_string(position), position, position, position});
    }
    return column;
}

EAxisScale scaleOf(const std::vector<double>& positions)
{
    return levelAxis({}, columnWith(positions)).eScale;
}

/** @return the axis for panels with a line of these means */
PlotAxis axisFor(const std::string& sMeasure, const std::vector<double>& values)
{
    PlotPanel panel;
    panel.lines.emplace_back();
    for (const double value : values) {
        panel.lines.front().points.push_back({0.0, value, value, value});
    }
    return measureAxis(*measureKey(sMeasure), {panel});
}

std::vector<std::string> labelsOf(const PlotAxis& axis)
{
    std::vector<std::string> labels;
    for (const AxisTic& tic : axis.tics) {
        labels.push_back(tic.sLabel);
    }
    return labels;
}

/** @return a picture of one panel with two lines, of which the second has a gap */
PanelPicture pictureWithGap()
{
    PanelPicture picture;
    picture.sTitle = "It's quiet";
    picture.sKeyTitle = "noise";
    picture.xAxes.emplace_back();
    picture.yAxes.emplace_back();
    picture.bounds.push_back({0.5});
    PlotPanel panel;
    panel.lines.push_back({"low", {{0.0, 0.25, 0.25, 0.25}, {1.0, 0.5, 0.5, 0.5}}});
    panel.lines.push_back(
        {"high", {{0.0, 1.0, 1.0, 1.0}, {0.5, NO_MEASURE, NO_MEASURE, NO_MEASURE}, {1.0, 0.75, 0.75, 0.75}}});
    picture.rows.push_back({panel});
    return picture;
}
} // namespace

TEST(PlotPanelsTest, LevelsOfEqualRatiosAreOnALogarithmicAxis)
{
    EXPECT_EQ(scaleOf({0.01, 0.05, 0.1, 0.25}), EAxisScale::Logarithmic);
    EXPECT_EQ(scaleOf({1.0, 10.0, 100.0}), EAxisScale::Logarithmic);
    EXPECT_EQ(scaleOf({5.0, 100.0, 195.0}), EAxisScale::Linear);
    EXPECT_EQ(scaleOf({0.0, 0.01, 0.1, 1.0}), EAxisScale::Linear); // 0 has no place on it
    EXPECT_EQ(scaleOf({1.0, 2.0, 4.0}), EAxisScale::Linear);       // less than a decade
    EXPECT_EQ(scaleOf({3.0}), EAxisScale::Linear);
}

TEST(PlotPanelsTest, AParameterThatWasDrawnOnALogarithmicAxisIsShownOnOne)
{
    SweepParameter parameter;
    parameter.bLogarithmic = true;
    EXPECT_EQ(levelAxis(parameter, columnWith({1.0, 2.0})).eScale, EAxisScale::Logarithmic);
}

TEST(PlotPanelsTest, FewLevelsHaveALabelEach)
{
    EXPECT_EQ(levelAxis({}, columnWith({1.0, 2.0, 3.0})).tics.size(), 3U);
    EXPECT_EQ(levelAxis({}, columnWith({1, 2, 3, 4, 5, 6, 7, 8, 9})).tics.size(), 0U);
}

TEST(PlotPanelsTest, AMeasureOfAWideRangeIsOnALogarithmicAxisThatMayBeginAtZero)
{
    const PlotAxis withZero = axisFor("settling_max_ms", {0.0, 6.0, 5000.0});
    EXPECT_EQ(withZero.eScale, EAxisScale::LogarithmicWithZero);
    EXPECT_THAT(labelsOf(withZero), ElementsAre("0", "10", "100", "1000"));
    EXPECT_EQ(withZero.place(0.0), 0.0);
    EXPECT_DOUBLE_EQ(withZero.place(6.0), std::asinh(1.0));
    EXPECT_EQ(withZero.sTitle, "settling max in ms");
    const PlotAxis positive = axisFor("steady_rms_db", {0.01, 1.0});
    EXPECT_EQ(positive.eScale, EAxisScale::Logarithmic);
    EXPECT_THAT(labelsOf(positive), ElementsAre("0.01", "0.02", "0.05", "0.1", "0.2", "0.5", "1"));
    EXPECT_EQ(axisFor("steady_mean_db", {-0.001, 1.0}).eScale, EAxisScale::Linear);
    EXPECT_EQ(axisFor("overshoot_db", {0.5, 1.0}).eScale, EAxisScale::Linear);
    EXPECT_EQ(axisFor("limit_cycle_db", {0.0, 0.0}).eScale, EAxisScale::Linear);
    EXPECT_EQ(axisFor("overshoot_db", {NO_MEASURE}).maximum, 1.0);
    EXPECT_EQ(axisFor("detector_state_0_share", {0.5}).sTitle, "detector state 0 in %");
    EXPECT_EQ(axisFor("jumps_settled", {1.0}).sTitle, "jumps settled");
}

TEST(PlotPanelsTest, AGapInterruptsItsLine)
{
    const std::string sScript = panelScript(pictureWithGap(), EPicture::Svg);
    EXPECT_THAT(sScript, HasSubstr("$line_0_0_1 << END_OF_LINE\n0 1 1 1\n\n1 0.75 0.75 0.75\nEND_OF_LINE\n"));
}

TEST(PlotPanelsTest, LinesAreToldApartAndBoundsAreDrawn)
{
    const std::string sScript = panelScript(pictureWithGap(), EPicture::Svg);
    EXPECT_THAT(sScript, HasSubstr("'It''s quiet'"));
    EXPECT_THAT(sScript, HasSubstr("'mean by noise'"));
    EXPECT_THAT(sScript, HasSubstr("title 'low'"));
    EXPECT_THAT(sScript, HasSubstr("title 'high'"));
    EXPECT_THAT(sScript, HasSubstr("set arrow from graph 0, first 0.5 to graph 1, first 0.5 nohead"));
    EXPECT_THAT(sScript, Not(HasSubstr("filledcurves")));
}

TEST(PlotPanelsTest, ALineAloneHasItsRange)
{
    PanelPicture picture = pictureWithGap();
    picture.sKeyTitle.clear();
    picture.rows.front().front().lines.pop_back();
    EXPECT_THAT(panelScript(picture, EPicture::Png), HasSubstr("using 1:3:4 with filledcurves"));
}
