#include "Unit/Configuration/ValueRanges.h"
#include "Unit/TestServer/private/MethodGroups.h"
#include "Unit/TestServer/private/MethodHelpers.h"

#include <fmt/format.h>

#include <optional>

namespace
{
constexpr const char* UNIT_FILE = "unit-file";

/** @return the value to set; nothing to go back to the profile or the unit file */
std::optional<double> newInput(const MethodCall& call, const char* pMember, double minimum, double maximum)
{
    const auto sSource = call.text("Source");
    if (!sSource) {
        return numberInRange(call, pMember, minimum, maximum);
    }
    if (*sSource != UNIT_FILE) {
        throw failure(call, fmt::format("Source is \"{}\"; it can be \"{}\"", *sSource, UNIT_FILE));
    }
    if (call.has(pMember)) {
        throw failure(call, fmt::format("{} and Source are both given; give one of them", pMember));
    }
    return std::nullopt;
}

void change(InputValue& input, const std::optional<double>& value)
{
    if (value) {
        input.set(*value);
    }
    else {
        input.release();
    }
}

XmlRpcValue setTxPower(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL, "State", "PowerMode"});
    const std::string sState = call.requiredText("State");
    if (sState != "on" && sState != "off") {
        throw failure(call, fmt::format("State is \"{}\"; it can be \"on\" or \"off\"", sState));
    }
    const std::optional<int> nPowerMode = call.integer("PowerMode");
    const bool bOn = sState == "on";
    bool bTaken = true;
    tellChannel(call, loop, [&](RadioChannel& channel) {
        const long nResult = nPowerMode ? channel.setPowerMode(*nPowerMode) : EAF_OK;
        bTaken = loop.want(channel, bOn ? eREQUESTED_TX_POWER_ON : eREQUESTED_TX_POWER_OFF);
        return nResult;
    });
    if (!bTaken) {
        throw failure(call, "the unit is stopping");
    }
    return standardResponse();
}

XmlRpcValue setPowerMode(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL, "PowerMode"});
    const int nPowerMode = call.requiredInteger("PowerMode");
    tellChannel(call, loop, [&](RadioChannel& channel) { return channel.setPowerMode(nPowerMode); });
    return standardResponse();
}

XmlRpcValue setRequestedPower(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL, "PowerDbm", "Source"});
    const auto powerDbm = newInput(call, "PowerDbm", LOWEST_POWER_DBM, HIGHEST_POWER_DBM);
    tellChannel(call, loop, [&](RadioChannel& channel) -> long {
        change(channel.requestedPowerDbm(), powerDbm);
        return EAF_OK;
    });
    return standardResponse();
}

XmlRpcValue setFrequency(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL, "FrequencyMhz", "Source"});
    const auto frequencyMhz = newInput(call, "FrequencyMhz", 0.0, HIGHEST_FREQUENCY_MHZ);
    tellChannel(call, loop, [&](RadioChannel& channel) -> long {
        change(channel.frequencyMhz(), frequencyMhz);
        return EAF_OK;
    });
    return standardResponse();
}

XmlRpcValue setTemperature(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({"TemperatureC", "Source"});
    const auto temperatureDegrees = newInput(call, "TemperatureC", COLDEST_DEGREES, HOTTEST_DEGREES);
    betweenSteps(call, loop, [&] { change(loop.temperatureDegrees(), temperatureDegrees); });
    return standardResponse();
}

XmlRpcValue setLimits(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL, "TxPminDbm", "TxPmaxDbm"});
    const double txPminDbm = numberInRange(call, "TxPminDbm", LOWEST_POWER_DBM, HIGHEST_POWER_DBM);
    const double txPmaxDbm = numberInRange(call, "TxPmaxDbm", LOWEST_POWER_DBM, HIGHEST_POWER_DBM);
    if (txPminDbm > txPmaxDbm) {
        throw failure(call, fmt::format("TxPminDbm is {}, above TxPmaxDbm, which is {}", txPminDbm, txPmaxDbm));
    }
    tellChannel(call, loop, [&](RadioChannel& channel) { return channel.setLimits(txPminDbm, txPmaxDbm); });
    return standardResponse();
}

XmlRpcValue setGain(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL, "State", "DetectorState", "GainPercent"});
    const std::string sState = call.requiredText("State");
    if (sState != "ramping" && sState != "on") {
        throw failure(call, fmt::format("State is \"{}\"; it can be \"ramping\" or \"on\"", sState));
    }
    const int nGainPercent = integerInRange(call, "GainPercent", 0, MAX_GAIN_PERCENT);
    const int nLast = static_cast<int>(GainPercent().size()) - 1;
    const bool bAll = !call.has("DetectorState");
    const int nFrom = bAll ? 0 : integerInRange(call, "DetectorState", 0, nLast);
    const int nTo = bAll ? nLast : nFrom;
    tellChannel(call, loop, [&](RadioChannel& channel) {
        long nResult = EAF_OK;
        for (int nDetectorState = nFrom; nDetectorState <= nTo && !EAF_isFailure(nResult); ++nDetectorState) {
            nResult = channel.setGain(static_cast<EOPHDetectorState>(nDetectorState),
                                      sState == "on" ? eOPC_TX_ON : eOPC_TX_ON_RAMPING, nGainPercent);
        }
        return nResult;
    });
    return standardResponse();
}

XmlRpcValue setProductionTest(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL, "ProductionTest", "LoopMode"});
    const bool bProductionTest = call.requiredBoolean("ProductionTest");
    const int nLoopMode = call.has("LoopMode") ? integerInRange(call, "LoopMode", 0, MAX_LOOP_MODE) : 0;
    tellChannel(call, loop,
                [&](RadioChannel& channel) { return channel.setProductionTest(bProductionTest, nLoopMode); });
    return standardResponse();
}

XmlRpcValue setInterval(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({"IntervalMs"});
    const int intervalMs = integerInRange(call, "IntervalMs", 1, static_cast<int>(MAX_INTERVAL_MS));
    bool bTaken = true;
    betweenSteps(call, loop, [&] { bTaken = loop.setInterval(static_cast<unsigned int>(intervalMs)); });
    if (!bTaken) {
        throw failure(call, "not every controller took the interval");
    }
    return standardResponse();
}

using Setting = XmlRpcValue (*)(const MethodCall&, RegulationLoop&);
} // namespace

void addSettingMethods(MethodTable& table, RegulationLoop& loop)
{
    const auto add = [&](const char* pName, const char* pHelp, Setting setting,
                         EMethodChange eChanges = EMethodChange::Channel) {
        addStructMethod(
            table, pName, pHelp, [&loop, setting](const MethodCall& call) { return setting(call, loop); }, eChanges);
    };
    add("Unit.SetTxPower",
        "Switches a transmitter. State (string): on or off. PowerMode (int): kept when left out. A request that comes "
        "while the transmitter switches the other way is carried out afterwards. RadioChannelID (int): 0 when left "
        "out.",
        setTxPower);
    add("Unit.SetPowerMode",
        "Sets the power mode. PowerMode (int): 0 limits the loop's steps, 1 does not, 2 is reported once and then "
        "limits like 0. RadioChannelID (int).",
        setPowerMode);
    add("Unit.SetRequestedPower",
        "Sets the requested output power. PowerDbm (double), or Source (string): unit-file, to go back to the profile "
        "or the unit file. RadioChannelID (int).",
        setRequestedPower);
    add("Unit.SetFrequency",
        "Sets the frequency. FrequencyMhz (double), or Source (string): unit-file. RadioChannelID (int).",
        setFrequency);
    add("Unit.SetTemperature", "Sets the unit's temperature. TemperatureC (double), or Source (string): unit-file.",
        setTemperature, EMethodChange::Unit);
    add("Unit.SetLimits",
        "Sets the limits of the control power. TxPminDbm (double); TxPmaxDbm (double) is told only, the upper limit "
        "is the handler's. RadioChannelID (int).",
        setLimits);
    add("Unit.SetGain",
        "Sets the loop gain. State (string): ramping or on. GainPercent (int). DetectorState (int): 0 to 2, all when "
        "left out. RadioChannelID (int).",
        setGain);
    add("Unit.SetProductionTest",
        "Switches production test. ProductionTest (boolean). LoopMode (int): 0 normal, 1 closed, 2 open; 0 when left "
        "out. RadioChannelID (int).",
        setProductionTest);
    add("Unit.SetInterval", "Sets the regulator interval of the unit. IntervalMs (int): 1 to 24.", setInterval,
        EMethodChange::Unit);
}
