#include "Control/OutputPowerController/private/OutputPowerController.h"

#include "Control/OutputPowerController/private/InterfaceName.h"
#include "Control/OutputPowerController/private/OutputPowerControlLog.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/ModuleFramework/CModuleManager.h"

namespace
{

// The platform's numbers of this kind of module, of its instance and of the phases that it takes part in.
constexpr unsigned int MODULE_NUMBER = 15000;
constexpr unsigned int MODULE_INSTANCE = 0;
constexpr unsigned int PHASE_COUNT = 4;

constexpr const char* INTERFACE_NAME = "IOutputPowerController";
constexpr int DEFAULT_GAIN_PERCENT = 20;

} // namespace

KmtTrace OutputPowerController::ms_trace("RQX.OPC", 3);
unsigned long OutputPowerController::m_pPhaseFilter[4] = {5, 11, 20, 16};

OutputPowerController::OutputPowerController(unsigned int channel)
    : ModuleInterface(MODULE_NUMBER, "OutputPowerController", channel, MODULE_INSTANCE, m_pPhaseFilter, PHASE_COUNT),
      m_nChannel(channel)
{
    traceEntry("OutputPowerController");
    m_temperatureObserver = {this, &OutputPowerController::staticNotifyTemperature};
    CModuleManager::GetInstance().RegisterModule(this);
    deriveCyclesFromInterval();
    for (auto& anGainOfDetectorState : m_anGain) {
        anGainOfDetectorState[eOPC_TX_ON_RAMPING] = DEFAULT_GAIN_PERCENT;
        anGainOfDetectorState[eOPC_TX_ON] = DEFAULT_GAIN_PERCENT;
    }
    m_pLog = std::make_unique<OutputPowerControlLog>(m_nChannel);
    InterfaceBroker::getInstance().registerInterface(interfaceName(INTERFACE_NAME, m_nChannel), this);
}

OutputPowerController::~OutputPowerController()
{
    traceEntry("~OutputPowerController");
    m_pLog.reset();
    CModuleManager::GetInstance().UnRegisterModule(this);
    InterfaceBroker::getInstance().unregisterInterface(interfaceName(INTERFACE_NAME, m_nChannel), nullptr);
}

long OutputPowerController::initialize()
{
    traceEntry("initialize");
    m_pLog->initialize();
    return EAF_OK;
}

long OutputPowerController::unInitialize()
{
    traceEntry("unInitialize");
    m_pLog->unInitialize();
    return EAF_OK;
}

TraceLine OutputPowerController::beginTrace(int nLevel, int nLine)
{
    return TraceLine(
        ms_trace.beginLogMsg(nLevel, "Control/OutputPowerController/private/OutputPowerController", nLine));
}

void OutputPowerController::traceEntry(const char* pOperation, int nLine)
{
    beginTrace(5, nLine) << "Enter: " << pOperation << "()" << std::endl;
}

int OutputPowerController::traceFailure(const char* pOperation, const char* pText, int nLine)
{
    beginTrace(1, nLine) << pOperation << pText << std::endl;
    return EAF_FAILED;
}
