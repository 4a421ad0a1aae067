#include "Unit/Configuration/ChannelReaders.h"
#include "Unit/Configuration/ValueRanges.h"
#include "Unit/Simulator/private/ScenarioReaders.h"

#include <fmt/format.h>

#include <algorithm>

namespace
{
/** @return what runs when the scenario names no unit file: the modules that every installation has */
UnitConfiguration standardUnit(const std::string& sPath, const std::string& sFolder)
{
    UnitConfiguration unit;
    unit.sPath = sPath;
    unit.sFolder = sFolder;
    unit.modules = {{"TemperatureHandler", "libTemperatureHandler.so", EModuleScope::Unit, 0},
                    {"FrequencyHandler", "libFrequencyHandler.so", EModuleScope::Channel, 0},
                    {"OutputPowerHandler", "libOutputPowerHandler.so", EModuleScope::Channel, 0},
                    {"OutputPowerController", "libOutputPowerController.so", EModuleScope::Channel, 0}};
    return unit;
}

/** Takes out what belongs to a unit that runs in its own time and talks to others. */
void keepWhatCounts(UnitConfiguration& unit)
{
    unit.nRealtimePriority = 0;
    unit.trace = TraceConfiguration();
    unit.trace.bSystemLog = false;
    unit.testInterface = TestInterfaceConfiguration();
    unit.testInterface.bEnabled = false;
    unit.profile = ProfileConfiguration();
    unit.faults.clear();
}

void keepChannel(const TomlTable& table, UnitConfiguration& unit)
{
    const auto nNumber = table.integer("number", 0, MAX_INT32);
    if (!nNumber) {
        unit.channels.resize(1);
        return;
    }
    const auto found =
        std::find_if(unit.channels.begin(), unit.channels.end(), [&nNumber](const ChannelConfiguration& channel) {
            return channel.nNumber == static_cast<unsigned>(*nNumber);
        });
    if (found == unit.channels.end()) {
        std::vector<unsigned int> numbers;
        for (const ChannelConfiguration& channel : unit.channels) {
            numbers.push_back(channel.nNumber);
        }
        table.failValue(
            "number", fmt::format("the number of a channel of {}, which are {}", unit.sPath, fmt::join(numbers, ", ")));
    }
    unit.channels = {*found};
}

void overlayUnit(const TomlTable& table, UnitConfiguration& unit)
{
    unit.intervalMs =
        static_cast<unsigned int>(table.integer("interval_ms", 1, MAX_INTERVAL_MS).value_or(unit.intervalMs));
    unit.temperatureDegrees =
        table.number("temperature_c", COLDEST_DEGREES, HOTTEST_DEGREES).value_or(unit.temperatureDegrees);
}

UnitConfiguration baseUnit(const TomlTable& unitTable, const std::string& sFolder, const std::string& sPath)
{
    if (unitTable.has("file")) {
        UnitConfiguration unit = loadUnitConfiguration(existingFile(unitTable, "file", sFolder));
        keepWhatCounts(unit);
        return unit;
    }
    UnitConfiguration unit = standardUnit(sPath, sFolder);
    keepWhatCounts(unit);
    return unit;
}
} // namespace

void readScenarioUnit(const TomlTable& root, const std::string& sFolder, Scenario& scenario)
{
    const toml::table empty;
    const TomlTable unitTable = root.table("unit").value_or(TomlTable(empty, scenario.sPath, "[unit]"));
    unitTable.allowOnly({"file", "interval_ms", "temperature_c"});
    const TomlTable channelTable = root.table("channel").value_or(TomlTable(empty, scenario.sPath, "[channel]"));
    std::vector<std::string> channelKeys = channelKeyNames();
    channelKeys.insert(channelKeys.begin(), "number");
    channelTable.allowOnly(channelKeys);

    UnitConfiguration& unit = scenario.unit;
    unit = baseUnit(unitTable, sFolder, scenario.sPath);
    if (unit.channels.empty()) {
        ChannelConfiguration& only = unit.channels.emplace_back();
        only.nNumber = static_cast<unsigned int>(channelTable.integer("number", 0, MAX_INT32).value_or(0));
        only.nSeed += only.nNumber; // as in a unit file
    }
    keepChannel(channelTable, unit);
    overlayUnit(unitTable, unit);
    ChannelConfiguration& channel = unit.channels.front();
    readChannelKeys(channelTable, channel);
    if (const auto table = root.table("transmitter")) {
        readTransmitter(*table, channel.transmitter, channel.nSeed);
    }
    if (const auto nSeed = root.integer("seed", 0, MAX_INT32)) {
        channel.nSeed = static_cast<std::uint64_t>(*nSeed);
    }
}
