#include "Unit/TestServer/private/MethodGroups.h"
#include "Unit/TestServer/private/MethodHelpers.h"
#include "Unit/Text/PowerText.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace
{
constexpr double CENTI = 100.0;
constexpr double NANOSECONDS_PER_MICROSECOND = 1000.0;

/** What is copied between two steps, to be told afterwards. */
struct ChannelSnapshot
{
    const RadioChannel* pChannel;
    EOPCState eState = eOPC_UNDEFINED;
    bool bOn = false;
    StepSample sample{};
    ChannelConfiguration settings{};
    InputValue requestedPowerDbm{0.0};
    InputValue frequencyMhz{0.0};
    std::optional<std::uint64_t> nRefusedCalls{};
};

struct UnitSnapshot
{
    unsigned int intervalMs = 0;
    double uptimeSeconds = 0.0;
    InputValue temperatureDegrees{0.0};
    std::uint64_t nOverruns = 0;
    std::uint64_t nDroppedSamples = 0;
    LatenessStatistics lateness;
    CommandStatistics commands;
    std::vector<ChannelSnapshot> channels;
};

const char* sourceName(const InputValue& input)
{
    switch (input.source()) {
    case EInputSource::Profile:
        return "profile";
    case EInputSource::Set:
        return "set";
    case EInputSource::Constant:
        break;
    }
    return "constant";
}

/** A struct that grows member by member. */
class Members
{
public:
    void number(const char* pName, double value) { addXmlRpcValue(m_value.get(), makeXmlRpcDouble(pName, value)); }
    void count(const char* pName, std::uint64_t nValue) { number(pName, static_cast<double>(nValue)); }
    void integer(const char* pName, int nValue) { addXmlRpcValue(m_value.get(), makeXmlRpcInt(pName, nValue)); }
    void boolean(const char* pName, bool bValue) { addXmlRpcValue(m_value.get(), makeXmlRpcBoolean(pName, bValue)); }
    void text(const char* pName, const char* pValue) { addXmlRpcValue(m_value.get(), makeXmlRpcString(pName, pValue)); }
    void value(XmlRpcValue value) { addXmlRpcValue(m_value.get(), std::move(value)); }

    /** Leaves out a power that is off or not known. */
    void power(const char* pName, std::int32_t nCentiDbm)
    {
        if (nCentiDbm != OPC_POWER_OFF && nCentiDbm != OPC_POWER_UNKNOWN) {
            number(pName, nCentiDbm / CENTI);
        }
    }

    XmlRpcValue take() { return std::move(m_value); }

private:
    XmlRpcValue m_value = makeXmlRpcStruct(nullptr);
};

void copy(ChannelSnapshot& snapshot)
{
    const RadioChannel& channel = *snapshot.pChannel;
    snapshot.eState = channel.state();
    snapshot.bOn = channel.isOn();
    snapshot.sample = channel.lastSample();
    snapshot.settings = channel.configuration();
    snapshot.requestedPowerDbm = channel.requestedPowerDbm();
    snapshot.frequencyMhz = channel.frequencyMhz();
    snapshot.nRefusedCalls = channel.refusedCalls();
}

UnitSnapshot takeSnapshot(const MethodCall& call, RegulationLoop& loop)
{
    UnitSnapshot snapshot;
    if (call.has(CHANNEL)) {
        snapshot.channels.push_back({&channelOf(call, loop)});
    }
    else {
        for (const RadioChannel* pChannel : loop.channels()) {
            snapshot.channels.push_back({pChannel});
        }
    }
    betweenSteps(call, loop, [&] {
        snapshot.intervalMs = loop.intervalMs();
        snapshot.uptimeSeconds = loop.elapsedSeconds();
        snapshot.temperatureDegrees = loop.temperatureDegrees();
        snapshot.nOverruns = loop.overruns();
        snapshot.nDroppedSamples = loop.droppedSamples();
        snapshot.lateness = loop.lateness();
        snapshot.commands = loop.commands().statistics();
        std::for_each(snapshot.channels.begin(), snapshot.channels.end(), copy);
    });
    return snapshot;
}

XmlRpcValue tell(const ChannelSnapshot& channel)
{
    const StepSample& sample = channel.sample;
    Members members;
    members.integer(CHANNEL, static_cast<int>(channel.pChannel->number()));
    members.text("State", controllerStateName(channel.eState));
    members.text("TxPower", channel.bOn ? "on" : "off");
    members.integer("PowerMode", channel.settings.nPowerMode);
    members.number("RequestedPowerDbm", channel.requestedPowerDbm.value());
    members.text("RequestedPowerSource", sourceName(channel.requestedPowerDbm));
    members.power("TargetPowerDbm", sample.nPtarget);
    members.power("ControlPowerDbm", sample.nPctrl);
    members.power("MeasuredPowerDbm", sample.nPmeasured);
    members.power("PredictedPowerDbm", sample.nPredictedPctrl);
    if (channel.eState == eOPC_TX_ON_RAMPING || channel.eState == eOPC_TX_ON) {
        members.number("PowerErrorDb", sample.nPowerError / CENTI);
    }
    members.integer("DetectorState", sample.nDetectorState);
    members.number("TxPminDbm", channel.settings.txPminDbm);
    members.number("TxPmaxDbm", channel.settings.txPmaxDbm);
    members.number("FrequencyMhz", channel.frequencyMhz.value());
    members.text("FrequencySource", sourceName(channel.frequencyMhz));
    members.boolean("ProductionTest", channel.settings.bProductionTest);
    members.integer("LoopMode", channel.settings.nLoopMode);
    members.count("Steps", sample.nSteps);
    members.count("FailedSteps", sample.nFailedSteps);
    if (channel.nRefusedCalls) {
        members.count("RefusedCalls", *channel.nRefusedCalls);
    }
    return members.take();
}

XmlRpcValue status(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL});
    const UnitSnapshot snapshot = takeSnapshot(call, loop);
    Members members;
    members.integer("IntervalMs", static_cast<int>(snapshot.intervalMs));
    members.number("UptimeS", snapshot.uptimeSeconds);
    members.number("TemperatureC", snapshot.temperatureDegrees.value());
    members.text("TemperatureSource", sourceName(snapshot.temperatureDegrees));
    members.count("Overruns", snapshot.nOverruns);
    members.number("LatenessMeanUs", snapshot.lateness.meanNs() / NANOSECONDS_PER_MICROSECOND);
    members.number("LatenessMaxUs", static_cast<double>(snapshot.lateness.maxNs()) / NANOSECONDS_PER_MICROSECOND);
    members.count("DroppedSamples", snapshot.nDroppedSamples);
    members.count("Commands", snapshot.commands.nCommands);
    members.number("LongestCommandUs", static_cast<double>(snapshot.commands.nLongestNs) / NANOSECONDS_PER_MICROSECOND);
    XmlRpcValue channels = makeXmlRpcArray("Channels");
    for (const ChannelSnapshot& channel : snapshot.channels) {
        addXmlRpcValue(channels.get(), tell(channel));
    }
    members.value(std::move(channels));
    return members.take();
}

XmlRpcValue gainArray(const char* pName, const GainPercent& gains)
{
    XmlRpcValue array = makeXmlRpcArray(pName);
    for (const int nGainPercent : gains) {
        addXmlRpcValue(array.get(), makeXmlRpcInt(nullptr, nGainPercent));
    }
    return array;
}

XmlRpcValue gains(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL});
    const RadioChannel& channel = channelOf(call, loop);
    GainPercent ramping{};
    GainPercent on{};
    betweenSteps(call, loop, [&] {
        ramping = channel.gains(eOPC_TX_ON_RAMPING);
        on = channel.gains(eOPC_TX_ON);
    });
    Members members;
    members.value(gainArray("Ramping", ramping));
    members.value(gainArray("On", on));
    return members.take();
}
} // namespace

void addStatusMethods(MethodTable& table, RegulationLoop& loop)
{
    addStructMethod(table, "Unit.Status",
                    "Returns how the unit and its channels are; a power that is off or not known is left out. "
                    "RadioChannelID (int): only this channel; all when left out.",
                    [&loop](const MethodCall& call) { return status(call, loop); });
    addStructMethod(table, "Unit.Gains",
                    "Returns the loop gains in percent by detector state, while ramping and when on. "
                    "RadioChannelID (int): 0 when left out.",
                    [&loop](const MethodCall& call) { return gains(call, loop); });
}
