#include "Unit/Simulator/MeasureText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace
{
/** How a unit at the end of a name is shown. */
struct Unit
{
    std::string_view ending;
    const char* pUnit;
    int nDecimals;
    double factor;
};

constexpr Unit COUNT = {"", "", 0, 1.0};

const Unit& unitOf(const RunMeasureKey& key)
{
    static constexpr std::array<Unit, 4> UNITS = {
        {{"_db", " dB", 3, 1.0}, {"_ms", " ms", 1, 1.0}, {"_s", " s", 3, 1.0}, {"_share", " %", 2, 100.0}}};
    const std::string_view name = key.pName;
    for (const Unit& unit : UNITS) {
        if (name.ends_with(unit.ending)) {
            return unit;
        }
    }
    return COUNT;
}

/** @return a bound in the shortest form that is exact */
std::string boundText(double value)
{
    return fmt::format("{}", value);
}
} // namespace

std::string measureUnit(const RunMeasureKey& key)
{
    const std::string_view unit = unitOf(key).pUnit;
    return std::string(unit.substr(unit.empty() ? 0 : 1));
}

std::string measureTitle(const RunMeasureKey& key)
{
    std::string sTitle = key.pName;
    sTitle.erase(sTitle.size() - unitOf(key).ending.size());
    std::replace(sTitle.begin(), sTitle.end(), '_', ' ');
    return sTitle;
}

double measureScale(const RunMeasureKey& key)
{
    return unitOf(key).factor;
}

std::string measureText(const RunMeasureKey& key, double value)
{
    const Unit& unit = unitOf(key);
    return std::isnan(value) ? std::string("-")
                             : fmt::format("{:.{}f}{}", value * unit.factor, unit.nDecimals, unit.pUnit);
}

std::string bandText(const MeasureBand& band)
{
    const Unit& unit = unitOf(*band.pMeasure);
    const char* const pUnit = unit.factor == 1.0 ? unit.pUnit : "";
    if (std::isnan(band.minimum)) {
        return "none";
    }
    if (band.minimum == band.maximum) {
        return fmt::format("exactly {}{}", boundText(band.minimum), pUnit);
    }
    if (std::isinf(band.minimum)) {
        return std::isinf(band.maximum) ? std::string("any")
                                        : fmt::format("at most {}{}", boundText(band.maximum), pUnit);
    }
    if (std::isinf(band.maximum)) {
        return fmt::format("at least {}{}", boundText(band.minimum), pUnit);
    }
    return fmt::format("{} to {}{}", boundText(band.minimum), boundText(band.maximum), pUnit);
}

const char* measureGroup(const RunMeasureKey& key)
{
    using M = RunMeasures;
    static constexpr std::array<std::pair<double RunMeasures::*, const char*>, 11> GROUPS = {{
        {&M::steps, "steps"},
        {&M::switchOns, "switching on"},
        {&M::switchOffs, "switching off"},
        {&M::jumps, "jumps"},
        {&M::steadySteps, "steady error"},
        {&M::limitCycleDb, "limit cycle"},
        {&M::largestPctrlStepDb, "control power"},
        {&M::spuriousSteps, "spurious emission"},
        {&M::outside1DbS, "time outside"},
        {&M::detectorState0Share, "detector"},
        {&M::requestErrorMeanDb, "against the request"},
    }};
    for (const auto& [pField, pHeading] : GROUPS) {
        if (key.pField == pField) {
            return pHeading;
        }
    }
    return nullptr;
}
