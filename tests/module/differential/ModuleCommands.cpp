// The commands of the logs, by their published records, and what they answer.
#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Platform/Broker/IInterface_c.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/GtTrace.h"
#include "tests/module/differential/ModuleSide.h"

#include <stdexcept>
#include <string>

namespace Differential
{
namespace
{
void write(EventLog& log, XMLRPC_VALUE xValue)
{
    const XMLRPC_VALUE_TYPE eType = XMLRPC_GetValueType(xValue);
    if (eType == xmlrpc_int) {
        log.add(XMLRPC_GetValueInt(xValue));
    }
    else if (eType == xmlrpc_string) {
        log.add("\"", XMLRPC_GetValueString(xValue), "\"");
    }
    else if (eType == xmlrpc_vector) {
        const bool bArray = XMLRPC_GetVectorType(xValue) == xmlrpc_vector_array;
        log.add(bArray ? "[" : "{");
        for (XMLRPC_VALUE xItem = XMLRPC_VectorRewind(xValue); xItem != nullptr; xItem = XMLRPC_VectorNext(xValue)) {
            if (!bArray) {
                log.add(XMLRPC_GetValueID(xItem), "=");
            }
            write(log, xItem);
            log.add(",");
        }
        log.add(bArray ? "]" : "}");
    }
    else {
        log.add("<value of type ", static_cast<int>(eType), ">");
    }
}
} // namespace

template <class TRecord> TRecord& ModuleSide::record(const std::string& sName)
{
    void* const pRecord = m_platform.m_records[sName];
    if (pRecord == nullptr) {
        throw std::runtime_error("nothing is published as " + sName);
    }
    return *static_cast<TRecord*>(pRecord);
}

void ModuleSide::opcCommand(std::int32_t nOption)
{
    auto& commands = record<ManageLogsCStruct>("Channel." + std::to_string(m_nChannel) + ".TxOutputPowerControlLog");
    std::string sOption = OPC_LOG_OPTIONS[static_cast<std::size_t>(nOption)];
    respond(commands.manageLogs(commands.vpThis, sOption.data()));
}

void ModuleSide::transientCommand(std::int32_t nOption)
{
    auto& method = record<TIMethodCStruct>("TIManageOPCTransientLogCh" + std::to_string(m_nChannel));
    XMLRPC_REQUEST request = XMLRPC_RequestNew();
    XMLRPC_VALUE xParameters = XMLRPC_CreateVector(nullptr, xmlrpc_vector_array);
    XMLRPC_VALUE xOptions = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
    if (nOption == OPTION_IS_INTEGER) {
        XMLRPC_AddValueToVector(xOptions, XMLRPC_CreateValueInt("RequestOption", 1));
    }
    else if (nOption != OPTION_NOT_GIVEN) {
        XMLRPC_AddValueToVector(
            xOptions,
            XMLRPC_CreateValueString("RequestOption", TRANSIENT_LOG_OPTIONS[static_cast<std::size_t>(nOption)], 0));
    }
    XMLRPC_AddValueToVector(xParameters, xOptions);
    XMLRPC_RequestSetData(request, xParameters);
    TI_trace.nLevel = m_environment.testTraceLevel();
    XMLRPC_VALUE xResponse = method.handle(method.vpThis, nullptr, request, nullptr);
    XMLRPC_RequestFree(request, 1);
    respond(xResponse);
}

void ModuleSide::respond(XMLRPC_VALUE xValue)
{
    EventLog& log = m_environment.log();
    log.add("response ");
    if (XMLRPC_ValueIsFault(xValue) != 0) {
        log.add("fault ", XMLRPC_GetValueFaultCode(xValue), " \"", XMLRPC_GetValueFaultString(xValue), "\"");
    }
    else {
        write(log, xValue);
    }
    log.line();
    XMLRPC_CleanupValue(xValue);
}

void ModuleSide::restartLogs()
{
    auto* pInterface =
        dynamic_cast<IInterface_c*>(m_platform.m_interfaces[channelName("IOutputPowerControlLog", m_nChannel)]);
    if (pInterface == nullptr) {
        throw std::runtime_error("no log is published for channel " + std::to_string(m_nChannel));
    }
    auto& table = *static_cast<IOutputPowerControlLogCStruct*>(pInterface->getCStruct());
    m_environment.log().line("result ", table.logsRestart(table.vpThis));
}
} // namespace Differential
