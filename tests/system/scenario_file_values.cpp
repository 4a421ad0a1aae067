/** @file
 * Prints every value that a scenario file leads to, one a line: those that it gives and those that hold otherwise.
 */
#include "Platform/ConfigurationError.h"
#include "Unit/Simulator/Scenario.h"
#include "tests/system/ConfigurationValues.h"

#include <cstdio>

namespace
{
void showRun(const Scenario& scenario)
{
    show("", "title", scenario.sTitle);
    show("", "description", scenario.sDescription);
    show("", "duration_s", scenario.durationSeconds);
    show("drive", "file", scenario.drive.sFile);
    showInterpolation("drive", scenario.drive.interpolation);
    show("drive", "start_s", scenario.drive.startSeconds);
    show("drive", "repeat", scenario.drive.bRepeat);
    show("measures", "reference", static_cast<int>(scenario.measures.eReference));
    show("measures", "settling_band_db", scenario.measures.settlingBandDb);
    show("measures", "emission_tolerance_db", scenario.measures.emissionToleranceDb);
}

void showEvent(const ScenarioEvent& event)
{
    show("event", "at_s", event.atSeconds);
    show("event", "over_s", event.overSeconds);
    show("event", "every_s", event.everySeconds);
    show("event", "label", event.sLabel);
    show("event", "request", event.on);
    show("event", "power_mode", event.nPowerMode);
    show("event", "tx_pmin_dbm", event.txPminDbm);
    show("event", "tx_pmax_dbm", event.txPmaxDbm);
    show("event", "gain_percent_ramping", event.gainPercentRamping);
    show("event", "gain_percent_on", event.gainPercentOn);
    show("event", "production_test", event.productionTest);
    show("event", "loop_mode", event.nLoopMode);
    show("event", "requested_power_dbm", event.requestedPowerDbm);
    show("event", "frequency_mhz", event.frequencyMhz);
    show("event", "temperature_c", event.temperatureDegrees);
    for (const auto& [pKey, value] : event.transmitter) {
        show("event.transmitter", pKey->pName, value);
    }
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    if (nArguments != 2) {
        fmt::print(stderr, "usage: scenario_file_values SCENARIO_FILE\n");
        return 2;
    }
    try {
        const Scenario scenario = loadScenario(ppArguments[1]);
        showRun(scenario);
        showUnit(scenario.unit);
        showChannel(scenario.channel());
        for (const ScenarioEvent& event : scenario.events) {
            showEvent(event);
        }
        for (const FaultConfiguration& fault : scenario.unit.faults) {
            showFault(fault);
        }
        for (const MeasureBand& band : scenario.expectations) {
            fmt::print("expect.{} = {} to {}\n", band.pMeasure->pName, band.minimum, band.maximum);
        }
        return 0;
    }
    catch (const std::exception& error) {
        fmt::print(stderr, "scenario_file_values: {}\n", error.what());
        return 1;
    }
}
