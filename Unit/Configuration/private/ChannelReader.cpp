#include "Unit/Configuration/ChannelReaders.h"
#include "Unit/Configuration/ValueRanges.h"
#include "Unit/Configuration/private/ConfigurationReaders.h"

#include <fmt/format.h>

#include <algorithm>

namespace
{
void readPowers(const TomlTable& table, ChannelConfiguration& channel)
{
    const auto power = [&table](const char* pKey, double otherwise) {
        return table.number(pKey, LOWEST_POWER_DBM, HIGHEST_POWER_DBM).value_or(otherwise);
    };
    channel.txPminDbm = power("tx_pmin_dbm", channel.txPminDbm);
    channel.txPmaxDbm = power("tx_pmax_dbm", channel.txPmaxDbm);
    channel.requestedPowerDbm = power("requested_power_dbm", channel.requestedPowerDbm);
    if (channel.txPminDbm > channel.txPmaxDbm) {
        table.failAtOneOf({"tx_pmin_dbm", "tx_pmax_dbm"},
                          fmt::format("tx_pmin_dbm in {} is {}, above tx_pmax_dbm, which is {}; lower it",
                                      table.place(), channel.txPminDbm, channel.txPmaxDbm));
    }
}

ChannelConfiguration readChannel(const TomlTable& table, ChannelConfiguration channel)
{
    std::vector<std::string> keys = channelKeyNames();
    keys.insert(keys.begin(), "number");
    keys.emplace_back("transmitter");
    table.allowOnly(keys);
    channel.nLine = table.line();
    channel.nNumber = static_cast<unsigned int>(table.requiredInteger("number", 0, MAX_INT32));
    readChannelKeys(table, channel);
    const auto transmitter = table.table("transmitter");
    if (!transmitter || !readTransmitter(*transmitter, channel.transmitter, channel.nSeed)) {
        channel.nSeed += channel.nNumber; // channels whose noise is not the same
    }
    return channel;
}
} // namespace

std::vector<std::string> channelKeyNames()
{
    return {"power_mode",          "tx_pmin_dbm",     "tx_pmax_dbm",
            "requested_power_dbm", "frequency_mhz",   "gain_percent_ramping",
            "gain_percent_on",     "production_test", "loop_mode"};
}

void readChannelKeys(const TomlTable& table, ChannelConfiguration& channel)
{
    channel.nPowerMode =
        static_cast<int>(table.integer("power_mode", MIN_INT32, MAX_INT32).value_or(channel.nPowerMode));
    readPowers(table, channel);
    channel.frequencyMhz = table.number("frequency_mhz", 0.0, HIGHEST_FREQUENCY_MHZ).value_or(channel.frequencyMhz);
    if (const auto gain = readGain(table, "gain_percent_ramping")) {
        channel.gainPercentRamping = gain;
    }
    if (const auto gain = readGain(table, "gain_percent_on")) {
        channel.gainPercentOn = gain;
    }
    channel.bProductionTest = table.boolean("production_test").value_or(channel.bProductionTest);
    channel.nLoopMode = static_cast<int>(table.integer("loop_mode", 0, MAX_LOOP_MODE).value_or(channel.nLoopMode));
}

std::vector<std::string> transmitterKeyNames()
{
    std::vector<std::string> names;
    names.reserve(transmitterKeys().size());
    for (const TransmitterKey& key : transmitterKeys()) {
        names.emplace_back(key.pName);
    }
    return names;
}

bool readTransmitter(const TomlTable& table, TransmitterParameters& parameters, std::uint64_t& nSeed)
{
    std::vector<std::string> keys = transmitterKeyNames();
    keys.insert(keys.begin(), "seed");
    table.allowOnly(keys);
    for (const TransmitterKey& key : transmitterKeys()) {
        parameters.*key.pField = table.number(key.pName, key.minimum, key.maximum).value_or(parameters.*key.pField);
    }
    checkTransmitter(table, parameters);
    const auto nOwnSeed = table.integer("seed", 0, MAX_INT32);
    nSeed = static_cast<std::uint64_t>(nOwnSeed.value_or(static_cast<std::int64_t>(nSeed)));
    return nOwnSeed.has_value();
}

void checkTransmitter(const TomlTable& table, const TransmitterParameters& parameters)
{
    if (parameters.minPowerDbm >= parameters.maxPowerDbm) {
        table.failAtOneOf({"min_power_dbm", "max_power_dbm"},
                          fmt::format("the transmitter's lower limit of the control power is {} dBm, not below the "
                                      "upper one of {} dBm; set them apart",
                                      parameters.minPowerDbm, parameters.maxPowerDbm));
    }
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

EInterpolation readInterpolation(const TomlTable& table, const std::string& sKey, EInterpolation eDefault)
{
    const auto nWord = table.word(sKey, {"held", "linear"});
    if (!nWord) {
        return eDefault;
    }
    return *nWord == 0 ? EInterpolation::Held : EInterpolation::Linear;
}

void readInterpolations(const TomlTable& table, Profile::Interpolation& interpolation)
{
    interpolation.eRequestedPower = readInterpolation(table, "requested_power", interpolation.eRequestedPower);
    interpolation.eTemperature = readInterpolation(table, "temperature", interpolation.eTemperature);
    interpolation.eFrequency = readInterpolation(table, "frequency", interpolation.eFrequency);
}

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
