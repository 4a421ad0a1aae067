/** @file
 * Prints every value that a unit file leads to, one a line: those that it gives and those that hold otherwise.
 */
#include "Platform/ConfigurationError.h"
#include "Unit/Configuration/UnitConfiguration.h"
#include "tests/system/ConfigurationValues.h"

#include <cstdio>

namespace
{
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
    show("recorder", "file", unit.recorder.sFile);
    show("recorder", "steps_hours", unit.recorder.stepsHours);
    show("recorder", "seconds_hours", unit.recorder.secondsHours);
    show("recorder", "minutes_days", unit.recorder.minutesDays);
    show("recorder", "max_mb", unit.recorder.maxMb);
    show("profile", "file", unit.profile.sFile);
    showInterpolation("profile", unit.profile.interpolation);
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
