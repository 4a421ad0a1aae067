#include "Control/OutputPowerController/private/OutputPowerControlLog.h"

#include "Control/OutputPowerController/private/InterfaceName.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/InterfaceBroker.h"

#include <map>

namespace
{

constexpr const char* INTERFACE_NAME = "IOutputPowerControlLog";

std::string manageLogsName(unsigned int nChannel)
{
    return "Channel." + std::to_string(nChannel) + ".TxOutputPowerControlLog";
}

std::string tiMethodName(unsigned int nChannel)
{
    return "TIManageOPCTransientLogCh" + std::to_string(nChannel);
}

} // namespace

KmtTrace OutputPowerControlLog::ms_trace("RQX.OPCL", 3);

static const std::map<std::string, OutputPowerControlLog::EOPCLogRequestOption> s_requestOptionMap = {
    {"Start", OutputPowerControlLog::eOPC_LOG_REQUEST_START},
    {"Enable", OutputPowerControlLog::eOPC_LOG_REQUEST_ENABLE},
    {"Stop", OutputPowerControlLog::eOPC_LOG_REQUEST_STOP},
    {"Disable", OutputPowerControlLog::eOPC_LOG_REQUEST_DISABLE},
    {"Read", OutputPowerControlLog::eOPC_LOG_REQUEST_READ},
    {"ReadAndReset", OutputPowerControlLog::eOPC_LOG_REQUEST_READ_AND_RESET},
    {"SaveToSysLog", OutputPowerControlLog::eOPC_LOG_REQUEST_SAVE_TO_SYSLOG}};

IOutputPowerControlLog::IOutputPowerControlLog() : m_cStruct{this, &staticLogsRestart}
{
    m_pCStruct = &m_cStruct;
}

long IOutputPowerControlLog::staticLogsRestart(void* vpThis)
{
    if (vpThis == nullptr) {
        return EAF_NULL_POINTER;
    }
    static_cast<IOutputPowerControlLog*>(vpThis)->logsRestart();
    return EAF_OK;
}

OutputPowerControlLog::OutputPowerControlLog(unsigned int channel) : m_nChannel(channel)
{
    beginTrace(5) << "Enter: "
                  << "OutputPowerControlLog"
                  << "()" << std::endl;
    resetLogs();
}

OutputPowerControlLog::~OutputPowerControlLog()
{
    beginTrace(5) << "Enter: "
                  << "~OutputPowerControlLog"
                  << "()" << std::endl;
}

EAFResult OutputPowerControlLog::initialize()
{
    traceChannel("Enter: ", "initialize", "() for channel ");
    resetLogs();
    InterfaceBroker::getInstance().registerInterface(interfaceName(INTERFACE_NAME, m_nChannel), this);
    void* pBroker = nullptr;
    CInterfaceBroker_GetInstance(&pBroker);
    m_manageLogsCStruct = {this, &OutputPowerControlLog::staticManageOpcLog};
    CInterfaceBroker_RegisterInterface(pBroker, manageLogsName(m_nChannel).c_str(), &m_manageLogsCStruct);
    m_tiMethodCStruct = {this, &OutputPowerControlLog::statichandleTIManageOPCTransientLog};
    CInterfaceBroker_RegisterInterface(pBroker, tiMethodName(m_nChannel).c_str(), &m_tiMethodCStruct);
    CInterfaceBroker_DestroyInstance(pBroker);
    traceChannel("Exit: ", "initialize", "() finished successfully for channel ");
    return EAF_OK;
}

void OutputPowerControlLog::unInitialize()
{
    traceChannel("Enter: ", "unInitialize", "() for channel ");
    // The handle is not given back here, and the interface name goes last although it came first: platforms that count
    // handles or watch the names expect it so.
    void* pBroker = nullptr;
    CInterfaceBroker_GetInstance(&pBroker);
    CInterfaceBroker_UnregisterInterface(pBroker, manageLogsName(m_nChannel).c_str(), nullptr);
    CInterfaceBroker_UnregisterInterface(pBroker, tiMethodName(m_nChannel).c_str(), nullptr);
    InterfaceBroker::getInstance().unregisterInterface(interfaceName(INTERFACE_NAME, m_nChannel), nullptr);
}

void OutputPowerControlLog::resetLogs()
{
    resetTransientLog();
    resetOpcLog();
}

void OutputPowerControlLog::logsRestart()
{
    if (isTransientLogActive()) {
        setTransientLogActive(false);
        resetTransientLog();
        setTransientLogActive(true);
    }
    if (isOpcLogActive()) {
        setOpcLogActive(false);
        resetOpcLog();
        setOpcLogActive(true);
    }
}

// The string comes by value because that is the operation's signature.
OutputPowerControlLog::EOPCLogRequestOption // NOLINTNEXTLINE(performance-unnecessary-value-param)
OutputPowerControlLog::convertRequestStringToRequestEnum(std::string sRequestOption) const
{
    const auto entry = s_requestOptionMap.find(sRequestOption);
    return entry != s_requestOptionMap.end() ? entry->second : eOPC_LOG_REQUEST_INVALID;
}

std::ostream& OutputPowerControlLog::beginTrace(int nLevel, int nLine)
{
    return ms_trace.beginLogMsg(nLevel, LOG_SOURCE_PATH, nLine);
}

void OutputPowerControlLog::traceChannel(const char* pWhen, const char* pOperation, const char* pWhat, int nLine) const
{
    beginTrace(5, nLine) << pWhen << pOperation << pWhat << m_nChannel << std::endl;
}
