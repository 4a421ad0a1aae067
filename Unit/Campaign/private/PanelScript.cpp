#include "Unit/Campaign/private/PlotPanels.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace
{
// In points of an SVG drawing.
constexpr double LEFT = 84.0;
constexpr double RIGHT = 18.0;
constexpr double TOP = 72.0; // title, what tells lines apart, and key
constexpr double BOTTOM = 56.0;
constexpr double PANEL_WIDTH = 270.0;
constexpr double ONLY_PANEL_WIDTH = 620.0;
constexpr double PANEL_HEIGHT = 170.0;
constexpr double GAP = 16.0;
constexpr double HEADING = 20.0;
constexpr double KEY_BOTTOM = 64.0; // from the top, leaving room for headings
constexpr std::size_t MOST_POINTS = 24;
constexpr double PNG_SCALE = 1.5;
constexpr std::size_t LONGEST_TITLE = 110;

constexpr const char* BAND = "fillcolor rgb '#0072b2' fillstyle transparent solid 0.25 noborder";
constexpr const char* BOUND = "dashtype 3 linewidth 1.5 linecolor rgb '#aa0000'";

/** Dashes and points tell lines apart where colours do not. */
constexpr std::array<const char*, 8> STYLES = {
    "dashtype 1 pointtype 7 linecolor rgb '#000000'", "dashtype 2 pointtype 5 linecolor rgb '#0072b2'",
    "dashtype 4 pointtype 9 linecolor rgb '#d55e00'", "dashtype 5 pointtype 13 linecolor rgb '#009e73'",
    "dashtype 1 pointtype 6 linecolor rgb '#cc79a7'", "dashtype 2 pointtype 4 linecolor rgb '#8c6d00'",
    "dashtype 4 pointtype 8 linecolor rgb '#56b4e9'", "dashtype 5 pointtype 12 linecolor rgb '#777777'"};

/** Writes the script, row by row from the top. */
class Script
{
public:
    explicit Script(const PanelPicture& picture)
        : m_picture(picture), m_columns(static_cast<double>(picture.xAxes.size())),
          m_panelWidth(picture.xAxes.size() == 1 ? ONLY_PANEL_WIDTH : PANEL_WIDTH),
          m_heading(picture.rows.front().front().sHeading.empty() ? 0.0 : HEADING),
          m_width(LEFT + RIGHT + m_columns * m_panelWidth + (m_columns - 1.0) * GAP),
          m_height(TOP + m_heading + BOTTOM + static_cast<double>(picture.rows.size()) * (PANEL_HEIGHT + GAP) - GAP)
    {}

    std::string text(EPicture ePicture)
    {
        if (ePicture == EPicture::Svg) {
            add("set terminal svg size {:.0f},{:.0f} font 'sans-serif,13' background rgb 'white'\n", m_width, m_height);
        }
        else {
            add("set terminal pngcairo size {:.0f},{:.0f} font 'sans,10' fontscale 1.5 linewidth 1.5 pointscale 1.5\n",
                PNG_SCALE * m_width, PNG_SCALE * m_height);
        }
        m_sText += "set encoding utf8\n";
        addData();
        m_sText += "set multiplot\n";
        addKey();
        m_sText += "set grid linecolor rgb '#dddddd' linetype 1\nset border 31 linecolor rgb '#777777'\n"
                   "set tics textcolor rgb '#000000'\n";
        for (std::size_t nRow = 0; nRow < m_picture.rows.size(); ++nRow) {
            for (std::size_t nColumn = 0; nColumn < m_picture.xAxes.size(); ++nColumn) {
                addPanel(nRow, nColumn);
            }
        }
        m_sText += "unset multiplot\n";
        return std::move(m_sText);
    }

private:
    template <class... TArguments> void add(const char* pFormat, const TArguments&... arguments)
    {
        fmt::format_to(std::back_inserter(m_sText), fmt::runtime(pFormat), arguments...);
    }

    static std::string blockName(std::size_t nRow, std::size_t nColumn, std::size_t nLine)
    {
        return fmt::format("$line_{}_{}_{}", nRow, nColumn, nLine);
    }

    void addData()
    {
        for (std::size_t nRow = 0; nRow < m_picture.rows.size(); ++nRow) {
            for (std::size_t nColumn = 0; nColumn < m_picture.xAxes.size(); ++nColumn) {
                const auto& lines = m_picture.rows[nRow][nColumn].lines;
                for (std::size_t nLine = 0; nLine < lines.size(); ++nLine) {
                    add("{} << END_OF_LINE\n", blockName(nRow, nColumn, nLine));
                    addPoints(lines[nLine], m_picture.xAxes[nColumn], m_picture.yAxes[nRow]);
                    m_sText += "END_OF_LINE\n";
                }
            }
        }
    }

    void addPoints(const PlotLine& line, const PlotAxis& x, const PlotAxis& y)
    {
        for (const PlotPoint& point : line.points) {
            if (std::isnan(point.mean)) {
                m_sText += "\n"; // the line goes on behind it
                continue;
            }
            add("{:.9g} {:.9g} {:.9g} {:.9g}\n", x.place(point.x), y.place(point.mean), y.place(point.minimum),
                y.place(point.maximum));
        }
    }

    void addAxis(const char* pAxis, const PlotAxis& axis, bool bLabelled)
    {
        constexpr double MARGIN = 0.05; // of the axis, on either side
        const double first = axis.place(axis.minimum);
        const double last = axis.place(axis.maximum);
        const double margin = MARGIN * (last - first);
        add("set {}range [{:.9g}:{:.9g}]\n", pAxis, first - margin, last + margin);
        add("set {0}tics autofreq\nset format {0} '{1}'\n", pAxis, bLabelled ? "%g" : "");
        if (!axis.tics.empty()) {
            std::string sTics;
            for (const AxisTic& tic : axis.tics) {
                const std::string sLabel = bLabelled ? gnuplotText(tic.sLabel, LONGEST_TITLE) : "''";
                sTics += fmt::format("{}{} {:.9g}", sTics.empty() ? "" : ", ", sLabel, axis.place(tic.value));
            }
            add("set {}tics ({}) noenhanced\n", pAxis, sTics);
        }
        if (bLabelled) {
            add("set {}label {} noenhanced\n", pAxis, gnuplotText(axis.sTitle, LONGEST_TITLE));
        }
        else {
            add("unset {}label\n", pAxis);
        }
    }

    void addPanel(std::size_t nRow, std::size_t nColumn)
    {
        const double left = LEFT + static_cast<double>(nColumn) * (m_panelWidth + GAP);
        const double top = TOP + m_heading + static_cast<double>(nRow) * (PANEL_HEIGHT + GAP);
        add("set lmargin at screen {:.5f}\nset rmargin at screen {:.5f}\n", left / m_width,
            (left + m_panelWidth) / m_width);
        add("set tmargin at screen {:.5f}\nset bmargin at screen {:.5f}\n", 1.0 - top / m_height,
            1.0 - (top + PANEL_HEIGHT) / m_height);
        addAxis("x", m_picture.xAxes[nColumn], nRow + 1 == m_picture.rows.size());
        addAxis("y", m_picture.yAxes[nRow], nColumn == 0);
        const PlotPanel& panel = m_picture.rows[nRow][nColumn];
        if (nRow == 0 && !panel.sHeading.empty()) {
            add("set label {} at graph 0.5, graph 1 center offset 0, 0.7 noenhanced\n",
                gnuplotText(panel.sHeading, LONGEST_TITLE));
        }
        addBounds(nRow);
        addLines(nRow, nColumn);
        m_sText += "unset label\nunset arrow\n";
    }

    void addBounds(std::size_t nRow)
    {
        const PlotAxis& axis = m_picture.yAxes[nRow];
        for (const double bound : m_picture.bounds[nRow]) {
            if (bound >= axis.minimum && bound <= axis.maximum) {
                add("set arrow from graph 0, first {0:.9g} to graph 1, first {0:.9g} nohead back {1}\n",
                    axis.place(bound), BOUND);
            }
        }
    }

    /** Draws title and key over the whole width: those of a panel would have to fit into it. */
    void addKey()
    {
        add("set label {} at screen {:.4f}, screen {:.4f} left noenhanced font ',15'\n",
            gnuplotText(m_picture.sTitle, LONGEST_TITLE), LEFT / m_width, 1.0 - 18.0 / m_height);
        add("set label {} at screen {:.4f}, screen {:.4f} left noenhanced\n",
            gnuplotText(m_picture.sKeyTitle.empty() ? "" : "mean by " + m_picture.sKeyTitle, LONGEST_TITLE),
            LEFT / m_width, 1.0 - 38.0 / m_height);
        add("set key at screen {:.5f}, screen {:.5f} left bottom Left reverse horizontal maxrows 1 samplen 3 width 1 "
            "noenhanced\n",
            LEFT / m_width, 1.0 - KEY_BOTTOM / m_height);
        add("set lmargin at screen {:.5f}\nset rmargin at screen 1\n", LEFT / m_width);
        m_sText += "unset border\nunset tics\nset xrange [0:1]\nset yrange [0:1]\nplot NaN notitle";
        const auto& lines = m_picture.rows.front().front().lines;
        if (m_picture.sKeyTitle.empty()) {
            add(", keyentry with boxes {} title 'lowest to highest run'", BAND);
        }
        for (std::size_t nLine = 0; nLine < lines.size(); ++nLine) {
            add(", keyentry with linespoints linewidth 1.5 pointsize 0.5 {} title {}", STYLES.at(nLine % STYLES.size()),
                gnuplotText(lines[nLine].sTitle, LONGEST_TITLE));
        }
        if (std::any_of(m_picture.bounds.begin(), m_picture.bounds.end(),
                        [](const std::vector<double>& bounds) { return !bounds.empty(); }))
        {
            add(", keyentry with lines {} title 'bound'", BOUND);
        }
        m_sText += "\nunset key\nunset label\n";
    }

    void addLines(std::size_t nRow, std::size_t nColumn)
    {
        const auto& lines = m_picture.rows[nRow][nColumn].lines;
        m_sText += "plot NaN notitle";
        if (m_picture.sKeyTitle.empty()) {
            add(", {} using 1:3:4 with filledcurves {} notitle", blockName(nRow, nColumn, 0), BAND);
        }
        for (std::size_t nLine = 0; nLine < lines.size(); ++nLine) {
            add(", {} using 1:2 with {} linewidth 1.5 pointsize 0.45 {} notitle", blockName(nRow, nColumn, nLine),
                needsPoints(lines[nLine]) ? "linespoints" : "lines", STYLES.at(nLine % STYLES.size()));
        }
        m_sText += "\n";
    }

    /** @return whether points tell something: not where they are close, but between gaps there may be only one */
    static bool needsPoints(const PlotLine& line)
    {
        return line.points.size() <= MOST_POINTS ||
               std::any_of(line.points.begin(), line.points.end(),
                           [](const PlotPoint& point) { return std::isnan(point.mean); });
    }

    const PanelPicture& m_picture;
    double m_columns;
    double m_panelWidth;
    double m_heading;
    double m_width;
    double m_height;
    std::string m_sText;
};
} // namespace

std::string panelScript(const PanelPicture& picture, EPicture ePicture)
{
    return Script(picture).text(ePicture);
}
