// unit.toml: what is accepted lies in the ranges that the reader promises, what is not has an error with its place.
#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/Configuration/ValueRanges.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>

namespace
{
void checkTransmitter(const TransmitterParameters& parameters)
{
    for (const TransmitterKey& key : transmitterKeys()) {
        requireWithin(parameters.*key.pField, key.minimum, key.maximum, key.pName);
    }
    require(parameters.minPowerDbm < parameters.maxPowerDbm, "a transmitter without a range");
}

void checkGain(const std::optional<GainPercent>& gain)
{
    for (const int nPercent : gain.value_or(GainPercent())) {
        requireWithin(nPercent, 0, MAX_GAIN_PERCENT, "a gain");
    }
}

void checkChannel(const ChannelConfiguration& channel)
{
    requireWithin(channel.nNumber, 0, 2147483647, "number");
    requireWithin(channel.txPminDbm, LOWEST_POWER_DBM, channel.txPmaxDbm, "tx_pmin_dbm");
    requireWithin(channel.txPmaxDbm, LOWEST_POWER_DBM, HIGHEST_POWER_DBM, "tx_pmax_dbm");
    requireWithin(channel.requestedPowerDbm, LOWEST_POWER_DBM, HIGHEST_POWER_DBM, "requested_power_dbm");
    requireWithin(channel.frequencyMhz, 0, HIGHEST_FREQUENCY_MHZ, "frequency_mhz");
    requireWithin(channel.nLoopMode, 0, MAX_LOOP_MODE, "loop_mode");
    checkGain(channel.gainPercentRamping);
    checkGain(channel.gainPercentOn);
    checkTransmitter(channel.transmitter);
}

void checkFault(const UnitConfiguration& unit, const FaultConfiguration& configuration)
{
    requireWithin(configuration.fault.delayUs, 0, MAX_FAULT_DELAY_US, "delay_us");
    requireWithin(configuration.fault.probability, 0, 1, "probability");
    requireWithin(configuration.atSeconds, 0, LONGEST_RUN_SECONDS, "at_s");
    requireWithin(configuration.forSeconds.value_or(0), 0, LONGEST_RUN_SECONDS, "for_s");
    require(std::any_of(unit.channels.begin(), unit.channels.end(),
                        [&](const ChannelConfiguration& channel) { return channel.nNumber == configuration.nChannel; }),
            "a fault of no channel");
}

void checkRecorder(const RecorderConfiguration& recorder)
{
    requireWithin(recorder.stepsHours, SHORTEST_STEPS_HOURS, LONGEST_STEPS_HOURS, "steps_hours");
    requireWithin(recorder.secondsHours, SHORTEST_SECONDS_HOURS, LONGEST_SECONDS_HOURS, "seconds_hours");
    requireWithin(recorder.minutesDays, SHORTEST_MINUTES_DAYS, LONGEST_MINUTES_DAYS, "minutes_days");
    requireWithin(static_cast<double>(recorder.maxMb), MIN_RECORDING_MB, MAX_RECORDING_MB, "max_mb");
}

void checkUnit(const UnitConfiguration& unit)
{
    requireWithin(unit.intervalMs, 1, MAX_INTERVAL_MS, "interval_ms");
    requireWithin(unit.nRealtimePriority, 0, MAX_REALTIME_PRIORITY, "realtime_priority");
    requireWithin(unit.temperatureDegrees, COLDEST_DEGREES, HOTTEST_DEGREES, "temperature_c");
    requireWithin(unit.trace.nDefaultLevel, 0, MAX_TRACE_LEVEL, "default");
    require(!unit.modules.empty() && !unit.channels.empty(), "a unit of nothing");
    for (const TraceLevelConfiguration& level : unit.trace.levels) {
        requireWithin(level.nLevel, 0, MAX_TRACE_LEVEL, "a trace level");
    }
    checkRecorder(unit.recorder);
    std::for_each(unit.channels.begin(), unit.channels.end(), checkChannel);
    std::for_each(unit.faults.begin(), unit.faults.end(),
                  [&](const FaultConfiguration& fault) { checkFault(unit, fault); });
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    const std::string sPath = writeInFolder("unit.toml", sText);
    UnitConfiguration unit;
    if (!accepts(sPath, sText, [&] { unit = loadUnitConfiguration(sPath); })) {
        return 0;
    }
    checkUnit(unit);
    if (accepts(sPath, sText, [&] { checkChannelsAreApart(unit); })) {
        const std::size_t nChannels = unit.channels.size();
        selectChannels(unit, 1U);
        require(unit.channels.size() == 1 && unit.faults.size() <= nChannels * sText.size(), "a wrong selection");
        std::for_each(unit.faults.begin(), unit.faults.end(),
                      [&](const FaultConfiguration& fault) { checkFault(unit, fault); });
    }
    return 0;
}
