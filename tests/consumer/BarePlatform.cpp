// The least that lets the module be loaded and constructed: names are kept, everything else fails or does nothing.
#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/IInterface_c.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/ModuleFramework/CModuleManager.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/Storage/CStorageManager.h"
#include "Platform/Trace/GtTrace.h"
#include "Platform/Trace/KmtTrace.h"

#include <iostream>
#include <map>
#include <string>

namespace
{
std::map<std::string, IInterface*> s_interfaces;
int s_nBrokerHandle = 0;
} // namespace

InterfaceBroker& InterfaceBroker::getInstance()
{
    static InterfaceBroker s_broker;
    return s_broker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& sName, IInterface* pInterface)
{
    return s_interfaces.emplace(sName, pInterface).second ? EAF_OK : EAF_FAILED;
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& sName, IInterface* /*pInterface*/)
{
    return s_interfaces.erase(sName) == 1 ? EAF_OK : EAF_FAILED;
}

IInterface* InterfaceBroker::getInterface(const std::string& sName)
{
    const auto found = s_interfaces.find(sName);
    return found == s_interfaces.end() ? nullptr : found->second;
}

EAFResult CInterfaceBroker_GetInstance(void** ppBroker)
{
    *ppBroker = &s_nBrokerHandle;
    return EAF_OK;
}

EAFResult CInterfaceBroker_RegisterInterface(void*, const char*, void*)
{
    return EAF_OK;
}

EAFResult CInterfaceBroker_UnregisterInterface(void*, const char*, void*)
{
    return EAF_OK;
}

EAFResult CInterfaceBroker_GetInterface(void*, const char* pName, void** ppInterface)
{
    auto* pInterface = dynamic_cast<IInterface_c*>(InterfaceBroker::getInstance().getInterface(pName));
    *ppInterface = pInterface == nullptr ? nullptr : pInterface->getCStruct();
    return *ppInterface == nullptr ? EAF_FAILED : EAF_OK;
}

EAFResult CInterfaceBroker_DestroyInstance(void*)
{
    return EAF_OK;
}

CModuleManager& CModuleManager::GetInstance()
{
    static CModuleManager s_manager;
    return s_manager;
}

long CModuleManager::RegisterModule(ModuleInterface* /*pModule*/)
{
    return EAF_OK;
}

long CModuleManager::UnRegisterModule(ModuleInterface* /*pModule*/)
{
    return EAF_OK;
}

ModuleInterface::ModuleInterface(unsigned int nModuleNumber, const char* pName, unsigned int nChannel,
                                 unsigned int nInstance, const unsigned long* pPhaseFilter, unsigned int nPhaseCount)
    : m_nModuleNumber(nModuleNumber), m_pName(pName), m_nModuleChannel(nChannel), m_nInstance(nInstance),
      m_pPhaseFilter(pPhaseFilter), m_nPhaseCount(nPhaseCount)
{}

ModuleInterface::~ModuleInterface() = default;

#define DOES_NOTHING(PHASE)                                                                                            \
    long ModuleInterface::PHASE()                                                                                      \
    {                                                                                                                  \
        return EAF_OK;                                                                                                 \
    }
DOES_NOTHING(onModuleInit)
DOES_NOTHING(onPhaseModuleStorageObjectsRetreived)
DOES_NOTHING(onPhasePostFrameformatLoad)
DOES_NOTHING(onPhaseEndFrameformatLoad)
DOES_NOTHING(onPhaseStart)
DOES_NOTHING(onPhaseStop)
DOES_NOTHING(onPhaseFrameformatLoad)
DOES_NOTHING(onPhasePreFrameformatLoad)
DOES_NOTHING(onPhaseSetRadioChannelNearEndFinished)

long ModuleInterface::onPhaseActivation(unsigned long /*nPhase*/, ECallbackPriority /*ePriority*/)
{
    return EAF_OK;
}

EAFResult ITemperatureHandler::registerObserver(ITemperatureObserver* /*pObserver*/)
{
    return EAF_FAILED;
}

EAFResult CCalibrationHandler_GetTable(const char*, CCalibrationTable**)
{
    return EAF_FAILED;
}

EAFResult CCalibrationTable_IsValid(CCalibrationTable*, int*)
{
    return EAF_FAILED;
}

EAFResult CCalibrationTable_BiLinearInterpolate(CCalibrationTable*, int, int, int*)
{
    return EAF_FAILED;
}

EAFResult CStorageManager_GetVariableContentAddressByName(const char*, void**, int)
{
    return EAF_FAILED;
}

KmtTrace::KmtTrace(const char* pGroup, int /*nLevel*/) : m_pGroup(pGroup), m_pState(&std::cerr) {}

KmtTrace::~KmtTrace() = default;

std::ostream& KmtTrace::beginLogMsg(int /*nLevel*/, const char* /*pSourcePath*/, int /*nLine*/)
{
    return *static_cast<std::ostream*>(m_pState) << m_pGroup << ' ';
}

GT_TraceObject OPC_trace = {0, "OPC"};
GT_TraceObject TI_trace = {0, "TI"};

int CPlxTraceHandler_DmLevel2GtLevel(unsigned long)
{
    return 1;
}

void GT_beginImpl(GT_TraceObject*, int, const char*, int) {}

void GT_rawprintf(const char*, ...) {}

void GT_endImpl(void) {}
