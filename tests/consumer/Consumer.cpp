// Loads the module that the package names, constructs a channel's controller and talks to it by its C++ interface.
// Includes every C++ header of the package.
#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Control/OutputPowerController/IOutputPowerControlLog.h"
#include "Control/OutputPowerController/IOutputPowerController.h"
#include "Control/OutputPowerController/OutputPowerController_c.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler.h"
#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/ModuleFramework/CModuleManager.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/Observer.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/KmtTrace.h"

#include <dlfcn.h>

#include <cstdlib>
#include <iostream>
#include <string>

namespace
{
void require(bool bTrue, const std::string& sWhat)
{
    if (!bTrue) {
        std::cerr << "consumer_cpp: failed: " << sWhat << '\n';
        std::exit(1);
    }
}

/** The entry points have the types that the header declares. */
template <class TFunction> TFunction* entryPoint(void* pLibrary, const char* pName)
{
    void* pSymbol = dlsym(pLibrary, pName);
    require(pSymbol != nullptr, pName);
    return reinterpret_cast<TFunction*>(pSymbol);
}
} // namespace

#define ENTRY_POINT(LIBRARY, NAME) entryPoint<decltype(NAME)>(LIBRARY, #NAME)

int main(int nArguments, char** ppArguments)
{
    require(nArguments == 2, "the module's file as the only argument");
    void* pLibrary = dlopen(ppArguments[1], RTLD_NOW | RTLD_LOCAL);
    require(pLibrary != nullptr, pLibrary == nullptr ? dlerror() : "");

    void* pModule = nullptr;
    ENTRY_POINT(pLibrary, OutputPowerController_Construct)(&pModule, 0);
    require(pModule != nullptr, "construction");
    require(ENTRY_POINT(pLibrary, OutputPowerController_Initialize)(pModule) == EAF_OK, "initialisation");

    auto* pController =
        dynamic_cast<IOutputPowerController*>(InterfaceBroker::getInstance().getInterface("IOutputPowerController"));
    require(pController != nullptr, "the controller by its name");
    require(pController->getOPCState() == eOPC_TX_OFF, "a controller that is off");
    require(pController->getTxPowerActualStatus() == eTX_POWER_ACTUAL_OFF, "a transmitter that is off");

    require(ENTRY_POINT(pLibrary, OutputPowerController_Uninitialize)(pModule) == EAF_OK, "its end");
    ENTRY_POINT(pLibrary, OutputPowerController_Destruct)(pModule);
    require(InterfaceBroker::getInstance().getInterface("IOutputPowerController") == nullptr, "withdrawal");
    (void)dlclose(pLibrary);
    std::cout << "consumer_cpp: " << ppArguments[1] << " works\n";
    return 0;
}
