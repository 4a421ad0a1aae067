/** @file
 * Prints every value that a unit file leads to, one a line: those that it gives and those that hold otherwise.
 */
#include "Platform/ConfigurationError.h"
#include "Unit/Configuration/UnitConfiguration.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstdio>

namespace
{
template <class TValue> void show(const char* pTable, const char* pKey, const TValue& value)
{
    fmt::print("{}.{} = {}\n", pTable, pKey, value);
}

template <class TValue> void show(const char* pTable, const char* pKey, const std::optional<TValue>& value)
{
    fmt::print("{}.{} = {}\n", pTable, pKey, value ? fmt::format("{}", *value) : "none");
}

void showUnit(const UnitConfiguration& unit)
{
    show("unit", "interval_ms", unit.intervalMs);
    show("unit", "realtime_priority", unit.nRealtimePriority);
    show("unit", "temperature_c", unit.temperatureDegrees);
    show("storage", "file", unit.sStorageFile);
    for (const ModuleConfiguration& module : unit.modules) {
        show("module", "name", module.sName);
        show("module", "library", module.sLibrary);
        show("module", "scope", static_cast<int>(module.eScope));
    }
    for (const CalibrationConfiguration& calibration : unit.calibrations) {
        show("calibration", "name", calibration.sName);
        show("calibration", "file", calibration.sFile);
    }
}

void showServices(const UnitConfiguration& unit)
{
    show("trace", "default", unit.trace.nDefaultLevel);
    for (const TraceLevelConfiguration& level : unit.trace.levels) {
        show("trace", level.sGroup.c_str(), level.nLevel);
    }
    show("trace", "system_log", unit.trace.bSystemLog);
    show("trace", "system_log_facility", unit.trace.systemLog.nFacility);
    show("trace", "system_log_severity", unit.trace.systemLog.nSeverity);
    show("test_interface", "enabled", unit.testInterface.bEnabled);
    show("test_interface", "address", unit.testInterface.sAddress);
    show("test_interface", "port", unit.testInterface.nPort);
    show("test_interface", "token_file", unit.testInterface.sTokenFile);
    show("profile", "file", unit.profile.sFile);
    show("profile", "requested_power", static_cast<int>(unit.profile.interpolation.eRequestedPower));
    show("profile", "temperature", static_cast<int>(unit.profile.interpolation.eTemperature));
    show("profile", "frequency", static_cast<int>(unit.profile.interpolation.eFrequency));
}

void showChannel(const ChannelConfiguration& channel)
{
    show("channel", "number", channel.nNumber);
    show("channel", "power_mode", channel.nPowerMode);
    show("channel", "tx_pmin_dbm", channel.txPminDbm);
    show("channel", "tx_pmax_dbm", channel.txPmaxDbm);
    show("channel", "requested_power_dbm", channel.requestedPowerDbm);
    show("channel", "frequency_mhz", channel.frequencyMhz);
    show("channel", "gain_percent_ramping", channel.gainPercentRamping);
    show("channel", "gain_percent_on", channel.gainPercentOn);
    show("channel", "production_test", channel.bProductionTest);
    show("channel", "loop_mode", channel.nLoopMode);
    show("channel.transmitter", "seed", channel.nSeed);
    for (const TransmitterKey& key : transmitterKeys()) {
        show("channel.transmitter", key.pName, channel.transmitter.*key.pField);
    }
}

void showFault(const FaultConfiguration& fault)
{
    show("fault", "channel", fault.nChannel);
    show("fault", "operation", handlerOperationName(fault.eOperation));
    show("fault", "kind", handlerFaultName(fault.fault.eKind));
    show("fault", "times", fault.fault.nTimes);
    show("fault", "value", fault.fault.nValue);
    show("fault", "delay_us", fault.fault.delayUs);
    show("fault", "probability", fault.fault.probability);
    show("fault", "at_s", fault.atSeconds);
    show("fault", "for_s", fault.forSeconds);
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    if (nArguments != 2) {
        fmt::print(stderr, "usage: unit_file_values UNIT_FILE\n");
        return 2;
    }
    try {
        const UnitConfiguration unit = loadUnitConfiguration(ppArguments[1]);
        showUnit(unit);
        showServices(unit);
        for (const ChannelConfiguration& channel : unit.channels) {
            showChannel(channel);
        }
        for (const FaultConfiguration& fault : unit.faults) {
            showFault(fault);
        }
        return 0;
    }
    catch (const std::exception& error) {
        fmt::print(stderr, "unit_file_values: {}\n", error.what());
        return 1;
    }
}
