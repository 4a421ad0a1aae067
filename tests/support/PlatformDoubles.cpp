// The broker, module manager, calibration, storage and temperature symbols that a module imports.
#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/IInterface_c.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/ModuleFramework/CModuleManager.h"
#include "Platform/Storage/CStorageManager.h"
#include "tests/support/RecordingPlatform.h"

#include <algorithm>

namespace
{
RecordingPlatform& platform()
{
    return RecordingPlatform::get();
}

/** Records "operation(name)", or "operation(name, null)". */
void recordNamed(const char* pOperation, const std::string& sName, const void* pObject)
{
    platform().recordCall(
        [&] { return std::string(pOperation) + "(" + sName + (pObject == nullptr ? ", null)" : ")"); });
}

void recordPlain(const char* pOperation)
{
    platform().recordCall([pOperation] { return std::string(pOperation); });
}

/** Publishes under a free name. */
template <class TPointer>
EAFResult add(std::map<std::string, TPointer>& names, const std::string& sName, TPointer pObject)
{
    return names.emplace(sName, pObject).second ? EAF_OK : EAF_FAILED;
}

/** Withdraws what stands under a name when it is the object given, or whatever it is for null. */
template <class TPointer>
EAFResult take(std::map<std::string, TPointer>& names, const std::string& sName, TPointer pObject)
{
    const auto found = names.find(sName);
    if (found == names.end() || (pObject != nullptr && pObject != found->second)) {
        return EAF_FAILED;
    }
    names.erase(found);
    return EAF_OK;
}

// What the handle of the C broker points at.
int s_nBrokerHandle = 0;
} // namespace

CModuleManager& CModuleManager::GetInstance()
{
    static CModuleManager s_manager;
    return s_manager;
}

long CModuleManager::RegisterModule(ModuleInterface* pModule)
{
    recordPlain("RegisterModule");
    if (!EAF_isFailure(platform().script().nRegisterModule)) {
        platform().script().modules.push_back(pModule);
    }
    if (platform().script().afterRegisterModule) {
        platform().script().afterRegisterModule();
    }
    return platform().script().nRegisterModule;
}

long CModuleManager::UnRegisterModule(ModuleInterface* pModule)
{
    recordPlain("UnRegisterModule");
    std::vector<ModuleInterface*>& modules = platform().script().modules;
    modules.erase(std::remove(modules.begin(), modules.end(), pModule), modules.end());
    return platform().script().nUnRegisterModule;
}

InterfaceBroker& InterfaceBroker::getInstance()
{
    static InterfaceBroker s_broker;
    return s_broker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& sName, IInterface* pInterface)
{
    recordNamed("registerInterface", sName, pInterface);
    const EAFResult nResult = platform().script().nRegisterInterface;
    return EAF_isFailure(nResult) ? nResult : add(platform().script().interfaces, sName, pInterface);
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& sName, IInterface* pInterface)
{
    recordNamed("unregisterInterface", sName, pInterface);
    const EAFResult nResult = platform().script().nUnregisterInterface;
    return EAF_isFailure(nResult) ? nResult : take(platform().script().interfaces, sName, pInterface);
}

IInterface* InterfaceBroker::getInterface(const std::string& sName)
{
    platform().recordCall([&sName] { return "getInterface(" + sName + ")"; });
    const auto found = platform().script().interfaces.find(sName);
    return found == platform().script().interfaces.end() ? nullptr : found->second;
}

extern "C" EAFResult CInterfaceBroker_GetInstance(void** ppBroker)
{
    recordPlain("CInterfaceBroker_GetInstance");
    *ppBroker = &s_nBrokerHandle;
    return platform().script().nCGetInstance;
}

extern "C" EAFResult CInterfaceBroker_RegisterInterface(void* pBroker, const char* pName, void* pInterface)
{
    recordNamed("CInterfaceBroker_RegisterInterface", pName, pInterface);
    const EAFResult nResult = pBroker == &s_nBrokerHandle ? platform().script().nCRegisterInterface : EAF_NULL_POINTER;
    return EAF_isFailure(nResult) ? nResult : add(platform().script().records, pName, pInterface);
}

extern "C" EAFResult CInterfaceBroker_UnregisterInterface(void* pBroker, const char* pName, void* pInterface)
{
    recordNamed("CInterfaceBroker_UnregisterInterface", pName, pInterface);
    const EAFResult nResult =
        pBroker == &s_nBrokerHandle ? platform().script().nCUnregisterInterface : EAF_NULL_POINTER;
    return EAF_isFailure(nResult) ? nResult : take(platform().script().records, pName, pInterface);
}

extern "C" EAFResult CInterfaceBroker_GetInterface(void* pBroker, const char* pName, void** ppInterface)
{
    platform().recordCall([pName] { return "CInterfaceBroker_GetInterface(" + std::string(pName) + ")"; });
    *ppInterface = pBroker == &s_nBrokerHandle ? platform().record(pName) : nullptr;
    return *ppInterface != nullptr ? EAF_OK : EAF_FAILED;
}

extern "C" EAFResult CInterfaceBroker_DestroyInstance(void* pBroker)
{
    platform().recordCall([pBroker] {
        return std::string("CInterfaceBroker_DestroyInstance") + (pBroker == &s_nBrokerHandle ? "" : "(unknown)");
    });
    return platform().script().nCDestroyInstance;
}

extern "C" EAFResult CCalibrationHandler_GetTable(const char* pName, CCalibrationTable** ppTable)
{
    platform().recordCall([pName] { return "GetTable(" + std::string(pName) + ")"; });
    const auto found = platform().script().tables.find(pName);
    if (found == platform().script().tables.end()) {
        return EAF_FAILED;
    }
    if (found->second.bGetTableWrites) {
        *ppTable = &found->second;
    }
    return found->second.nGetTableResult;
}

extern "C" EAFResult CCalibrationTable_IsValid(CCalibrationTable* pTable, int* pValid)
{
    platform().recordCall([pTable] { return "IsValid(" + pTable->sName + ")"; });
    *pValid = pTable->nValid;
    return pTable->nIsValidResult;
}

extern "C" EAFResult CCalibrationTable_BiLinearInterpolate(CCalibrationTable* pTable, int nX, int nY, int* pValue)
{
    platform().recordCall([=] {
        return "BiLinearInterpolate(" + pTable->sName + ", " + std::to_string(nX) + ", " + std::to_string(nY) + ")";
    });
    if (pTable->bInterpolateWrites) {
        *pValue = pTable->value(nX, nY);
    }
    return pTable->nInterpolateResult;
}

extern "C" EAFResult CStorageManager_GetVariableContentAddressByName(const char* pName, void** ppContent, int nReserved)
{
    platform().recordCall([=] { return "GetVariable(" + std::string(pName) + ", " + std::to_string(nReserved) + ")"; });
    const auto found = platform().script().variables.find(pName);
    if (found == platform().script().variables.end()) {
        return platform().script().nMissingVariable;
    }
    *ppContent = found->second.bNullContent ? nullptr : &found->second.nValue;
    return found->second.nResult;
}

EAFResult ITemperatureHandler::registerObserver(ITemperatureObserver* pObserver)
{
    recordPlain("ITemperatureHandler::registerObserver");
    if (!EAF_isFailure(platform().script().nRegisterTemperatureObserver)) {
        platform().script().temperatureObservers.push_back(pObserver);
    }
    return platform().script().nRegisterTemperatureObserver;
}
