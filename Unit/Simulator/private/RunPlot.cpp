#include "Unit/Simulator/RunPlot.h"

#include "Unit/Plot/Gnuplot.h"
#include "Unit/Simulator/private/EventText.h"
#include "Unit/Simulator/private/PlotData.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

namespace
{
constexpr std::size_t MOST_BUCKETS = 1024; // about as many as a picture has columns
constexpr std::size_t LONGEST_LABEL = 48;
constexpr double CLOSEST_LABELS = 0.018; // of the time axis; labels closer together could not be read
constexpr double LEAST_TEMPERATURE_MOVE = 0.05;
constexpr double LEAST_FREQUENCY_MOVE_MHZ = 0.0005;
constexpr double HIGHEST_PANEL = 0.960; // of the picture; the title is above
constexpr double LOWEST_PANEL = 0.075;  // the time axis is below
constexpr double PANEL_GAP = 0.05;      // with the next panel's key

constexpr double KEY_GAP = 0.003; // below a key

/** A line in a panel; dashes tell lines apart where colours do not. */
struct Curve
{
    EQuantity eQuantity;
    int nColumn;
    const char* pTitle;
    const char* pStyle;
};

constexpr std::array<Curve, 4> POWERS = {{
    {EQuantity::OutputPower, eCOLUMN_OUTPUT, "output", "dashtype 1 linewidth 1.6 linecolor rgb '#000000'"},
    {EQuantity::RequestedPower, eCOLUMN_REQUESTED, "requested", "dashtype 4 linewidth 1.6 linecolor rgb '#0072b2'"},
    {EQuantity::TargetPower, eCOLUMN_TARGET, "target", "dashtype 2 linewidth 1.6 linecolor rgb '#d55e00'"},
    {EQuantity::ControlPower, eCOLUMN_PCTRL, "Pctrl", "dashtype 5 linewidth 1.3 linecolor rgb '#009e73'"},
}};

/** Writes the script, panel by panel from the top. */
class Script
{
public:
    Script(const RunTrack& track, const Scenario& scenario)
        : m_scenario(scenario), m_buckets(joinedBuckets(track.buckets(), MOST_BUCKETS)),
          m_axis(timeAxisFor(scenario.durationSeconds)), m_length(scenario.durationSeconds / m_axis.secondsPerUnit),
          m_bEnvelope(!m_buckets.empty() && m_buckets.front().nSteps > 1),
          m_bTemperature(moves(EQuantity::Temperature, LEAST_TEMPERATURE_MOVE)),
          m_bFrequency(moves(EQuantity::Frequency, LEAST_FREQUENCY_MOVE_MHZ))
    {}

    std::string text(EPicture ePicture)
    {
        m_sText = ePicture == EPicture::Svg
                      ? "set terminal svg size 960,800 font 'sans-serif,13' background rgb 'white'\n"
                      : "set terminal pngcairo size 1440,1200 font 'sans,11' fontscale 1.3 linewidth 1.4\n";
        add("set encoding utf8\n$run << END_OF_RUN\n{}END_OF_RUN\n", plotData(m_buckets, m_axis));
        add("$state << END_OF_STATE\n{}END_OF_STATE\n", stateData(m_buckets, m_axis));
        add("set multiplot\nset lmargin at screen 0.085\nset rmargin at screen 0.915\nset xrange [0:{:.9g}]\n",
            m_length);
        m_sText += "set grid linecolor rgb '#dddddd' linetype 1\nset border linecolor rgb '#777777'\n"
                   "set tics textcolor rgb '#000000'\n"
                   "set format x ''\n";
        addTitle();
        addMarks();
        const bool bSurroundings = m_bTemperature || m_bFrequency;
        const double height = HIGHEST_PANEL - LOWEST_PANEL - PANEL_GAP * (bSurroundings ? 4.0 : 3.0);
        powersPanel(height * (bSurroundings ? 0.42 : 0.5));
        errorPanel(height * (bSurroundings ? 0.28 : 0.34));
        if (bSurroundings) {
            surroundingsPanel(height * 0.15);
        }
        statePanel(height * (bSurroundings ? 0.15 : 0.16));
        m_sText += "unset multiplot\n";
        return std::move(m_sText);
    }

private:
    template <class... TArguments> void add(const char* pFormat, const TArguments&... arguments)
    {
        fmt::format_to(std::back_inserter(m_sText), fmt::runtime(pFormat), arguments...);
    }

    bool moves(EQuantity eQuantity, double leastMove) const
    {
        const ValueRange range = rangeOver(m_buckets, eQuantity);
        return range.hasValues() && range.maximum - range.minimum > leastMove;
    }

    void addTitle()
    {
        const std::string sTitle = m_scenario.sTitle.empty() ? m_scenario.sPath : m_scenario.sTitle;
        add("set label {} at screen 0.085, screen 0.980 left noenhanced font ',15'\n", gnuplotText(sTitle, 100));
    }

    void addMarks()
    {
        double lastLabelled = -std::numeric_limits<double>::infinity();
        for (const EventMark& mark : marksOf(m_scenario)) {
            const double time = mark.seconds / m_axis.secondsPerUnit;
            add("set arrow from {0:.9g}, graph 0 to {0:.9g}, graph 1 nohead back linecolor rgb '#888888' dashtype 3\n",
                time);
            if (!mark.sText.empty() && time - lastLabelled >= CLOSEST_LABELS * m_length) {
                add("set label {} at {:.9g}, graph 0.03 rotate by 90 left offset 0.7, 0 noenhanced front font ',10' "
                    "textcolor rgb '#444444'\n",
                    gnuplotText(mark.sText, LONGEST_LABEL), time);
                lastLabelled = time;
            }
        }
    }

    void beginPanel(double height)
    {
        m_top -= m_bFirst ? 0.0 : PANEL_GAP;
        m_bFirst = false;
        add("set tmargin at screen {:.4f}\nset bmargin at screen {:.4f}\n", m_top, m_top - height);
        add("set key at screen 0.085, screen {:.4f} left bottom Left reverse horizontal maxrows 1 samplen 2.5 width 1 "
            "noenhanced\n",
            m_top + KEY_GAP);
        m_top -= height;
    }

    void addEnvelope(EQuantity eQuantity, int nLowest, int nHighest)
    {
        if (m_bEnvelope && rangeOver(m_buckets, eQuantity).hasValues()) {
            add(", $run using 1:{}:{} with filledcurves fillcolor rgb '#000000' fillstyle transparent solid 0.2 "
                "noborder notitle",
                nLowest, nHighest);
        }
    }

    void powersPanel(double height)
    {
        beginPanel(height);
        ValueRange settings;
        for (const EQuantity eQuantity : {EQuantity::RequestedPower, EQuantity::TargetPower, EQuantity::ControlPower}) {
            settings.add(rangeOver(m_buckets, eQuantity));
        }
        const ValueRange output = rangeOver(m_buckets, EQuantity::OutputPower);
        constexpr double MOST_BELOW_DB = 10.0; // leakage while off would spoil the scale
        const double lowest = std::max(std::min(settings.minimum, output.minimum), settings.minimum - MOST_BELOW_DB);
        addRange("y", lowest, std::max(settings.maximum, output.maximum));
        m_sText += "set ylabel 'power in dBm'\nplot NaN notitle";
        addEnvelope(EQuantity::OutputPower, eCOLUMN_OUTPUT_MIN, eCOLUMN_OUTPUT_MAX);
        for (const Curve& curve : POWERS) {
            addCurve(curve);
        }
        m_sText += "\nunset label\n";
    }

    void addRange(const char* pAxis, double lowest, double highest)
    {
        const bool bKnown = std::isfinite(lowest) && std::isfinite(highest);
        const double margin = bKnown ? std::max(0.06 * (highest - lowest), 0.25) : 1.0;
        add("set {}range [{:.6g}:{:.6g}]\n", pAxis, bKnown ? lowest - margin : 0.0, bKnown ? highest + margin : 1.0);
    }

    void addCurve(const Curve& curve)
    {
        if (rangeOver(m_buckets, curve.eQuantity).hasValues()) {
            add(", $run using 1:{} with lines {} title '{}'", curve.nColumn, curve.pStyle, curve.pTitle);
        }
    }

    void errorPanel(double height)
    {
        beginPanel(height);
        const ValueRange error = rangeOver(m_buckets, EQuantity::OutputError);
        const double largest = error.hasValues() ? std::max(std::abs(error.minimum), std::abs(error.maximum)) : 0.0;
        const double band = m_scenario.measures.settlingBandDb;
        double scale = 3.0;
        for (const double narrower : {1.25, 2.5 * band}) {
            scale = largest <= 0.96 * narrower ? narrower : scale;
        }
        add("set yrange [{0:.6g}:{1:.6g}]\nset ylabel 'output − target in dB'\n", -scale, scale);
        for (const auto& [halfWidth, pColour] : {std::pair(1.0, "#e69f00"), std::pair(band, "#0072b2")}) {
            const double edge = std::min(halfWidth, scale);
            add("set object rectangle from graph 0, first {0:.6g} to graph 1, first {1:.6g} behind fillcolor rgb '{2}' "
                "fillstyle transparent solid 0.16 noborder\n",
                -edge, edge, pColour);
        }
        m_sText += "plot NaN notitle";
        addEnvelope(EQuantity::OutputError, eCOLUMN_ERROR_MIN, eCOLUMN_ERROR_MAX);
        addCurve({EQuantity::OutputError, eCOLUMN_ERROR, largest > scale ? "error (cut at ±3 dB)" : "error",
                  "dashtype 1 linewidth 1.3 linecolor rgb '#000000'"});
        add(", keyentry with boxes fillcolor rgb '#0072b2' fillstyle transparent solid 0.35 noborder title '±{} dB'",
            band);
        if (scale > 1.0) {
            m_sText += ", keyentry with boxes fillcolor rgb '#e69f00' fillstyle transparent solid 0.3 noborder "
                       "title '±1 dB'";
        }
        m_sText += "\nunset object\n";
    }

    void surroundingsPanel(double height)
    {
        beginPanel(height);
        const ValueRange temperature = rangeOver(m_buckets, EQuantity::Temperature);
        const ValueRange frequency = rangeOver(m_buckets, EQuantity::Frequency);
        if (m_bTemperature) {
            addRange("y", temperature.minimum, temperature.maximum);
            m_sText += "set ylabel '°C'\n";
        }
        else {
            m_sText += "unset ytics\nunset ylabel\nset yrange [0:1]\n";
        }
        if (m_bFrequency) {
            addRange("y2", frequency.minimum, frequency.maximum);
            m_sText += "set y2label 'MHz'\nset y2tics\n";
        }
        m_sText += "plot NaN notitle";
        if (m_bTemperature) {
            add(", $run using 1:{} with lines linewidth 1.4 linecolor rgb '#d55e00' title 'temperature{}'",
                eCOLUMN_TEMPERATURE, m_bFrequency ? " (left)" : "");
        }
        if (m_bFrequency) {
            add(", $run using 1:{} axes x1y2 with lines dashtype 2 linewidth 1.4 linecolor rgb '#0072b2' title "
                "'frequency (right)'",
                eCOLUMN_FREQUENCY);
        }
        m_sText += "\nunset y2tics\nunset y2label\nset ytics autofreq textcolor rgb '#000000'\n";
    }

    void statePanel(double height)
    {
        beginPanel(height);
        add("set yrange [-0.4:3.4]\nset ytics {}\nunset ylabel\nset format x '%g'\nset xlabel 'time in {}' offset 0, "
            "0.4\n",
            stateTics(), m_axis.pUnit);
        m_sText += "plot $state using 1:2 with steps linewidth 1.8 linecolor rgb '#000000' notitle\n";
    }

    const Scenario& m_scenario;
    std::vector<StepBucket> m_buckets;
    TimeAxis m_axis;
    double m_length;
    bool m_bEnvelope;
    bool m_bTemperature;
    bool m_bFrequency;
    double m_top = HIGHEST_PANEL - PANEL_GAP; // below the first panel's key
    bool m_bFirst = true;
    std::string m_sText;
};
} // namespace

std::string runPlotScript(const RunTrack& track, const Scenario& scenario, EPicture ePicture)
{
    return Script(track, scenario).text(ePicture);
}

std::string runPlot(const RunTrack& track, const Scenario& scenario, EPicture ePicture)
{
    return runGnuplot(runPlotScript(track, scenario, ePicture));
}
