#include "Platform/Trace/TraceControl.h"
#include "Unit/Configuration/ValueRanges.h"
#include "Unit/TestServer/private/MethodGroups.h"
#include "Unit/TestServer/private/MethodHelpers.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace
{
XmlRpcValue traceLevels(const MethodCall& call, RegulationLoop& /*loop*/)
{
    call.allowOnly({});
    XmlRpcValue groups = makeXmlRpcArray("Groups");
    for (const TraceGroupLevel& level : TraceControl::levels()) {
        XmlRpcValue group = makeXmlRpcStruct(nullptr);
        addXmlRpcValue(group.get(), makeXmlRpcString("Group", level.sGroup));
        addXmlRpcValue(group.get(), makeXmlRpcInt("Level", level.nLevel));
        addXmlRpcValue(groups.get(), std::move(group));
    }
    XmlRpcValue response = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(response.get(), std::move(groups));
    return response;
}

void refuseUnknownGroup(const MethodCall& call, const std::string& sGroup)
{
    std::string sKnown;
    for (const TraceGroupLevel& level : TraceControl::levels()) {
        if (level.sGroup == sGroup) {
            return;
        }
        sKnown += (sKnown.empty() ? "" : ", ") + level.sGroup;
    }
    throw failure(call, fmt::format("unknown trace group {}; Group can be {}", sGroup, sKnown));
}

XmlRpcValue setTraceLevel(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({"Group", "Level"});
    const auto sGroup = call.text("Group");
    const int nLevel = integerInRange(call, "Level", 0, MAX_TRACE_LEVEL);
    if (sGroup) {
        refuseUnknownGroup(call, *sGroup);
    }
    // Between two steps, since modules read the levels of the trace objects as plain integers.
    betweenSteps(call, loop, [&] {
        if (sGroup) {
            TraceControl::setLevel(*sGroup, nLevel);
        }
        else {
            TraceControl::setLevelOfAll(nLevel);
        }
    });
    return standardResponse();
}

std::string operationNames()
{
    std::string sNames;
    for (int nOperation = 0; nOperation < static_cast<int>(EHandlerOperation::Count); ++nOperation) {
        sNames += fmt::format("{}{}", nOperation == 0 ? "" : ", ",
                              handlerOperationName(static_cast<EHandlerOperation>(nOperation)));
    }
    return sNames;
}

HandlerFault readFault(const MethodCall& call)
{
    const std::string sKind = call.requiredText("Kind");
    const auto eKind = handlerFaultByName(sKind);
    if (!eKind) {
        throw failure(call, fmt::format("Kind is \"{}\"; it can be none, fail, fail-times, stuck, wrong-value, slow, "
                                        "intermittent",
                                        sKind));
    }
    HandlerFault fault;
    fault.eKind = *eKind;
    if (call.has("Times")) {
        fault.nTimes = static_cast<unsigned int>(integerInRange(call, "Times", 1, MAX_INT32));
    }
    if (call.has("Value")) {
        fault.nValue = integerInRange(call, "Value", MIN_INT32, MAX_INT32);
    }
    if (call.has("DelayUs")) {
        fault.delayUs = static_cast<unsigned int>(integerInRange(call, "DelayUs", 0, MAX_FAULT_DELAY_US));
    }
    if (call.has("Probability")) {
        fault.probability = numberInRange(call, "Probability", 0.0, 1.0);
    }
    return fault;
}

XmlRpcValue setFault(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL, "Operation", "Kind", "Times", "Value", "DelayUs", "Probability"});
    const std::string sOperation = call.requiredText("Operation");
    const auto eOperation = handlerOperationByName(sOperation);
    if (!eOperation) {
        throw failure(call, fmt::format("Operation is \"{}\"; it can be {}", sOperation, operationNames()));
    }
    const HandlerFault fault = readFault(call);
    RadioChannel& channel = channelOf(call, loop);
    bool bSimulated = true;
    betweenSteps(call, loop, [&] { bSimulated = channel.setFault(*eOperation, fault); });
    if (!bSimulated) {
        throw failure(
            call, fmt::format("the output power handler of radio channel {} is not a simulated one", channel.number()));
    }
    return standardResponse();
}

XmlRpcValue faults(const MethodCall& call, RegulationLoop& loop)
{
    call.allowOnly({CHANNEL});
    const RadioChannel& channel = channelOf(call, loop);
    HandlerFaults current{};
    betweenSteps(call, loop, [&] { current = channel.faults(); });
    XmlRpcValue list = makeXmlRpcArray("Faults");
    for (std::size_t nOperation = 0; nOperation < current.size(); ++nOperation) {
        const HandlerFault& fault = current.at(nOperation);
        if (fault.eKind == EHandlerFault::None) {
            continue;
        }
        XmlRpcValue entry = makeXmlRpcStruct(nullptr);
        addXmlRpcValue(entry.get(),
                       makeXmlRpcString("Operation", handlerOperationName(static_cast<EHandlerOperation>(nOperation))));
        addXmlRpcValue(entry.get(), makeXmlRpcString("Kind", handlerFaultName(fault.eKind)));
        addXmlRpcValue(entry.get(), makeXmlRpcInt("Times", static_cast<int>(fault.nTimes)));
        addXmlRpcValue(entry.get(), makeXmlRpcInt("Value", fault.nValue));
        addXmlRpcValue(entry.get(), makeXmlRpcInt("DelayUs", static_cast<int>(fault.delayUs)));
        addXmlRpcValue(entry.get(), makeXmlRpcDouble("Probability", fault.probability));
        addXmlRpcValue(list.get(), std::move(entry));
    }
    XmlRpcValue response = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(response.get(), std::move(list));
    return response;
}

using Diagnosis = XmlRpcValue (*)(const MethodCall&, RegulationLoop&);
} // namespace

void addDiagnosisMethods(MethodTable& table, RegulationLoop& loop)
{
    const auto add = [&](const char* pName, const char* pHelp, Diagnosis diagnosis,
                         EMethodChange eChanges = EMethodChange::Nothing) {
        addStructMethod(
            table, pName, pHelp, [&loop, diagnosis](const MethodCall& call) { return diagnosis(call, loop); },
            eChanges);
    };
    add("Unit.TraceLevels", "Returns the trace groups and their levels.", traceLevels);
    add("Unit.SetTraceLevel", "Sets a trace level. Level (int): 0 to 9. Group (string): all groups when left out.",
        setTraceLevel, EMethodChange::Unit);
    add("Unit.SetFault",
        "Sets a fault of the simulated output power handler. Operation (string), such as getPmeasured. Kind (string): "
        "none, fail, fail-times, stuck, wrong-value, slow or intermittent. Times (int): how many calls fail. Value "
        "(int): what is "
        "read, powers in hundredths of a decibel. DelayUs (int). Probability (double): 0 to 1. RadioChannelID (int): 0 "
        "when left out.",
        setFault, EMethodChange::Channel);
    add("Unit.Faults",
        "Returns the faults that the simulated output power handler was given and that were not cleared. "
        "RadioChannelID (int).",
        faults);
}
