#include "Unit/Campaign/private/SweepValues.h"

#include "Unit/Campaign/private/RunDraw.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace
{
constexpr double LARGEST = 1e15; // up to here doubles are exact whole numbers, as are draws
constexpr std::int64_t MOST_VALUES = 10000;

constexpr std::array<const char*, 4> DISTRIBUTIONS = {"uniform", "log-uniform", "normal", "choice"};

SweepValue valueOf(const TomlTable& table, const toml::node& node)
{
    if (const auto number = node.value_exact<double>(); number && std::isfinite(*number)) {
        return {fmt::format("{}", *number), *number};
    }
    if (const auto nInteger = node.value_exact<std::int64_t>()) {
        return {fmt::format("{}", *nInteger), static_cast<double>(*nInteger)};
    }
    if (const auto bValue = node.value_exact<bool>()) {
        return {*bValue ? "true" : "false", std::nullopt};
    }
    const auto sText = node.value_exact<std::string>();
    if (!sText || sText->find_first_of("\"\\\n\r\t'") != std::string::npos) {
        table.fail("values",
                   fmt::format("values in {} has {} at line {}, column {}; each must be a finite number, true, "
                               "false or a text without quotes, backslashes and line breaks",
                               "[[parameter]]", sText ? "such a text" : "something else", node.source().begin.line,
                               node.source().begin.column));
    }
    return {"\"" + *sText + "\"", std::nullopt};
}

std::vector<SweepValue> listedValues(const TomlTable& table)
{
    const toml::array* pArray = table.raw().get("values") == nullptr ? nullptr : table.raw().get("values")->as_array();
    if (pArray == nullptr || pArray->empty()) {
        table.fail("values", pArray == nullptr
                                 ? "[[parameter]] needs values = [..], a list"
                                 : "values in [[parameter]] is an empty list; it needs one value at least");
    }
    std::vector<SweepValue> values;
    for (const toml::node& node : *pArray) {
        const SweepValue value = valueOf(table, node);
        const bool bTwice = std::any_of(values.begin(), values.end(),
                                        [&value](const SweepValue& other) { return other.sToml == value.sToml; });
        if (bTwice) {
            table.fail("values",
                       fmt::format("values in [[parameter]] has {} twice; each value counts once, and repeats "
                                   "in [sweep] makes more runs of each",
                                   value.sToml));
        }
        values.push_back(value);
    }
    return values;
}

double requiredNumber(const TomlTable& table, const std::string& sKey)
{
    const auto value = table.number(sKey, -LARGEST, LARGEST);
    if (!value) {
        table.fail("", fmt::format("[[parameter]] has no key {}; add it", sKey));
    }
    return *value;
}

double rounded(double value, bool bInteger)
{
    return bInteger ? std::floor(value + 0.5) : nineDigits(value);
}

/** Reads from, to and count. */
std::vector<SweepValue> spacedValues(const TomlTable& table, SweepParameter& parameter)
{
    const double from = requiredNumber(table, "from");
    const double to = requiredNumber(table, "to");
    const auto nCount = static_cast<int>(table.requiredInteger("count", 2, MOST_VALUES));
    const std::string sScale = table.text("scale").value_or("linear");
    if (sScale != "linear" && sScale != "log") {
        table.fail("scale", fmt::format("scale in [[parameter]] is \"{}\"; it must be \"linear\" or \"log\"", sScale));
    }
    parameter.bLogarithmic = sScale == "log";
    if (parameter.bLogarithmic && !(from > 0.0 && to > 0.0)) {
        table.fail(from > 0.0 ? "to" : "from",
                   fmt::format("{} in [[parameter]] is {}; a logarithmic scale needs a number above 0",
                               from > 0.0 ? "to" : "from", from > 0.0 ? to : from));
    }
    if (from == to) {
        table.fail("to", fmt::format("from and to in [[parameter]] are both {}; they must differ", from));
    }
    std::vector<SweepValue> values;
    for (int n = 0; n < nCount; ++n) {
        const double share = static_cast<double>(n) / (nCount - 1);
        const double between =
            parameter.bLogarithmic ? from * exactExp(share * exactLog(to / from)) : from + (to - from) * share;
        const double value = n == 0 ? from : n == nCount - 1 ? to : between;
        const SweepValue read = numberValue(rounded(value, parameter.bInteger));
        if (values.empty() || values.back().sToml != read.sToml) { // rounding may make neighbours equal
            values.push_back(read);
        }
    }
    return values;
}

void readBounds(const TomlTable& table, SweepParameter& parameter, bool bRequired)
{
    parameter.minimum = bRequired ? requiredNumber(table, "minimum") : table.number("minimum", -LARGEST, LARGEST);
    parameter.maximum = bRequired ? requiredNumber(table, "maximum") : table.number("maximum", -LARGEST, LARGEST);
    if (parameter.minimum && parameter.maximum && !(*parameter.minimum < *parameter.maximum)) {
        table.fail("maximum", fmt::format("maximum in [[parameter]] is {}; it must be greater than minimum, {}",
                                          *parameter.maximum, *parameter.minimum));
    }
    for (const char* pKey : {"minimum", "maximum"}) {
        const auto& bound = std::string(pKey) == "minimum" ? parameter.minimum : parameter.maximum;
        if (parameter.bInteger && bound && *bound != std::floor(*bound)) {
            table.fail(pKey, fmt::format("{} in [[parameter]] is {}; with integer = true it must be a whole number",
                                         pKey, *bound));
        }
    }
}

EDistribution distributionOf(const TomlTable& table)
{
    const std::string sName = table.requiredText("distribution");
    const auto* const pFound = std::find(DISTRIBUTIONS.begin(), DISTRIBUTIONS.end(), sName);
    if (pFound == DISTRIBUTIONS.end()) {
        table.fail("distribution", fmt::format("distribution in [[parameter]] is \"{}\"; it must be one of {}", sName,
                                               fmt::join(DISTRIBUTIONS, ", ")));
    }
    return static_cast<EDistribution>(pFound - DISTRIBUTIONS.begin());
}

void readDistribution(const TomlTable& table, SweepParameter& parameter)
{
    parameter.eDistribution = distributionOf(table);
    std::vector<std::string> keys = {"path", "name", "integer", "distribution"};
    switch (parameter.eDistribution) {
    case EDistribution::Choice:
        keys = {"path", "name", "distribution", "values"};
        table.allowOnly(keys);
        parameter.values = listedValues(table);
        return;
    case EDistribution::Normal:
        keys.insert(keys.end(), {"mean", "deviation", "minimum", "maximum"});
        table.allowOnly(keys);
        parameter.mean = requiredNumber(table, "mean");
        parameter.deviation = requiredNumber(table, "deviation");
        if (!(parameter.deviation > 0.0)) {
            table.fail("deviation",
                       fmt::format("deviation in [[parameter]] is {}; it must be greater than 0", parameter.deviation));
        }
        break;
    default:
        keys.insert(keys.end(), {"minimum", "maximum"});
        table.allowOnly(keys);
    }
    readBounds(table, parameter, parameter.eDistribution != EDistribution::Normal);
    parameter.bLogarithmic = parameter.eDistribution == EDistribution::LogUniform;
    if (parameter.bLogarithmic && !(*parameter.minimum > 0.0)) {
        table.fail("minimum", fmt::format("minimum in [[parameter]] is {}; log-uniform needs a number above 0",
                                          *parameter.minimum));
    }
}

void readGridValues(const TomlTable& table, SweepParameter& parameter)
{
    if (table.has("distribution")) {
        table.fail("distribution",
                   "distribution in [[parameter]] goes with method = \"random\" in [sweep]; a grid needs "
                   "values, or from, to and count");
    }
    if (table.has("values")) {
        table.allowOnly({"path", "name", "values"});
        parameter.values = listedValues(table);
        return;
    }
    if (!table.has("from") && !table.has("to") && !table.has("count")) {
        table.allowOnly({"path", "name", "integer", "values", "from", "to", "count", "scale"});
        table.fail("", "[[parameter]] has no values; give values = [..], or from, to and count");
    }
    table.allowOnly({"path", "name", "integer", "from", "to", "count", "scale"});
    parameter.values = spacedValues(table, parameter);
}

std::string description(const SweepParameter& parameter, ESweepMethod eMethod)
{
    std::string sText = parameter.sPath;
    if (eMethod == ESweepMethod::Random) {
        sText += fmt::format(": {}", DISTRIBUTIONS.at(static_cast<std::size_t>(parameter.eDistribution)));
    }
    if (!parameter.values.empty()) {
        std::vector<std::string> texts;
        std::transform(parameter.values.begin(), parameter.values.end(), std::back_inserter(texts),
                       [](const SweepValue& value) { return value.sToml; });
        return sText + fmt::format(" of {}", fmt::join(texts, ", "));
    }
    if (parameter.eDistribution == EDistribution::Normal) {
        sText += fmt::format(" with mean {} and deviation {}", parameter.mean, parameter.deviation);
    }
    sText += parameter.minimum ? fmt::format(" from {}", *parameter.minimum) : "";
    sText += parameter.maximum ? fmt::format(" to {}", *parameter.maximum) : "";
    return sText + (parameter.bInteger ? ", whole numbers" : "");
}
} // namespace

SweepValue numberValue(double number)
{
    number = number == 0.0 ? 0.0 : number; // without a sign
    return {fmt::format("{}", number), number};
}

SweepParameter readParameter(const TomlTable& table, ESweepMethod eMethod)
{
    SweepParameter parameter;
    parameter.sPath = table.requiredText("path");
    parameter.sName = table.text("name").value_or(parameter.sPath);
    parameter.bInteger = table.boolean("integer").value_or(false);
    const toml::source_position& place = table.raw().get("path")->source().begin;
    parameter.nLine = place.line;
    parameter.nColumn = place.column;
    if (eMethod == ESweepMethod::Random) {
        readDistribution(table, parameter);
    }
    else {
        readGridValues(table, parameter);
    }
    parameter.sDescription = description(parameter, eMethod);
    return parameter;
}
