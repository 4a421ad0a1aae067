#include "Unit/Campaign/SweepDefinition.h"

#include "Platform/ConfigurationError.h"
#include "Platform/FileText.h"
#include "Platform/TomlKeys.h"
#include "Simulation/Scenario/RunMeasures.h"
#include "Unit/Campaign/private/SweepValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <limits>

namespace
{
constexpr std::int64_t MOST_RUNS = 100'000'000;
constexpr double LONGEST_SECONDS = 1e9;
constexpr std::size_t LONGEST_PATH = 200;

toml::table parseTable(const std::string& sText, const std::string& sPath)
{
    refuseLongKeys(sText, sPath);
    try {
        return toml::parse(sText, sPath);
    }
    catch (const toml::parse_error& error) {
        const toml::source_position& place = error.source().begin;
        throw ConfigurationError(fmt::format("{}:{}:{}: is not TOML: {}", sPath, place.line, place.column,
                                             printable(std::string(error.description()))));
    }
}

void readMethod(const TomlTable& sweep, SweepDefinition& definition)
{
    const std::string sMethod = sweep.requiredText("method");
    if (sMethod != "grid" && sMethod != "random") {
        sweep.fail("method", fmt::format("method in [sweep] is \"{}\"; it must be \"grid\" or \"random\"", sMethod));
    }
    definition.eMethod = sMethod == "grid" ? ESweepMethod::Grid : ESweepMethod::Random;
    if (definition.eMethod == ESweepMethod::Random) {
        if (sweep.has("repeats")) {
            sweep.fail("repeats", "repeats in [sweep] goes with method = \"grid\"; a random sweep needs runs");
        }
        definition.nRuns = static_cast<std::uint64_t>(sweep.requiredInteger("runs", 1, MOST_RUNS));
        return;
    }
    if (sweep.has("runs")) {
        sweep.fail("runs", "runs in [sweep] goes with method = \"random\"; a grid has as many runs as its parameters "
                           "have combinations, times repeats");
    }
    definition.nRepeats = static_cast<std::uint64_t>(sweep.integer("repeats", 1, MOST_RUNS).value_or(1));
}

void readMeasures(const TomlTable& sweep, SweepDefinition& definition)
{
    const toml::node* pNode = sweep.raw().get("measures");
    if (pNode == nullptr) {
        return;
    }
    const toml::array* pArray = pNode->as_array();
    if (pArray == nullptr || pArray->empty()) {
        sweep.fail("measures", "measures in [sweep] must be a list of the measures that reports show, such as "
                               "[\"settling_max_ms\"]");
    }
    const auto& known = runMeasureKeys();
    for (const toml::node& node : *pArray) {
        const std::string sName = node.value_exact<std::string>().value_or("something that is no text");
        const bool bKnown =
            std::any_of(known.begin(), known.end(), [&sName](const RunMeasureKey& key) { return sName == key.pName; });
        if (!bKnown) {
            std::vector<std::string> names;
            std::transform(known.begin(), known.end(), std::back_inserter(names),
                           [](const RunMeasureKey& key) { return key.pName; });
            sweep.fail("measures", fmt::format("measures in [sweep] has \"{}\"; the measures are {}", sName,
                                               fmt::join(names, ", ")));
        }
        definition.measures.push_back(sName);
    }
}

void checkPath(const TomlTable& table, const SweepDefinition& definition, const SweepParameter& parameter)
{
    const std::string& sPath = parameter.sPath;
    const bool bPlain = sPath.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.") ==
                            std::string::npos &&
                        sPath.size() <= LONGEST_PATH;
    if (!bPlain) {
        table.fail("path",
                   fmt::format("path in [[parameter]] is \"{}\"; it must be a key's place in the scenario, such "
                               "as transmitter.detector_noise_db or event.2.requested_power_dbm",
                               sPath));
    }
    if (sPath == "seed") {
        table.fail("path", "path in [[parameter]] is \"seed\", which every run has of its own; use repeats in [sweep]");
    }
    if (sPath == "duration_s" && definition.durationSeconds) {
        table.fail("path",
                   "path in [[parameter]] is \"duration_s\", which [sweep] sets already; leave one of them out");
    }
    for (const SweepParameter& other : definition.parameters) {
        if (other.sPath == sPath || other.sName == parameter.sName) {
            table.fail(other.sPath == sPath ? "path" : "name",
                       fmt::format("{} \"{}\" in [[parameter]] is that of line {} already; each needs its own",
                                   other.sPath == sPath ? "path" : "name",
                                   other.sPath == sPath ? sPath : parameter.sName, other.nLine));
        }
    }
}

void countGrid(const TomlTable& root, SweepDefinition& definition)
{
    const auto nMost = static_cast<std::uint64_t>(MOST_RUNS);
    definition.nRuns = definition.nRepeats;
    for (const SweepParameter& parameter : definition.parameters) {
        if (definition.nRuns > nMost / parameter.values.size()) {
            root.table("sweep")->fail("", fmt::format("[sweep] has more than {} runs with all combinations; give fewer "
                                                      "values, or method = \"random\"",
                                                      MOST_RUNS));
        }
        definition.nRuns *= parameter.values.size();
    }
}
} // namespace

SweepDefinition parseSweepDefinition(const std::string& sText, const std::string& sPath)
{
    const toml::table document = parseTable(sText, sPath);
    const TomlTable root(document, sPath, "the file");
    root.allowOnly({"sweep", "parameter"});
    const auto sweep = root.table("sweep");
    if (!sweep) {
        root.fail("", "has no table [sweep]; add it with scenario and method");
    }
    sweep->allowOnly({"title", "scenario", "method", "runs", "seed", "repeats", "duration_s", "measures"});
    SweepDefinition definition;
    definition.sPath = sPath;
    definition.sText = sText;
    definition.sTitle = sweep->text("title").value_or(std::filesystem::path(sPath).stem().string());
    definition.sScenario = (std::filesystem::path(sPath).parent_path() / sweep->requiredText("scenario")).string();
    readMethod(*sweep, definition);
    definition.nSeed =
        static_cast<std::uint64_t>(sweep->integer("seed", 0, std::numeric_limits<std::int64_t>::max()).value_or(1));
    if (sweep->has("duration_s")) {
        definition.durationSeconds = sweep->number("duration_s", 1e-3, LONGEST_SECONDS);
    }
    readMeasures(*sweep, definition);
    for (const TomlTable& table : root.tables("parameter")) {
        const SweepParameter parameter = readParameter(table, definition.eMethod);
        checkPath(table, definition, parameter);
        definition.parameters.push_back(parameter);
    }
    if (definition.parameters.empty()) {
        root.fail("", "varies nothing; add [[parameter]] tables with path and values");
    }
    if (definition.eMethod == ESweepMethod::Grid) {
        countGrid(root, definition);
    }
    return definition;
}

SweepDefinition loadSweepDefinition(const std::string& sPath)
{
    return parseSweepDefinition(readFileBytes(sPath), sPath);
}
