/** @file
 * That a program in C can be the unit: it loads the modules, drives the phases, finds the controller by name, switches
 * the transmitter on, regulates, reads and switches off, with the Linux platform and the simulated handlers.
 *
 * Arguments: the libraries of TemperatureHandler, FrequencyHandler, OutputPowerHandler and OutputPowerController.
 */
#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/EAFResult.h"
#include "Platform/ModuleFramework/PhaseDriver_c.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

enum
{
    MODULE_COUNT = 4,
    CHANNEL = 0,
    INTERVAL_MS = 6,
    REQUESTED_CENTI_DBM = 1500,
    PMIN_CENTI_DBM = -1000,
    PMAX_CENTI_DBM = 3000,
    MAX_SWITCH_CALLS = 40,
    CLOSED_LOOP_CALLS = 200,
    SETTLED_CENTI_DB = 30,
    GAIN_PERCENT = 35
};

enum
{
    CONSTRUCT,
    DESTRUCT,
    INITIALIZE,
    UNINITIALIZE,
    ENTRY_POINT_COUNT
};

#define ENTRY_POINTS(NAME)                                                                                             \
    {                                                                                                                  \
        NAME "_Construct", NAME "_Destruct", NAME "_Initialize", NAME "_Uninitialize"                                  \
    }

static const char* const MODULE_ENTRY_POINTS[MODULE_COUNT][ENTRY_POINT_COUNT] = {
    ENTRY_POINTS("TemperatureHandler"), ENTRY_POINTS("FrequencyHandler"), ENTRY_POINTS("OutputPowerHandler"),
    ENTRY_POINTS("OutputPowerController")};

/** A loaded module by its four entry points. */
typedef struct Module
{
    void* pLibrary;
    void* pHandle;
    void (*construct)(void** ppModule, unsigned int nChannel);
    void (*destruct)(void* pModule);
    long (*initialize)(void* pModule);
    long (*uninitialize)(void* pModule);
} Module;

/** Ends the program when something is not as it must be. */
static void require(bool bTrue, const char* pWhat)
{
    if (!bTrue) {
        (void)fprintf(stderr, "c_client: failed: %s\n", pWhat);
        exit(1);
    }
}

/** Stores a symbol's address in a function pointer; C has no cast for it, but POSIX lets both be kept alike. */
static void findEntryPoint(const Module* pModule, const char* pName, void* pFunctionPointer)
{
    void** ppSymbol = pFunctionPointer;
    *ppSymbol = dlsym(pModule->pLibrary, pName);
    require(*ppSymbol != NULL, pName);
}

static void loadModule(Module* pModule, const char* const* ppEntryPoints, const char* pPath)
{
    pModule->pLibrary = dlopen(pPath, RTLD_NOW | RTLD_LOCAL);
    require(pModule->pLibrary != NULL, pPath);
    findEntryPoint(pModule, ppEntryPoints[CONSTRUCT], &pModule->construct);
    findEntryPoint(pModule, ppEntryPoints[DESTRUCT], &pModule->destruct);
    findEntryPoint(pModule, ppEntryPoints[INITIALIZE], &pModule->initialize);
    findEntryPoint(pModule, ppEntryPoints[UNINITIALIZE], &pModule->uninitialize);
    pModule->construct(&pModule->pHandle, CHANNEL);
    require(pModule->pHandle != NULL, "constructing a module");
    require(pModule->initialize(pModule->pHandle) == EAF_OK, "initialising a module");
    printf("loaded %s\n", pPath);
}

static void unloadModule(Module* pModule)
{
    require(pModule->uninitialize(pModule->pHandle) == EAF_OK, "uninitialising a module");
    pModule->destruct(pModule->pHandle);
    require(dlclose(pModule->pLibrary) == 0, "unloading a module");
}

/** @return what is published under a name, or null */
static void* findInterface(const char* pName)
{
    void* pBroker = NULL;
    void* pTable = NULL;
    require(CInterfaceBroker_GetInstance(&pBroker) == EAF_OK, "getting the broker");
    const EAFResult nResult = CInterfaceBroker_GetInterface(pBroker, pName, &pTable);
    require(EAF_isFailure(nResult) == (pTable == NULL), "the broker's result agrees with what it found");
    require(CInterfaceBroker_DestroyInstance(pBroker) == EAF_OK, "giving the broker back");
    return pTable;
}

/** Regulates until the controller is in a state. @return the number of calls that it took */
static int regulateUntil(const IOutputPowerControllerCStruct* pController, EOPCState eWanted)
{
    EOPCState eState = eOPC_UNDEFINED;
    int nCalls = 0;
    while (eState != eWanted) {
        require(nCalls < MAX_SWITCH_CALLS, "reaching a state in time");
        require(pController->staticRegulate(pController->vpThis, REQUESTED_CENTI_DBM) == EAF_OK, "regulating");
        require(pController->staticGetOPCState(pController->vpThis, &eState) == EAF_OK, "reading the state");
        ++nCalls;
    }
    return nCalls;
}

static void setAndReadGains(const IOutputPowerControllerCStruct* pController)
{
    void* vpThis = pController->vpThis;
    for (int nDetectorState = 0; nDetectorState < (int)eOPH_DETECTOR_STATE_UNKNOWN; ++nDetectorState) {
        const EOPHDetectorState eDetectorState = (EOPHDetectorState)nDetectorState;
        const long nGain = GAIN_PERCENT + nDetectorState;
        long nRead = -1;
        require(pController->staticGetGain(vpThis, eDetectorState, eOPC_TX_ON, &nRead) == EAF_OK && nRead == 20,
                "a new controller's gain is 20 %");
        require(pController->staticSetGain(vpThis, eDetectorState, eOPC_TX_ON, nGain) == EAF_OK, "setting a gain");
        require(pController->staticGetGain(vpThis, eDetectorState, eOPC_TX_ON, &nRead) == EAF_OK && nRead == nGain,
                "the gain reads back");
    }
    printf("gains set and read back\n");
}

static void switchOn(const IOutputPowerControllerCStruct* pController)
{
    void* vpThis = pController->vpThis;
    ETxPowerActualStatus eStatus = eTX_POWER_ACTUAL_OFF;
    require(pController->staticSetRequestedTxPowerState(vpThis, eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE) == EAF_OK,
            "requesting the transmitter on");
    const int nCalls = regulateUntil(pController, eOPC_TX_ON);
    require(pController->staticGetTxPowerActualStatus(vpThis, &eStatus) == EAF_OK && eStatus == eTX_POWER_ACTUAL_ON,
            "the transmitter counts as on");
    printf("on after %d calls\n", nCalls);
}

static void regulateAndRead(const IOutputPowerControllerCStruct* pController)
{
    void* vpThis = pController->vpThis;
    for (int nCall = 0; nCall < CLOSED_LOOP_CALLS; ++nCall) {
        require(pController->staticRegulate(vpThis, REQUESTED_CENTI_DBM) == EAF_OK, "a closed-loop step");
    }
    long nPtarget = 0;
    long nPctrl = 0;
    long nPowerError = 0;
    long nPmeasured = 0;
    long nTxPmin = 0;
    long nPctrlMax = 0;
    long nValue = 0;
    EOPCState eState = eOPC_UNDEFINED;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    require(pController->staticGetLogData(vpThis, &nPtarget, &nPctrl, &nPowerError, &nPmeasured, &nTxPmin, &nPctrlMax,
                                          &eState, &eDetectorState) == EAF_OK,
            "reading the log data");
    printf("Ptarget %ld, Pctrl %ld, error %ld, Pmeasured %ld, detector state %d\n", nPtarget, nPctrl, nPowerError,
           nPmeasured, (int)eDetectorState);
    require(nPtarget == REQUESTED_CENTI_DBM, "without calibration tables the target is what was requested");
    require(nPowerError == nPtarget - nPmeasured, "the error is target less measured power");
    require(labs(nPowerError) <= SETTLED_CENTI_DB, "the loop has settled");
    require(nTxPmin == PMIN_CENTI_DBM && eState == eOPC_TX_ON, "limit and state are what they should be");
    require(eDetectorState != eOPH_DETECTOR_STATE_UNKNOWN, "the detector state is known");
    require(nPctrl >= nTxPmin && nPctrl <= nPctrlMax, "the control power is within its limits");
    require(pController->staticGetPctrl(vpThis, &nValue) == EAF_OK && nValue == nPctrl, "Pctrl reads the same");
    require(pController->staticGetPmeasured(vpThis, &nValue) == EAF_OK && nValue == nPmeasured,
            "Pmeasured reads the same");
}

static void switchOff(const IOutputPowerControllerCStruct* pController)
{
    void* vpThis = pController->vpThis;
    long nPctrl = 0;
    require(pController->staticSetRequestedTxPowerState(vpThis, eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE) == EAF_OK,
            "requesting the transmitter off");
    const int nCalls = regulateUntil(pController, eOPC_TX_OFF);
    require(pController->staticGetPctrl(vpThis, &nPctrl) == EAF_OK && nPctrl == OPC_POWER_OFF,
            "no control power is on");
    printf("off after %d calls\n", nCalls);
}

static void useController(void)
{
    const IOutputPowerControllerCStruct* pController = findInterface("IOutputPowerController");
    require(pController != NULL, "finding the controller by name");
    require(pController->staticRegulate(NULL, REQUESTED_CENTI_DBM) == EAF_NULL_POINTER, "a null object is refused");
    require(pController->staticSetTxPminPmax(pController->vpThis, PMIN_CENTI_DBM, PMAX_CENTI_DBM) == EAF_OK,
            "setting the limits");
    require(pController->staticSetRegulatorInterval(pController->vpThis, INTERVAL_MS) == EAF_OK,
            "setting the interval");
    setAndReadGains(pController);
    switchOn(pController);
    regulateAndRead(pController);
    const IOutputPowerControlLogCStruct* pLog = findInterface("IOutputPowerControlLog");
    require(pLog != NULL && pLog->logsRestart(pLog->vpThis) == EAF_OK, "restarting the logs");
    switchOff(pController);
}

int main(int nArguments, char** ppArguments)
{
    Module modules[MODULE_COUNT] = {{0}};
    if (nArguments != 1 + MODULE_COUNT) {
        (void)fprintf(stderr, "usage: c_client TEMPERATURE FREQUENCY OUTPUTPOWERHANDLER CONTROLLER (libraries)\n");
        return 2;
    }
    for (int nModule = 0; nModule < MODULE_COUNT; ++nModule) {
        loadModule(&modules[nModule], MODULE_ENTRY_POINTS[nModule], ppArguments[1 + nModule]);
    }
    require(PhaseDriver_Drive(5) == EAF_OK, "phase 5, module initialisation");
    // There is no module storage here, so the two storage phases fail and leave the controller's defaults.
    require(EAF_isFailure(PhaseDriver_Drive(11)), "phase 11 without module storage");
    require(EAF_isFailure(PhaseDriver_Drive(20)), "phase 20 without module storage");
    useController();
    require(PhaseDriver_Drive(16) == EAF_OK, "phase 16, stop");
    for (int nModule = MODULE_COUNT; nModule > 0; --nModule) {
        unloadModule(&modules[nModule - 1]);
    }
    require(findInterface("IOutputPowerController") == NULL, "the controller's name is withdrawn");
    printf("done\n");
    return 0;
}
