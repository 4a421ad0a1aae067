#include "Unit/Client/private/TransientPlot.h"

#include "Unit/Client/private/AnswerFields.h"
#include "Unit/Plot/Gnuplot.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>

using nlohmann::ordered_json;

namespace
{
constexpr const char* NO_VALUE = "?"; // a power that is off or unknown would spoil the scale

/** A line in a plot; dash and point tell the lines apart where colours do not. */
struct Series
{
    int nColumn; // of the data, from 2 on
    const char* pMember;
    const char* pTitle;
    const char* pStyle;
};

constexpr std::array<Series, 3> POWERS = {{
    {2, "TxRfPowerSet", "power set", "dashtype 1 pointtype 1 linecolor rgb '#0072b2'"},
    {3, "TxRfPowerTarget", "target", "dashtype 2 pointtype 4 linecolor rgb '#d55e00'"},
    {4, "TxRfDetectedPower", "detected", "dashtype 4 pointtype 8 linecolor rgb '#000000'"},
}};
constexpr Series IF_POWER = {5, "TxIfPower", "IF power (left)", "dashtype 1 pointtype 1 linecolor rgb '#0072b2'"};
constexpr Series GAIN = {6, "TxRfGain", "gain (right)", "dashtype 2 pointtype 4 linecolor rgb '#d55e00'"};

/** The samples as text, column by column. */
struct Samples
{
    std::string sData;
    std::array<bool, 7> hasValues{};
};

Samples samplesOf(const ordered_json& answer)
{
    Samples samples;
    int nSample = 0;
    for (const ordered_json& object : arrayOf(answer, "OPCLog")) {
        const AnswerFields fields(object, "");
        samples.sData += fmt::format("{}", ++nSample);
        for (const Series& series : {POWERS[0], POWERS[1], POWERS[2], IF_POWER, GAIN}) {
            const bool bNumber = object.is_object() && fields.has(series.pMember) && object[series.pMember].is_number();
            const bool bGain = series.nColumn == GAIN.nColumn;
            const std::string sValue = bGain ? fields.gain(series.pMember) : fields.power(series.pMember);
            const bool bValue = bNumber && !sValue.empty();
            samples.sData += " " + (bValue ? sValue : std::string(NO_VALUE));
            samples.hasValues.at(static_cast<std::size_t>(series.nColumn)) |= bValue;
        }
        samples.sData += "\n";
    }
    return samples;
}

std::string line(const Samples& samples, const Series& series, const char* pAxes)
{
    if (!samples.hasValues.at(static_cast<std::size_t>(series.nColumn))) {
        return fmt::format("NaN axes {} title '{}: no values'", pAxes, series.pTitle);
    }
    return fmt::format("$samples using 1:{} axes {} with linespoints linewidth 1.5 pointinterval 8 {} title '{}'",
                       series.nColumn, pAxes, series.pStyle, series.pTitle);
}

/** An axis on which nothing is shown needs a range of its own. */
std::string rangeOf(const char* pAxis, bool bHasValues)
{
    return bHasValues ? fmt::format("set {}range [*:*]\n", pAxis) : fmt::format("set {}range [0:1]\n", pAxis);
}

void copyTo(const std::string& sPath, const std::string& sPicture)
{
    const auto fail = [&sPath] {
        throw std::runtime_error(fmt::format("--plot: {}: cannot be written: {}", sPath, std::strerror(errno)));
    };
    std::FILE* pFile = std::fopen(sPath.c_str(), "wbe");
    if (pFile == nullptr) {
        fail();
    }
    const bool bWritten = std::fwrite(sPicture.data(), 1, sPicture.size(), pFile) == sPicture.size();
    if (std::fclose(pFile) != 0 || !bWritten) {
        fail();
    }
}
} // namespace

std::string transientPlotScript(const ordered_json& answer, bool bSvg)
{
    const Samples samples = samplesOf(answer);
    const bool bPowers = samples.hasValues[2] || samples.hasValues[3] || samples.hasValues[4];
    std::string sScript = bSvg ? "set terminal svg size 900,700 font 'sans-serif,13' background rgb 'white'\n"
                               : "set terminal pngcairo size 900,700 font 'sans,11'\n";
    sScript += "set encoding utf8\nset datafile missing '" + std::string(NO_VALUE) + "'\n";
    sScript += "$samples << END_OF_SAMPLES\n" + samples.sData + "END_OF_SAMPLES\n";
    const bool bChannel = answer.contains("RadioChannelID") && answer.at("RadioChannelID").is_number_integer();
    sScript += fmt::format("set multiplot layout 2,1 title 'Transient log{}'\n",
                           bChannel ? fmt::format(" of channel {}", answer.at("RadioChannelID").get<int>()) : "");
    sScript += fmt::format(
        "set grid\nset key below\nset offsets graph 0, 0, 0.05, 0.05\nset xrange [1:{}]\nset xlabel 'sample'\n",
        std::max<std::size_t>(arrayOf(answer, "OPCLog").size(), 2));
    sScript += "set title 'Power'\nset ylabel 'power in dBm'\n" + rangeOf("y", bPowers);
    sScript += fmt::format("plot {}, {}, {}\n", line(samples, POWERS[0], "x1y1"), line(samples, POWERS[1], "x1y1"),
                           line(samples, POWERS[2], "x1y1"));
    sScript += "set title 'IF power and gain'\nset ylabel 'IF power in dBm'\nset y2label 'gain in dB'\n"
               "set ytics nomirror\nset y2tics\n";
    sScript += rangeOf("y", samples.hasValues[5]) + rangeOf("y2", samples.hasValues[6]);
    sScript +=
        fmt::format("plot {}, {}\nunset multiplot\n", line(samples, IF_POWER, "x1y1"), line(samples, GAIN, "x1y2"));
    return sScript;
}

void plotTransientLog(const ordered_json& answer, const std::string& sPath)
{
    copyTo(sPath, runGnuplot(transientPlotScript(answer, sPath.ends_with(".svg"))));
}
