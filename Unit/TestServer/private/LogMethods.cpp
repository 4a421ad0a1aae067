#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/TraceControl.h"
#include "Unit/TestServer/private/MethodGroups.h"
#include "Unit/TestServer/private/MethodHelpers.h"

#include <fmt/format.h>

#include <chrono>
#include <memory>
#include <string_view>

namespace
{
constexpr const char* DUMP_OPTION = "SaveToSysLog";
constexpr std::chrono::milliseconds WAIT_FOR_SYSTEM_LOG{25};
constexpr int LONGEST_WAITS = 40; // a second

/** Waits for the system log around dumps, so that the lines of one never overrun what waits to be written. */
class SystemLogPace
{
public:
    explicit SystemLogPace(const RegulationLoop& loop) : m_loop(loop) {}

    /**
     * Once the system log has not kept up, does not wait again until it has; gives up early when the unit stops, which
     * must not wait for it.
     * @return whether all lines before have been handed over
     */
    bool wait()
    {
        const int nWaits = m_bKeepsUp ? LONGEST_WAITS : 1;
        m_bKeepsUp = false;
        for (int nWait = 0; nWait < nWaits && !m_loop.isFinished() && !m_bKeepsUp; ++nWait) {
            m_bKeepsUp = TraceControl::waitForSystemLog(WAIT_FOR_SYSTEM_LOG);
        }
        return m_bKeepsUp;
    }

private:
    const RegulationLoop& m_loop;
    bool m_bKeepsUp = true;
};

/** Runs the handlers that the logs published; one call at a time. */
class LogManagement
{
public:
    explicit LogManagement(RegulationLoop& loop) : m_loop(loop), m_systemLog(loop) {}

    XmlRpcValue manageTransientLog(const MethodCall& call)
    {
        RadioChannel& channel = channelOf(call, m_loop);
        const auto& method =
            published<TIMethodCStruct>(call, fmt::format("TIManageOPCTransientLogCh{}", channel.number()));
        return handled(
            call, [&] { return method.handle(method.vpThis, nullptr, call.request(), nullptr); },
            [&channel](const char* pOption) { channel.logs().onTransientLog(pOption); });
    }

    XmlRpcValue manageLog(const MethodCall& call)
    {
        RadioChannel& channel = channelOfLog(call);
        const auto& log = published<ManageLogsCStruct>(call, logNameOf(channel));
        const char* const pOption = requestOption(call);
        if (pOption == nullptr) { // the log's handler takes a text for granted
            throw XmlRpcFault(
                eTI_E_REQUIRED_INPUT_MISSING,
                fmt::format("eTI_E_REQUIRED_INPUT_MISSING, {} failed due to missing tag RequestOption", call.method()));
        }
        std::string sOption = pOption;
        return handled(
            call, [&] { return log.manageLogs(log.vpThis, sOption.data()); },
            [&channel](const char* pDone) { channel.logs().onOpcLog(pDone); });
    }

private:
    /** @return null when it is missing or no string */
    static const char* requestOption(const MethodCall& call)
    {
        return XMLRPC_VectorGetStringWithID(call.members(), "RequestOption");
    }

    static std::string logNameOf(const RadioChannel& channel)
    {
        return fmt::format("Channel.{}.TxOutputPowerControlLog", channel.number());
    }

    /** Only names of logs that the unit knows: whatever else is published is no log, and not to be called as one. */
    RadioChannel& channelOfLog(const MethodCall& call) const
    {
        const auto sName = call.text("LogName");
        if (!sName) {
            if (!call.has("RadioChannelID")) {
                call.requiredText("LogName");
            }
            return channelOf(call, m_loop);
        }
        if (call.has("RadioChannelID")) {
            throw failure(call, "LogName and RadioChannelID are both given; give one of them");
        }
        std::string sKnown;
        for (RadioChannel* pChannel : m_loop.channels()) {
            if (*sName == logNameOf(*pChannel)) {
                return *pChannel;
            }
            sKnown += (sKnown.empty() ? "" : ", ") + logNameOf(*pChannel);
        }
        throw failure(call, fmt::format("unknown log {}; LogName can be {}", *sName, sKnown));
    }

    template <class TRecord> static const TRecord& published(const MethodCall& call, const std::string& sName)
    {
        void* pBroker = nullptr;
        void* pRecord = nullptr;
        CInterfaceBroker_GetInstance(&pBroker);
        CInterfaceBroker_GetInterface(pBroker, sName.c_str(), &pRecord);
        CInterfaceBroker_DestroyInstance(pBroker);
        if (pRecord == nullptr) {
            throw failure(call, fmt::format("no module has published {}", sName));
        }
        return *static_cast<const TRecord*>(pRecord);
    }

    /** @param done is told the option of a call that was no fault, between the same two steps */
    template <class THandler, class TDone> XmlRpcValue handled(const MethodCall& call, THandler handler, TDone done)
    {
        const char* const pOption = requestOption(call);
        const bool bDump = pOption != nullptr && std::string_view(pOption) == DUMP_OPTION;
        if (bDump && !m_systemLog.wait()) {
            throw failure(call, "the system log does not take its lines; try again");
        }
        XmlRpcValue value;
        betweenSteps(call, m_loop, [&] {
            value.reset(handler());
            if (pOption != nullptr && value != nullptr && XMLRPC_ValueIsFault(value.get()) == 0) {
                done(pOption);
            }
        });
        if (bDump) {
            m_systemLog.wait(); // so that the lines are there when the client has its answer
        }
        return value;
    }

    RegulationLoop& m_loop;
    SystemLogPace m_systemLog;
};

/** @return a call with the struct that a TI method takes, from the plain parameters of its Unit method */
XmlRpcRequest withStruct(const MethodCall& call)
{
    XMLRPC_VALUE parameters = XMLRPC_RequestGetData(call.request());
    XMLRPC_VALUE option = XMLRPC_VectorRewind(parameters);
    XMLRPC_VALUE channel = XMLRPC_VectorNext(parameters);
    const bool bChannel = XMLRPC_GetValueType(channel) == xmlrpc_int;
    if (XMLRPC_GetValueType(option) != xmlrpc_string || (channel != nullptr && !bChannel) ||
        XMLRPC_VectorSize(parameters) > 2)
    {
        throw XmlRpcFault(eXMLRPC_FAULT_INVALID_PARAMS,
                          call.method() + " takes the request option (string) and the radio channel (int), which is 0 "
                                          "when left out");
    }
    XmlRpcValue members = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(members.get(), makeXmlRpcString("RequestOption", XMLRPC_GetValueString(option)));
    addXmlRpcValue(members.get(), makeXmlRpcInt("RadioChannelID", XMLRPC_GetValueInt(channel)));
    XmlRpcValue data = makeXmlRpcArray(nullptr);
    addXmlRpcValue(data.get(), std::move(members));
    XmlRpcRequest request(XMLRPC_RequestNew());
    XMLRPC_RequestSetData(request.get(), data.release());
    return request;
}

/** Adds a method with plain parameters that does what a method with a struct does. */
void addPlainMethod(MethodTable& table, const char* pName, const std::string& sStructMethod)
{
    const auto call = table.find(sStructMethod)->call;
    table.add({pName,
               "Does what " + sStructMethod +
                   " does, for clients that cannot send structs. Parameters: the request option, the radio channel.",
               {{"struct", "string"}, {"struct", "string", "int"}},
               [call, sStructMethod](const MethodCall& plain) {
                   const XmlRpcRequest request = withStruct(plain);
                   return call(MethodCall(sStructMethod, request.get()));
               },
               EMethodChange::Channel});
}
} // namespace

void addLogMethods(MethodTable& table, RegulationLoop& loop)
{
    const auto pLogs = std::make_shared<LogManagement>(loop);
    addStructMethod(
        table, "TI.ManageOPCTransientLog",
        "Manages the transient log of a radio channel. RequestOption (string): Enable empties it and lets "
        "it record, Disable stops it, Read returns the samples in hundredths of a decibel, SaveToSysLog "
        "writes them to the system log. RadioChannelID (int): 0 when left out.",
        [pLogs](const MethodCall& call) { return pLogs->manageTransientLog(call); }, EMethodChange::Channel);
    addStructMethod(
        table, "TI.ManageLogs",
        "Manages the statistics log of a radio channel. RequestOption (string): Start empties it and lets "
        "it record, Stop stops it, Read returns it in hundredths of a decibel, ReadAndReset empties it as "
        "well, SaveToSysLog writes it to the system log. LogName (string), such as "
        "Channel.0.TxOutputPowerControlLog, or RadioChannelID (int).",
        [pLogs](const MethodCall& call) { return pLogs->manageLog(call); }, EMethodChange::Channel);
    addPlainMethod(table, "Unit.ManageTransientLog", "TI.ManageOPCTransientLog");
    addPlainMethod(table, "Unit.ManageLog", "TI.ManageLogs");
}
