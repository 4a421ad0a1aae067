#include "Unit/Configuration/private/ConfigurationReaders.h"

#include "Unit/Configuration/ChannelReaders.h"
#include "Unit/Configuration/ValueRanges.h"

#include <fmt/format.h>

#include <filesystem>
#include <limits>
#include <optional>
#include <string_view>

namespace
{
std::string completePath(const UnitConfiguration& configuration, const std::string& sFile)
{
    return (std::filesystem::path(configuration.sFolder) / sFile).string();
}

int readSystemLogCode(const TomlTable& table, const std::string& sKey, std::optional<int> (*codeOf)(std::string_view),
                      const std::vector<std::string_view>& names)
{
    const std::string sName = table.requiredText(sKey);
    const std::optional<int> nCode = codeOf(sName);
    if (!nCode) {
        table.failValue(sKey, fmt::format("one of {}", fmt::join(names, ", ")));
    }
    return *nCode;
}

EModuleScope readScope(const TomlTable& table)
{
    const auto nWord = table.word("scope", {"channel", "unit"});
    return nWord == 1U ? EModuleScope::Unit : EModuleScope::Channel;
}
} // namespace

void readUnit(const TomlTable& root, UnitConfiguration& configuration)
{
    if (const auto table = root.table("unit")) {
        table->allowOnly({"interval_ms", "realtime_priority", "temperature_c"});
        configuration.intervalMs = static_cast<unsigned int>(
            table->integer("interval_ms", 1, MAX_INTERVAL_MS).value_or(configuration.intervalMs));
        configuration.nRealtimePriority = static_cast<int>(
            table->integer("realtime_priority", 0, MAX_REALTIME_PRIORITY).value_or(configuration.nRealtimePriority));
        configuration.temperatureDegrees =
            table->number("temperature_c", COLDEST_DEGREES, HOTTEST_DEGREES).value_or(configuration.temperatureDegrees);
    }
    if (const auto table = root.table("storage")) {
        table->allowOnly({"file"});
        configuration.sStorageFile = completePath(configuration, table->requiredText("file"));
    }
}

void readModules(const TomlTable& root, UnitConfiguration& configuration)
{
    for (const TomlTable& table : root.tables("module")) {
        table.allowOnly({"name", "library", "scope"});
        ModuleConfiguration module;
        module.sName = table.requiredText("name");
        module.sLibrary = table.requiredText("library");
        module.eScope = readScope(table);
        module.nLine = table.line();
        configuration.modules.push_back(module);
    }
    if (configuration.modules.empty()) {
        root.fail("", "lists no module; add [[module]] tables with name and library");
    }
}

void readCalibrations(const TomlTable& root, UnitConfiguration& configuration)
{
    for (const TomlTable& table : root.tables("calibration")) {
        table.allowOnly({"name", "file"});
        configuration.calibrations.push_back(
            {table.requiredText("name"), completePath(configuration, table.requiredText("file"))});
    }
}

void readTrace(const TomlTable& root, UnitConfiguration& configuration)
{
    const auto table = root.table("trace");
    if (!table) {
        return;
    }
    for (const auto& [key, node] : table->raw()) {
        const std::string sKey(key.str());
        if (sKey == "system_log") {
            configuration.trace.bSystemLog = *table->boolean(sKey);
            continue;
        }
        if (sKey == "system_log_facility") {
            configuration.trace.systemLog.nFacility =
                readSystemLogCode(*table, sKey, SystemLogNames::facility, SystemLogNames::facilities());
            continue;
        }
        if (sKey == "system_log_severity") {
            configuration.trace.systemLog.nSeverity =
                readSystemLogCode(*table, sKey, SystemLogNames::severity, SystemLogNames::severities());
            continue;
        }
        const int nLevel = static_cast<int>(*table->integer(sKey, 0, MAX_TRACE_LEVEL));
        if (sKey == "default") {
            configuration.trace.nDefaultLevel = nLevel;
        }
        else {
            configuration.trace.levels.push_back({sKey, nLevel});
        }
    }
}

void readTestInterface(const TomlTable& root, UnitConfiguration& configuration)
{
    const auto table = root.table("test_interface");
    if (!table) {
        return;
    }
    table->allowOnly({"enabled", "address", "port", "token_file"});
    TestInterfaceConfiguration& settings = configuration.testInterface;
    settings.bEnabled = table->boolean("enabled").value_or(settings.bEnabled);
    settings.sAddress = table->text("address").value_or(settings.sAddress);
    settings.nPort = static_cast<std::uint16_t>(
        table->integer("port", 0, std::numeric_limits<std::uint16_t>::max()).value_or(settings.nPort));
    if (const auto sTokenFile = table->text("token_file")) {
        settings.sTokenFile = completePath(configuration, *sTokenFile);
    }
    settings.nLine = table->line();
}

void readRecorder(const TomlTable& root, UnitConfiguration& configuration)
{
    const auto table = root.table("recorder");
    if (!table) {
        return;
    }
    table->allowOnly({"file", "steps_hours", "seconds_hours", "minutes_days", "max_mb"});
    RecorderConfiguration& settings = configuration.recorder;
    if (const auto sFile = table->text("file")) {
        settings.sFile = completePath(configuration, *sFile);
    }
    settings.stepsHours =
        table->number("steps_hours", SHORTEST_STEPS_HOURS, LONGEST_STEPS_HOURS).value_or(settings.stepsHours);
    settings.secondsHours =
        table->number("seconds_hours", SHORTEST_SECONDS_HOURS, LONGEST_SECONDS_HOURS).value_or(settings.secondsHours);
    settings.minutesDays =
        table->number("minutes_days", SHORTEST_MINUTES_DAYS, LONGEST_MINUTES_DAYS).value_or(settings.minutesDays);
    settings.maxMb = table->integer("max_mb", MIN_RECORDING_MB, MAX_RECORDING_MB).value_or(settings.maxMb);
}

void readProfile(const TomlTable& root, UnitConfiguration& configuration)
{
    const auto table = root.table("profile");
    if (!table) {
        return;
    }
    table->allowOnly({"file", "requested_power", "temperature", "frequency"});
    configuration.profile.sFile = completePath(configuration, table->requiredText("file"));
    readInterpolations(*table, configuration.profile.interpolation);
}
