#include "Unit/Configuration/ValueRanges.h"
#include "Unit/Configuration/private/ConfigurationReaders.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace
{
constexpr std::int64_t MAX_INT32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t MIN_INT32 = std::numeric_limits<std::int32_t>::min();
constexpr double LONGEST_RUN_SECONDS = 1e9;

/** @return whether the table gives a seed of its own */
bool readTransmitter(const TomlTable& table, TransmitterParameters& parameters, std::uint64_t& nSeed)
{
    std::vector<std::string> keys = {"seed"};
    for (const TransmitterKey& key : transmitterKeys()) {
        keys.emplace_back(key.pName);
    }
    table.allowOnly(keys);
    for (const TransmitterKey& key : transmitterKeys()) {
        parameters.*key.pField = table.number(key.pName, key.minimum, key.maximum).value_or(parameters.*key.pField);
    }
    if (parameters.minPowerDbm >= parameters.maxPowerDbm) {
        table.fail("", fmt::format("the transmitter's lower limit of the control power is {} dBm, not below the upper "
                                   "one of {} dBm; set them apart",
                                   parameters.minPowerDbm, parameters.maxPowerDbm));
    }
    const auto nOwnSeed = table.integer("seed", 0, MAX_INT32);
    nSeed = static_cast<std::uint64_t>(nOwnSeed.value_or(static_cast<std::int64_t>(nSeed)));
    return nOwnSeed.has_value();
}

std::optional<GainPercent> readGain(const TomlTable& table, const std::string& sKey)
{
    const auto values = table.integers(sKey, GainPercent().size(), 0, MAX_GAIN_PERCENT);
    if (!values) {
        return std::nullopt;
    }
    GainPercent gain{};
    std::copy(values->begin(), values->end(), gain.begin());
    return gain;
}

void readPowers(const TomlTable& table, ChannelConfiguration& channel)
{
    const auto power = [&table](const char* pKey, double otherwise) {
        return table.number(pKey, LOWEST_POWER_DBM, HIGHEST_POWER_DBM).value_or(otherwise);
    };
    channel.txPminDbm = power("tx_pmin_dbm", channel.txPminDbm);
    channel.txPmaxDbm = power("tx_pmax_dbm", channel.txPmaxDbm);
    channel.requestedPowerDbm = power("requested_power_dbm", channel.requestedPowerDbm);
    if (channel.txPminDbm > channel.txPmaxDbm) {
        table.fail("tx_pmin_dbm",
                   fmt::format("tx_pmin_dbm in [[channel]] is {}, above tx_pmax_dbm, which is {}; lower it",
                               channel.txPminDbm, channel.txPmaxDbm));
    }
}

ChannelConfiguration readChannel(const TomlTable& table, ChannelConfiguration channel)
{
    table.allowOnly({"number", "power_mode", "tx_pmin_dbm", "tx_pmax_dbm", "requested_power_dbm", "frequency_mhz",
                     "gain_percent_ramping", "gain_percent_on", "production_test", "loop_mode", "transmitter"});
    channel.nLine = table.line();
    channel.nNumber = static_cast<unsigned int>(table.requiredInteger("number", 0, MAX_INT32));
    channel.nPowerMode = static_cast<int>(table.integer("power_mode", MIN_INT32, MAX_INT32).value_or(1));
    readPowers(table, channel);
    channel.frequencyMhz = table.number("frequency_mhz", 0.0, HIGHEST_FREQUENCY_MHZ).value_or(channel.frequencyMhz);
    channel.gainPercentRamping = readGain(table, "gain_percent_ramping");
    channel.gainPercentOn = readGain(table, "gain_percent_on");
    channel.bProductionTest = table.boolean("production_test").value_or(false);
    channel.nLoopMode = static_cast<int>(table.integer("loop_mode", 0, MAX_LOOP_MODE).value_or(0));
    const auto transmitter = table.table("transmitter");
    if (!transmitter || !readTransmitter(*transmitter, channel.transmitter, channel.nSeed)) {
        channel.nSeed += channel.nNumber; // channels whose noise is not the same
    }
    return channel;
}

EHandlerOperation readOperation(const TomlTable& table)
{
    const std::string sOperation = table.requiredText("operation");
    const auto eOperation = handlerOperationByName(sOperation);
    if (!eOperation) {
        std::vector<std::string> names;
        names.reserve(static_cast<std::size_t>(EHandlerOperation::Count));
        for (int nOperation = 0; nOperation < static_cast<int>(EHandlerOperation::Count); ++nOperation) {
            names.emplace_back(handlerOperationName(static_cast<EHandlerOperation>(nOperation)));
        }
        table.fail("operation", fmt::format("operation in [[fault]] is \"{}\"; it must be one of {}", sOperation,
                                            fmt::join(names, ", ")));
    }
    return *eOperation;
}

EHandlerFault readKind(const TomlTable& table)
{
    const std::string sKind = table.requiredText("kind");
    const auto eKind = handlerFaultByName(sKind);
    if (!eKind) {
        table.fail("kind", fmt::format("kind in [[fault]] is \"{}\"; it must be one of none, fail, fail-times, stuck, "
                                       "wrong-value, slow",
                                       sKind));
    }
    return *eKind;
}

FaultConfiguration readFault(const TomlTable& table)
{
    table.allowOnly({"channel", "operation", "kind", "times", "value", "delay_us", "at_s", "for_s"});
    FaultConfiguration configuration;
    configuration.nChannel = static_cast<unsigned int>(table.requiredInteger("channel", 0, MAX_INT32));
    configuration.eOperation = readOperation(table);
    HandlerFault& fault = configuration.fault;
    fault.eKind = readKind(table);
    fault.nTimes = static_cast<unsigned int>(table.integer("times", 1, MAX_INT32).value_or(1));
    fault.nValue = static_cast<std::int32_t>(table.integer("value", MIN_INT32, MAX_INT32).value_or(0));
    fault.delayUs = static_cast<unsigned int>(table.integer("delay_us", 0, MAX_FAULT_DELAY_US).value_or(0));
    configuration.atSeconds = table.number("at_s", 0.0, LONGEST_RUN_SECONDS).value_or(0.0);
    configuration.forSeconds = table.number("for_s", 0.0, LONGEST_RUN_SECONDS);
    return configuration;
}
} // namespace

void readChannels(const TomlTable& root, UnitConfiguration& configuration)
{
    ChannelConfiguration common;
    if (const auto table = root.table("transmitter")) {
        readTransmitter(*table, common.transmitter, common.nSeed);
    }
    for (const TomlTable& table : root.tables("channel")) {
        configuration.channels.push_back(readChannel(table, common));
    }
    if (configuration.channels.empty()) {
        root.fail("", "lists no channel; add a [[channel]] table with a number");
    }
}

void readFaults(const TomlTable& root, UnitConfiguration& configuration)
{
    for (const TomlTable& table : root.tables("fault")) {
        const FaultConfiguration fault = readFault(table);
        const bool bListed =
            std::any_of(configuration.channels.begin(), configuration.channels.end(),
                        [&fault](const ChannelConfiguration& channel) { return channel.nNumber == fault.nChannel; });
        if (!bListed) {
            table.fail("channel", fmt::format("[[fault]] is for channel {}, which the file does not list; use the "
                                              "number of a [[channel]]",
                                              fault.nChannel));
        }
        configuration.faults.push_back(fault);
    }
}
