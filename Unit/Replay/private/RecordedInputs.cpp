#include "Unit/Replay/private/RecordedInputs.h"

#include "Platform/Conversions.h"
#include "Unit/TestServer/UnitMethods.h"
#include "Unit/XmlRpc/JsonXmlRpc.h"
#include "Unit/XmlRpc/XmlRpcFault.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

using nlohmann::ordered_json;

namespace
{
constexpr std::ptrdiff_t LATEST_EVENTS = 5; // and as many commands, which frequent failures are not to hide

RecordedWindows<RunEvent>::Reader readerOf(const Recording& recording)
{
    return [&recording](const RecordedRange& range, const std::function<void(const RunEvent&)>& add) {
        recording.forEachEvent(range, add);
    };
}

std::string describe(const RunEvent& command, const std::string& sWhat)
{
    return fmt::format("the command at {:.6f} s, \"{}\", {}", static_cast<double>(command.nTimeUs) / US_PER_S,
                       command.sText, sWhat);
}

/** @return a call as a client sends it: an only struct is the only parameter */
XmlRpcRequest requestOf(const std::string& sMethod, const ordered_json& parameters)
{
    XmlRpcRequest request(XMLRPC_RequestNew());
    if (request == nullptr) {
        throw std::bad_alloc();
    }
    XMLRPC_RequestSetRequestType(request.get(), xmlrpc_request_call);
    XMLRPC_RequestSetMethodName(request.get(), sMethod.c_str());
    const ordered_json all = parameters.is_array() ? parameters : ordered_json::array({parameters});
    XMLRPC_RequestSetData(request.get(), xmlRpcFromJson(nullptr, all).release());
    return request;
}

/** @return what went wrong; empty when nothing did */
std::string call(const Method& method, XMLRPC_REQUEST request)
{
    try {
        const XmlRpcValue value = method.call(MethodCall(method.sName, request));
        const bool bFault = value == nullptr || XMLRPC_ValueIsFault(value.get()) != 0;
        const char* const pText = bFault && value != nullptr ? XMLRPC_GetValueFaultString(value.get()) : nullptr;
        return bFault ? (pText == nullptr || *pText == '\0' ? "no reason given" : pText) : "";
    }
    catch (const XmlRpcFault& fault) {
        return fault.what();
    }
    catch (const std::exception& error) {
        return fmt::format("{}: {}", method.sName, error.what());
    }
}

/** @param sRecorded, sNow the texts of faults, one of them perhaps empty */
std::string differenceOf(const std::string& sRecorded, const std::string& sNow)
{
    if (sRecorded.empty()) {
        return fmt::format("was carried out when it was recorded, and fails now: {}", sNow);
    }
    return sNow.empty() ? "failed when it was recorded, and is carried out now"
                        : fmt::format("failed when it was recorded, and fails in another way now: {}", sNow);
}
} // namespace

bool isStop(const RunEvent& event)
{
    return event.eEvent == ERunEvent::Note && event.sDetail == STOP_DETAIL;
}

RecordedInputs::RecordedInputs(const Recording& recording, const RecordedRange& range, RegulationLoop& loop)
    : m_loop(loop), m_methods(unitMethods(loop)), m_events(readerOf(recording), range)
{
    m_loop.commands().executeInCaller();
}

CommandTrouble RecordedInputs::bring(std::uint64_t nSteps, std::uint64_t nNextUs)
{
    for (const RunEvent* pEvent = m_events.peek(); pEvent != nullptr; pEvent = m_events.peek()) {
        const bool bCommand = pEvent->eEvent == ERunEvent::Command;
        const bool bInput = bCommand || isStop(*pEvent);
        if (bInput ? pEvent->nSteps > nSteps : pEvent->nTimeUs > nNextUs) {
            break;
        }
        const RunEvent event = *pEvent;
        m_events.pop();
        remember(event);
        if (isStop(event)) {
            m_loop.requestStop();
        }
        CommandTrouble trouble = bCommand ? carryOut(event) : CommandTrouble();
        if (!trouble.sText.empty()) {
            return trouble;
        }
    }
    return {};
}

CommandTrouble RecordedInputs::carryOut(const RunEvent& command)
{
    const ordered_json detail = ordered_json::parse(command.sDetail, nullptr, false);
    if (!detail.is_object() || !detail.contains("method") || !detail["method"].is_string()) {
        return {false, describe(command, "is not recorded in a way that this program reads")};
    }
    const auto parameters = detail.find("params");
    if (parameters == detail.end() || !parameters->is_structured()) {
        return {false, describe(command, "had parameters that were too long to be recorded")};
    }
    const std::string sMethod = detail["method"].get<std::string>();
    const Method* const pMethod = m_methods.find(sMethod);
    if (pMethod == nullptr) {
        return {false,
                describe(command, fmt::format("is of the method {}, which this program does not have", sMethod))};
    }
    XmlRpcRequest request;
    try {
        request = requestOf(sMethod, *parameters);
    }
    catch (const std::invalid_argument& error) {
        return {false, describe(command, fmt::format("is recorded without a part of it: {}", error.what()))};
    }
    const std::string sFault = call(*pMethod, request.get());
    const std::string sRecordedFault = detail.value("fault", "");
    if (sFault != sRecordedFault) {
        return {true, describe(command, differenceOf(sRecordedFault, sFault))};
    }
    ++m_nCommands;
    return {};
}

void RecordedInputs::remember(const RunEvent& event)
{
    const auto isOfItsKind = [bCommand = event.eEvent == ERunEvent::Command](const RunEvent& other) {
        return (other.eEvent == ERunEvent::Command) == bCommand;
    };
    m_latest.push_back(event);
    if (std::count_if(m_latest.begin(), m_latest.end(), isOfItsKind) > LATEST_EVENTS) {
        m_latest.erase(std::find_if(m_latest.begin(), m_latest.end(), isOfItsKind));
    }
}
