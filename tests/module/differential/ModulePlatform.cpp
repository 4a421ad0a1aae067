#include "tests/module/differential/ModulePlatform.h"

#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/ModuleFramework/CModuleManager.h"
#include "Platform/Storage/CStorageManager.h"

#include <stdexcept>

/** A table is known by its number in the environment. */
struct CCalibrationTable
{
    int nTable;
};

using Differential::Environment;
using Differential::EPublished;
using Differential::ModulePlatform;

namespace
{
ModulePlatform* s_pCurrent = nullptr;

Environment& environment()
{
    return ModulePlatform::current().environment();
}

int32_t* value(EOPHDetectorState* pState)
{
    static_assert(sizeof *pState == sizeof(int32_t));
    return reinterpret_cast<int32_t*>(pState);
}

/** The handler's functions; their vpThis is the environment. */
struct HandlerTable
{
    static Environment& self(void* vpThis) { return *static_cast<Environment*>(vpThis); }

    static IOutputPowerHandlerCStruct make(Environment* pEnvironment)
    {
        return {pEnvironment,
                [](void* p, int32_t nPctrl, int32_t nPtarget) { return self(p).setOutputPower(nPctrl, nPtarget); },
                nullptr,
                nullptr,
                [](void* p, int32_t nStep) { return self(p).setTxState(nStep); },
                [](void* p, ERfDetectorLoopMode eMode) { return self(p).setProductionTestSettings(eMode); },
                nullptr,
                [](void* p, uint32_t nAmplifier, int32_t* pGain) { return self(p).getReducedGain(nAmplifier, pGain); },
                [](void* p, int32_t* pReading, int32_t* pIfPower, int32_t* pRfGain) {
                    return self(p).getTxPowerReadings(pReading, pIfPower, pRfGain);
                },
                [](void* p, int32_t nPctrl, ERfDetectorLoopMode eMode, EOPHDetectorState* pState) {
                    return self(p).calculateDetectorUsage(nPctrl, eMode, value(pState));
                },
                [](void* p, int32_t* pPmeasured) { return self(p).getPmeasured(pPmeasured); },
                [](void* p, bool bEnable) { return self(p).setTraffic(bEnable); },
                nullptr,
                [](void* p, int32_t* pLower, int32_t* pUpper) { return self(p).getPctrlLimits(pLower, pUpper); }};
    }
};

class Handler : public IOutputPowerHandler
{
public:
    /** @param pEnvironment null offers no table */
    void offer(Environment* pEnvironment)
    {
        m_table = HandlerTable::make(pEnvironment);
        m_pCStruct = pEnvironment != nullptr ? &m_table : nullptr;
    }

private:
    IOutputPowerHandlerCStruct m_table{};
};

class Frequency : public IFrequencyHandler
{
public:
    int getTxFrequency() const override { return environment().frequency(); }

    EAFResult registerObserver(Observer<IFrequencyHandler>* pObserver) override
    {
        const EAFResult nResult = environment().registerFrequencyObserver();
        if (!EAF_isFailure(nResult)) {
            ModulePlatform::current().m_frequencyObservers.push_back(pObserver);
        }
        return nResult;
    }
};

class Temperature : public ITemperatureHandler
{
};

class Foreign : public virtual IInterface
{
};

// A table that was handed out stays in use when the handler is later published without it or not at all.
Handler& handler(bool bTable)
{
    static Handler s_with;
    static Handler s_without;
    s_with.offer(&environment());
    return bTable ? s_with : s_without;
}

Frequency& frequencyHandler()
{
    static Frequency s_frequency;
    return s_frequency;
}

IInterface* published(const std::string& sName)
{
    static Temperature s_temperature;
    static Foreign s_foreign;
    const bool bHandler = sName.starts_with("IOutputPowerHandler.");
    switch (environment().find(sName)) {
    case EPublished::Absent:
        return nullptr;
    case EPublished::Foreign:
        return &s_foreign;
    case EPublished::Tableless:
        return bHandler ? static_cast<IInterface*>(&handler(false)) : &s_foreign;
    case EPublished::Proper:
        break;
    }
    return bHandler                                    ? static_cast<IInterface*>(&handler(true))
           : sName.starts_with("IFrequencyHandler_Tx") ? static_cast<IInterface*>(&frequencyHandler())
                                                       : &s_temperature;
}

// What the handle of the C broker points at.
int s_nBrokerHandle = 0;

template <class TPointer>
EAFResult add(const char* pOperation, std::map<std::string, TPointer>& names, const std::string& sName,
              TPointer pObject)
{
    environment().log().line(pOperation, sName, pObject == nullptr ? " null" : "");
    return names.emplace(sName, pObject).second ? EAF_OK : EAF_FAILED;
}

// What stood under the name is kept for the operations: only the records' owner goes away with the controller.
EAFResult withdraw(const char* pOperation, const std::string& sName, const void* pObject)
{
    environment().log().line(pOperation, sName, pObject != nullptr ? " not null" : "");
    return EAF_OK;
}
} // namespace

ModulePlatform::ModulePlatform(Environment& environment) : m_environment(environment)
{
    s_pCurrent = this;
    resetTrace();
}

ModulePlatform::~ModulePlatform()
{
    s_pCurrent = nullptr;
}

ModulePlatform& ModulePlatform::current()
{
    if (s_pCurrent == nullptr) {
        throw std::logic_error("the module calls while nothing is compared");
    }
    return *s_pCurrent;
}

void ModulePlatform::tellFrequency()
{
    for (Observer<IFrequencyHandler>* pObserver : m_frequencyObservers) {
        pObserver->onChange(&frequencyHandler());
    }
}

void ModulePlatform::tellTemperature(std::int32_t nTemperature)
{
    for (const ITemperatureObserver* pObserver : m_temperatureObservers) {
        pObserver->pfnNotifyTemperature(pObserver->vpThis, nTemperature);
    }
}

CModuleManager& CModuleManager::GetInstance()
{
    static CModuleManager s_manager;
    return s_manager;
}

long CModuleManager::RegisterModule(ModuleInterface* pModule)
{
    environment().log().line("RegisterModule");
    ModulePlatform::current().m_pModule = pModule;
    return EAF_OK;
}

long CModuleManager::UnRegisterModule(ModuleInterface* pModule)
{
    environment().log().line("UnRegisterModule", pModule == ModulePlatform::current().m_pModule ? "" : " another");
    return EAF_OK;
}

InterfaceBroker& InterfaceBroker::getInstance()
{
    static InterfaceBroker s_broker;
    return s_broker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& sName, IInterface* pInterface)
{
    return add("registerInterface ", ModulePlatform::current().m_interfaces, sName, pInterface);
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& sName, IInterface* pInterface)
{
    return withdraw("unregisterInterface ", sName, pInterface);
}

IInterface* InterfaceBroker::getInterface(const std::string& sName)
{
    return published(sName);
}

extern "C" EAFResult CInterfaceBroker_GetInstance(void** ppBroker)
{
    environment().log().line("CInterfaceBroker_GetInstance");
    *ppBroker = &s_nBrokerHandle;
    return EAF_OK;
}

extern "C" EAFResult CInterfaceBroker_RegisterInterface(void* pBroker, const char* pName, void* pInterface)
{
    return pBroker == &s_nBrokerHandle
               ? add("CInterfaceBroker_RegisterInterface ", ModulePlatform::current().m_records, pName, pInterface)
               : EAF_NULL_POINTER;
}

extern "C" EAFResult CInterfaceBroker_UnregisterInterface(void* pBroker, const char* pName, void* pInterface)
{
    return pBroker == &s_nBrokerHandle ? withdraw("CInterfaceBroker_UnregisterInterface ", pName, pInterface)
                                       : EAF_NULL_POINTER;
}

extern "C" EAFResult CInterfaceBroker_DestroyInstance(void* pBroker)
{
    environment().log().line("CInterfaceBroker_DestroyInstance", pBroker == &s_nBrokerHandle ? "" : " another");
    return EAF_OK;
}

extern "C" EAFResult CCalibrationHandler_GetTable(const char* pName, CCalibrationTable** ppTable)
{
    static CCalibrationTable s_tables[] = {{0}, {1}};
    int nTable = -1;
    const EAFResult nResult = environment().getTable(pName, &nTable);
    if (nTable >= 0) {
        *ppTable = &s_tables[nTable];
    }
    return nResult;
}

extern "C" EAFResult CCalibrationTable_IsValid(CCalibrationTable* pTable, int* pValid)
{
    return environment().isValid(pTable->nTable, pValid);
}

extern "C" EAFResult CCalibrationTable_BiLinearInterpolate(CCalibrationTable* pTable, int nX, int nY, int* pValue)
{
    return environment().interpolate(pTable->nTable, nX, nY, pValue);
}

extern "C" EAFResult CStorageManager_GetVariableContentAddressByName(const char* pName, void** ppContent, int nReserved)
{
    const int32_t* pContent = nullptr;
    const EAFResult nResult = environment().getVariable(pName, &pContent);
    *ppContent = const_cast<int32_t*>(pContent); // NOLINT(cppcoreguidelines-pro-type-const-cast): nobody writes there
    if (nReserved != 0) {
        environment().log().line("reserved ", nReserved);
    }
    return nResult;
}

EAFResult ITemperatureHandler::registerObserver(ITemperatureObserver* pObserver)
{
    environment().registerTemperatureObserver();
    ModulePlatform::current().m_temperatureObservers.push_back(pObserver);
    return EAF_OK;
}
