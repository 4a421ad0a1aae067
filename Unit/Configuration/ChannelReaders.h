/** @file
 * Reads what files say of a channel, its transmitter and the faults of its handler. All throw ConfigurationError.
 */
#pragma once

#include "Unit/Configuration/TomlTable.h"
#include "Unit/Configuration/UnitConfiguration.h"

/** @return the keys that readChannelKeys() reads */
std::vector<std::string> channelKeyNames();

/**
 * Puts a channel's keys over what holds without them. Reads neither its number nor its transmitter, and leaves it to
 * the caller to refuse other keys.
 */
void readChannelKeys(const TomlTable& table, ChannelConfiguration& channel);

/** @return the names of transmitterKeys() */
std::vector<std::string> transmitterKeyNames();

/**
 * Puts a transmitter's keys over what holds without them; refuses other keys than transmitterKeyNames() and "seed".
 * @return whether the table gives a seed
 */
bool readTransmitter(const TomlTable& table, TransmitterParameters& parameters, std::uint64_t& nSeed);

/** Refuses a transmitter whose limits are not in order, at the keys of the table that last changed it. */
void checkTransmitter(const TomlTable& table, const TransmitterParameters& parameters);

/** @return the keys that readFaultKeys() reads */
std::vector<std::string> faultKeyNames();

/** Reads a fault but for its channel, and leaves it to the caller to refuse other keys. */
FaultConfiguration readFaultKeys(const TomlTable& table);

/** @return a loop gain: an integer, or one for each detector state */
std::optional<GainPercent> readGain(const TomlTable& table, const std::string& sKey);

/** @return how a value goes from row to row: "held" or "linear" */
EInterpolation readInterpolation(const TomlTable& table, const std::string& sKey, EInterpolation eDefault);

/** Reads how the columns of a drive are read between its rows. */
void readInterpolations(const TomlTable& table, Profile::Interpolation& interpolation);
