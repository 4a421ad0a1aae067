/* The same in C, by the function table. Includes every C header of the package. */
#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Control/OutputPowerController/OutputPowerController_c.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler_c.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/EAFResult.h"
#include "Platform/Storage/CStorageManager.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/GtTrace.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

enum
{
    CHANNEL = 0,
    INTERVAL_MS = 6
};

static void require(bool bTrue, const char* pWhat)
{
    if (!bTrue) {
        (void)fprintf(stderr, "consumer_c: failed: %s\n", pWhat);
        exit(1);
    }
}

/* C has no cast from an object's address to a function's; POSIX lets both be kept alike. */
static void findEntryPoint(void* pLibrary, const char* pName, void* pFunctionPointer)
{
    void** ppSymbol = pFunctionPointer;
    *ppSymbol = dlsym(pLibrary, pName);
    require(*ppSymbol != NULL, pName);
}

static void useController(void)
{
    void* pBroker = NULL;
    void* pFound = NULL;
    require(CInterfaceBroker_GetInstance(&pBroker) == EAF_OK, "the broker");
    require(CInterfaceBroker_GetInterface(pBroker, "IOutputPowerController", &pFound) == EAF_OK,
            "the table by its name");

    const IOutputPowerControllerCStruct* pTable = pFound;
    EOPCState eState = eOPC_UNDEFINED;
    require(pTable->staticSetRegulatorInterval(pTable->vpThis, INTERVAL_MS) == EAF_OK, "a setter");
    require(pTable->staticGetOPCState(pTable->vpThis, &eState) == EAF_OK, "a getter");
    require(eState == eOPC_TX_OFF, "a controller that is off");
    (void)CInterfaceBroker_DestroyInstance(pBroker);
}

int main(int nArguments, char** ppArguments)
{
    require(nArguments == 2, "the module's file as the only argument");
    void* pLibrary = dlopen(ppArguments[1], RTLD_NOW | RTLD_LOCAL);
    require(pLibrary != NULL, pLibrary == NULL ? dlerror() : "");

    /* Never called by these names, which are the library's: the declarations give the types. */
    __typeof__(&OutputPowerController_Construct) construct = NULL;
    __typeof__(&OutputPowerController_Initialize) initialize = NULL;
    __typeof__(&OutputPowerController_Uninitialize) uninitialize = NULL;
    __typeof__(&OutputPowerController_Destruct) destruct = NULL;
    findEntryPoint(pLibrary, "OutputPowerController_Construct", &construct);
    findEntryPoint(pLibrary, "OutputPowerController_Initialize", &initialize);
    findEntryPoint(pLibrary, "OutputPowerController_Uninitialize", &uninitialize);
    findEntryPoint(pLibrary, "OutputPowerController_Destruct", &destruct);

    void* pModule = NULL;
    construct(&pModule, CHANNEL);
    require(pModule != NULL, "construction");
    require(initialize(pModule) == EAF_OK, "initialisation");
    useController();
    require(uninitialize(pModule) == EAF_OK, "its end");
    destruct(pModule);
    (void)dlclose(pLibrary);
    (void)printf("consumer_c: %s works\n", ppArguments[1]);
    return 0;
}
