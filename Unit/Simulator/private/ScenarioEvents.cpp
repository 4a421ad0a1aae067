#include "Unit/Configuration/ChannelReaders.h"
#include "Unit/Configuration/ValueRanges.h"
#include "Unit/Simulator/private/ScenarioReaders.h"

#include <fmt/format.h>

#include <algorithm>

namespace
{
constexpr double SHORTEST_PERIOD_SECONDS = 0.001; // of the shortest regulator interval

const std::vector<std::string> TIME_KEYS = {"at_s", "label", "every_s", "over_s"};
const std::vector<std::string> JUMPING_KEYS = {
    "request",         "power_mode",      "tx_pmin_dbm", "tx_pmax_dbm", "gain_percent_ramping",
    "gain_percent_on", "production_test", "loop_mode"};
const std::vector<std::string> MOVING_KEYS = {"requested_power_dbm", "frequency_mhz", "temperature_c", "transmitter"};

std::vector<std::string> joined(std::vector<std::string> keys, const std::vector<std::string>& more)
{
    keys.insert(keys.end(), more.begin(), more.end());
    return keys;
}

std::optional<int> optionalInt(const std::optional<std::int64_t>& nValue)
{
    return nValue ? std::optional(static_cast<int>(*nValue)) : std::nullopt;
}

void readJumpingValues(const TomlTable& table, ScenarioEvent& event)
{
    if (const auto nWord = table.word("request", {"on", "off"})) {
        event.on = *nWord == 0;
    }
    event.nPowerMode = optionalInt(table.integer("power_mode", MIN_INT32, MAX_INT32));
    event.txPminDbm = table.number("tx_pmin_dbm", LOWEST_POWER_DBM, HIGHEST_POWER_DBM);
    event.txPmaxDbm = table.number("tx_pmax_dbm", LOWEST_POWER_DBM, HIGHEST_POWER_DBM);
    event.gainPercentRamping = readGain(table, "gain_percent_ramping");
    event.gainPercentOn = readGain(table, "gain_percent_on");
    event.productionTest = table.boolean("production_test");
    event.nLoopMode = optionalInt(table.integer("loop_mode", 0, MAX_LOOP_MODE));
}

void readMovingValues(const TomlTable& table, ScenarioEvent& event)
{
    event.requestedPowerDbm = table.number("requested_power_dbm", LOWEST_POWER_DBM, HIGHEST_POWER_DBM);
    event.frequencyMhz = table.number("frequency_mhz", 0.0, HIGHEST_FREQUENCY_MHZ);
    event.temperatureDegrees = table.number("temperature_c", COLDEST_DEGREES, HOTTEST_DEGREES);
    const auto transmitter = table.table("transmitter");
    if (!transmitter) {
        return;
    }
    transmitter->allowOnly(transmitterKeyNames());
    for (const TransmitterKey& key : transmitterKeys()) {
        if (const auto value = transmitter->number(key.pName, key.minimum, key.maximum)) {
            event.transmitter.emplace_back(&key, *value);
        }
    }
    if (event.transmitter.empty()) {
        table.failValue("transmitter", "a table with one or more keys of a transmitter");
    }
}

void checkSomethingHappens(const TomlTable& table)
{
    const std::vector<std::string> keys = joined(JUMPING_KEYS, MOVING_KEYS);
    if (std::none_of(keys.begin(), keys.end(), [&table](const std::string& sKey) { return table.has(sKey); })) {
        table.fail("", fmt::format("{} says nothing that happens; add one or more of {}", table.place(),
                                   fmt::join(keys, ", ")));
    }
}

/** A value that moves for some time cannot stand in one event with one that jumps. */
void checkThatAllMove(const TomlTable& table)
{
    const auto jumping = std::find_if(JUMPING_KEYS.begin(), JUMPING_KEYS.end(),
                                      [&table](const std::string& sKey) { return table.has(sKey); });
    if (jumping != JUMPING_KEYS.end()) {
        table.failAtOneOf({*jumping, "over_s"},
                          fmt::format("{} in {} goes with over_s, but does not move; over_s goes with {} only",
                                      *jumping, table.place(), fmt::join(MOVING_KEYS, ", ")));
    }
}

void checkTimes(const TomlTable& root, const TomlTable& table, const ScenarioEvent& event, double durationSeconds)
{
    checkWithinRun(root, table, "at_s", event.atSeconds, durationSeconds);
    if (event.overSeconds > 0.0) {
        checkThatAllMove(table);
    }
    if (event.atSeconds + event.overSeconds > durationSeconds) {
        table.failAtOneOf(
            {"over_s", "at_s"},
            fmt::format("over_s in {} is {} from {} on, beyond duration_s, which is {}; it must be at most {}",
                        table.place(), event.overSeconds, event.atSeconds, durationSeconds,
                        durationSeconds - event.atSeconds));
    }
    if (event.everySeconds && *event.everySeconds < event.overSeconds) {
        table.failAtOneOf({"every_s", "over_s"},
                          fmt::format("every_s in {} is {}; it must be at least over_s, which is {}", table.place(),
                                      *event.everySeconds, event.overSeconds));
    }
}

ScenarioEvent readEvent(const TomlTable& root, const TomlTable& table, double durationSeconds)
{
    table.allowOnly(joined(joined(TIME_KEYS, JUMPING_KEYS), MOVING_KEYS));
    ScenarioEvent event;
    event.atSeconds = table.requiredNumber("at_s", 0.0, LONGEST_RUN_SECONDS);
    event.overSeconds = table.number("over_s", 0.0, LONGEST_RUN_SECONDS).value_or(0.0);
    event.everySeconds = table.number("every_s", SHORTEST_PERIOD_SECONDS, LONGEST_RUN_SECONDS);
    event.sLabel = table.text("label").value_or("");
    readJumpingValues(table, event);
    readMovingValues(table, event);
    checkSomethingHappens(table);
    checkTimes(root, table, event, durationSeconds);
    return event;
}

void checkOrder(const TomlTable& earlier, const TomlTable& later, const std::vector<ScenarioEvent>& events)
{
    const double before = events[events.size() - 2].atSeconds;
    const double after = events.back().atSeconds;
    if (after >= before) {
        return;
    }
    const TomlTable& named = earlier.isFromElsewhere("at_s") && !later.isFromElsewhere("at_s") ? earlier : later;
    named.fail("at_s", fmt::format("at_s in {} is {} after {} in the one before; order events by ascending time",
                                   later.place(), after, before));
}

/** The limits that hold as events change them one by one. */
class RunningLimits
{
public:
    explicit RunningLimits(const ChannelConfiguration& channel) : m_channel(channel) {}

    void follow(const TomlTable& table, const ScenarioEvent& event)
    {
        m_channel.txPminDbm = event.txPminDbm.value_or(m_channel.txPminDbm);
        m_channel.txPmaxDbm = event.txPmaxDbm.value_or(m_channel.txPmaxDbm);
        if ((event.txPminDbm || event.txPmaxDbm) && m_channel.txPminDbm > m_channel.txPmaxDbm) {
            table.failAtOneOf({"tx_pmin_dbm", "tx_pmax_dbm"},
                              fmt::format("{} leaves tx_pmin_dbm at {}, above tx_pmax_dbm, which is {}; give both",
                                          table.place(), m_channel.txPminDbm, m_channel.txPmaxDbm));
        }
        for (const auto& [pKey, value] : event.transmitter) {
            m_channel.transmitter.*pKey->pField = value;
        }
        if (!event.transmitter.empty()) {
            checkTransmitter(*table.table("transmitter"), m_channel.transmitter);
        }
    }

private:
    ChannelConfiguration m_channel;
};
} // namespace

void readEvents(const TomlTable& root, Scenario& scenario)
{
    const std::vector<TomlTable> tables = root.tables("event");
    RunningLimits limits(scenario.channel());
    for (std::size_t nEvent = 0; nEvent < tables.size(); ++nEvent) {
        scenario.events.push_back(readEvent(root, tables[nEvent], scenario.durationSeconds));
        if (nEvent > 0) {
            checkOrder(tables[nEvent - 1], tables[nEvent], scenario.events);
        }
        limits.follow(tables[nEvent], scenario.events.back());
    }
    // Those that come again meet what later ones have left.
    for (std::size_t nEvent = 0; nEvent < tables.size(); ++nEvent) {
        if (scenario.events[nEvent].everySeconds) {
            limits.follow(tables[nEvent], scenario.events[nEvent]);
        }
    }
}

void readScenarioFaults(const TomlTable& root, Scenario& scenario)
{
    for (const TomlTable& table : root.tables("fault")) {
        table.allowOnly(faultKeyNames());
        positiveNumber(table, "for_s", LONGEST_RUN_SECONDS);
        FaultConfiguration fault = readFaultKeys(table);
        fault.nChannel = scenario.channel().nNumber;
        checkWithinRun(root, table, "at_s", fault.atSeconds, scenario.durationSeconds);
        scenario.unit.faults.push_back(fault);
    }
}
