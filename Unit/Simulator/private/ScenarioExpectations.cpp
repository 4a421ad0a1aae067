#include "Unit/Configuration/NearName.h"
#include "Unit/Simulator/private/ScenarioReaders.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr double WIDEST_SETTLING_BAND_DB = 20.0;
constexpr double NARROWEST_SETTLING_BAND_DB = 0.001;
constexpr double HIGHEST_TOLERANCE_DB = 100.0;
constexpr double UNLIMITED = std::numeric_limits<double>::infinity();
const char* const ALLOWED = "a number, a list of a minimum and a maximum, a table with min or max, or \"none\"";

/** @return the bound in a list or table, which may be infinite */
std::optional<double> boundIn(const toml::node* pNode)
{
    const auto value = pNode != nullptr && pNode->is_number() ? pNode->value<double>() : std::nullopt;
    return value && !std::isnan(*value) ? value : std::nullopt;
}

void readBoundTable(const TomlTable& expect, const std::string& sKey, MeasureBand& band)
{
    const TomlTable table = *expect.table(sKey);
    table.allowOnly({"min", "max"});
    if (table.raw().empty()) {
        expect.failValue(sKey, ALLOWED);
    }
    for (const char* const pBound : {"min", "max"}) {
        if (table.has(pBound) && !boundIn(table.raw().get(pBound))) {
            table.failValue(pBound, "a number");
        }
    }
    band.minimum = boundIn(table.raw().get("min")).value_or(-UNLIMITED);
    band.maximum = boundIn(table.raw().get("max")).value_or(UNLIMITED);
}

void readBounds(const TomlTable& expect, const std::string& sKey, MeasureBand& band)
{
    const toml::node& node = *expect.raw().get(sKey);
    if (node.is_table()) {
        readBoundTable(expect, sKey, band);
        return;
    }
    if (node.value_exact<std::string>() == "none") {
        band.minimum = NO_MEASURE;
        band.maximum = NO_MEASURE;
        return;
    }
    const toml::array* pList = node.as_array();
    const auto minimum = boundIn(pList != nullptr && pList->size() == 2 ? pList->get(0) : &node);
    const auto maximum = boundIn(pList != nullptr && pList->size() == 2 ? pList->get(1) : &node);
    if (!minimum || !maximum) {
        expect.failValue(sKey, ALLOWED);
    }
    band.minimum = *minimum;
    band.maximum = *maximum;
}
} // namespace

void readMeasures(const TomlTable& root, Scenario& scenario)
{
    const auto table = root.table("measures");
    if (!table) {
        return;
    }
    table->allowOnly({"reference", "settling_band_db", "emission_tolerance_db"});
    MeasureSettings& settings = scenario.measures;
    if (const auto nWord = table->word("reference", {"target", "requested"})) {
        settings.eReference = *nWord == 0 ? EPowerReference::Target : EPowerReference::Requested;
    }
    settings.settlingBandDb = table->number("settling_band_db", NARROWEST_SETTLING_BAND_DB, WIDEST_SETTLING_BAND_DB)
                                  .value_or(settings.settlingBandDb);
    settings.emissionToleranceDb =
        table->number("emission_tolerance_db", 0.0, HIGHEST_TOLERANCE_DB).value_or(settings.emissionToleranceDb);
}

void readExpectations(const TomlTable& root, Scenario& scenario)
{
    const auto table = root.table("expect");
    if (!table) {
        return;
    }
    std::vector<std::string> names;
    names.reserve(runMeasureKeys().size());
    for (const RunMeasureKey& key : runMeasureKeys()) {
        names.emplace_back(key.pName);
    }
    table->allowOnly(names);
    for (const RunMeasureKey& key : runMeasureKeys()) {
        if (!table->has(key.pName)) {
            continue;
        }
        MeasureBand band{&key, -UNLIMITED, UNLIMITED};
        readBounds(*table, key.pName, band);
        if (band.minimum > band.maximum) {
            table->fail(key.pName, fmt::format("{} in {} has a minimum of {}, above its maximum of {}; exchange them",
                                               key.pName, table->place(), band.minimum, band.maximum));
        }
        scenario.expectations.push_back(band);
    }
}
