// A scenario file, beside a drive and a unit file that it may name.
#include "Unit/Configuration/ValueRanges.h"
#include "Unit/Simulator/Scenario.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>

namespace
{
void makeNeighbours()
{
    writeInFolder("drive.csv", "time_s,requested_power_dBm,temperature_C\n0,10,25\n2,12,26\n4,9,30\n");
    writeInFolder("unit.toml", "[unit]\ninterval_ms = 12\n[[module]]\nname = \"A\"\nlibrary = \"./A.so\"\n"
                               "[[channel]]\nnumber = 3\n[[channel]]\nnumber = 4\ntx_pmax_dbm = 20\n");
}

void checkEvent(const Scenario& scenario, const ScenarioEvent& event)
{
    requireWithin(event.atSeconds, 0, scenario.durationSeconds, "at_s");
    requireWithin(event.atSeconds + event.overSeconds, 0, scenario.durationSeconds, "over_s");
    requireWithin(event.everySeconds.value_or(LONGEST_RUN_SECONDS), std::max(event.overSeconds, 0.001),
                  LONGEST_RUN_SECONDS, "every_s");
    requireWithin(event.requestedPowerDbm.value_or(0), LOWEST_POWER_DBM, HIGHEST_POWER_DBM, "requested_power_dbm");
    requireWithin(event.txPminDbm.value_or(0), LOWEST_POWER_DBM, HIGHEST_POWER_DBM, "tx_pmin_dbm");
    requireWithin(event.txPmaxDbm.value_or(0), LOWEST_POWER_DBM, HIGHEST_POWER_DBM, "tx_pmax_dbm");
    requireWithin(event.frequencyMhz.value_or(0), 0, HIGHEST_FREQUENCY_MHZ, "frequency_mhz");
    requireWithin(event.temperatureDegrees.value_or(0), COLDEST_DEGREES, HOTTEST_DEGREES, "temperature_c");
    for (const auto& [pKey, value] : event.transmitter) {
        requireWithin(value, pKey->minimum, pKey->maximum, pKey->pName);
    }
}

void checkScenario(const Scenario& scenario)
{
    require(scenario.durationSeconds > 0.0 && scenario.durationSeconds <= LONGEST_RUN_SECONDS, "duration_s");
    require(scenario.unit.channels.size() == 1, "a scenario of another number of channels than one");
    requireWithin(scenario.unit.intervalMs, 1, MAX_INTERVAL_MS, "interval_ms");
    const ChannelConfiguration& channel = scenario.channel();
    requireWithin(channel.txPminDbm, LOWEST_POWER_DBM, channel.txPmaxDbm, "tx_pmin_dbm");
    for (const TransmitterKey& key : transmitterKeys()) {
        requireWithin(channel.transmitter.*key.pField, key.minimum, key.maximum, key.pName);
    }
    const auto isLater = [](const ScenarioEvent& a, const ScenarioEvent& b) { return a.atSeconds < b.atSeconds; };
    require(std::is_sorted(scenario.events.begin(), scenario.events.end(), isLater), "events that do not ascend");
    for (const ScenarioEvent& event : scenario.events) {
        checkEvent(scenario, event);
    }
    for (const FaultConfiguration& fault : scenario.unit.faults) {
        require(fault.nChannel == channel.nNumber, "a fault of another channel");
        requireWithin(fault.atSeconds, 0, scenario.durationSeconds, "at_s of a fault");
    }
    for (const MeasureBand& band : scenario.expectations) {
        require(!(band.minimum > band.maximum), "a band of nothing");
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    if (sText.find('/') != std::string::npos) { // a scenario may name any file; here it keeps to its folder
        return 0;
    }
    static const bool MADE = (makeNeighbours(), true);
    require(MADE, "no neighbours");
    const std::string sPath = writeInFolder("scenario.toml", sText);
    Scenario scenario;
    if (accepts(sPath, sText, [&] { scenario = loadScenario(sPath); })) {
        checkScenario(scenario);
    }
    return 0;
}
