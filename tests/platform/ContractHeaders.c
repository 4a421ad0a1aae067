#include "tests/platform/ContractHeaders.h"

#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Control/OutputPowerController/OutputPowerController_c.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler_c.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/EAFResult.h"
#include "Platform/ModuleFramework/PhaseDriver_c.h"
#include "Platform/Storage/CStorageManager.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/GtTrace.h"

#include <stddef.h>

/* A table is its object pointer and so many functions, whatever the machine's word is. */
#define ASSERT_TABLE(table, functions)                                                                                 \
    _Static_assert(offsetof(table, vpThis) == 0, #table " begins with vpThis");                                        \
    _Static_assert(sizeof(table) == (1 + (functions)) * sizeof(void*), #table " has its functions and nothing else")
#define ASSERT_ENTRY(table, member, number)                                                                            \
    _Static_assert(offsetof(table, member) == (number) * sizeof(void*), #member " is function " #number)

ASSERT_TABLE(IOutputPowerHandlerCStruct, 13);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, setOutputPower, 1);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, setTxState, 4);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, setProductionTestSettings, 5);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, getReducedGainFromAmplifier, 7);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, getTxPowerReadings, 8);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, calculateDetectorUsage, 9);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, getPmeasured, 10);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, setZembraMlmTrafTx, 11);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, getPctrlLimits, 13);

ASSERT_TABLE(IOutputPowerControllerCStruct, 16);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticSetTxPminPmax, 1);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticSetRequestedTxPowerState, 2);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticSetProductionTestSettings, 3);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticSetRegulatorInterval, 4);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticGetOPCState, 5);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticGetTxPowerActualStatus, 6);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticGetPctrl, 7);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticRegisterPctrlObserver, 8);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticRegisterPtargetObserver, 9);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticRegisterPredictedPctrlObserver, 10);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticRegisterPowerModeObserver, 11);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticRegulate, 12);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticGetLogData, 13);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticGetPmeasured, 14);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticSetGain, 15);
ASSERT_ENTRY(IOutputPowerControllerCStruct, staticGetGain, 16);

ASSERT_TABLE(IOutputPowerControlLogCStruct, 1);
ASSERT_TABLE(IOpcPctrlObserver, 1);
ASSERT_TABLE(IOpcPtargetObserver, 1);
ASSERT_TABLE(IOpcPredictedPctrlObserver, 1);
ASSERT_TABLE(IOpcPowerModeObserver, 1);
ASSERT_TABLE(TIMethodCStruct, 1);
ASSERT_TABLE(ManageLogsCStruct, 1);

_Static_assert(offsetof(GT_TraceObject, nLevel) == 0, "a trace object begins with its level");
_Static_assert(sizeof(EAFResult) == 4 && sizeof(EOPHResult) == 4, "results have 32 bits");
_Static_assert(sizeof(EOPCState) == 4 && sizeof(EOPHDetectorState) == 4, "enumerations have 32 bits");
_Static_assert(sizeof(ETxPowerMode) == 4 && sizeof(ERfDetectorLoopMode) == 4, "enumerations have 32 bits");
_Static_assert(eTI_E_REQUIRED_INPUT_MISSING == 2 && eTI_E_FAILED == 4, "fault codes");
_Static_assert(EAF_OK == 0 && EAF_FAILED == 0x8000 && EAF_NULL_POINTER == 0x8002, "result codes");

static long restart(void* vpThis)
{
    ++*(int*)vpThis;
    return EAF_OK;
}

int useBrokerFromC(void)
{
    int nRestarts = 0;
    IOutputPowerControlLogCStruct log = {&nRestarts, restart};
    void* pBroker = NULL;
    if (CInterfaceBroker_GetInstance(&pBroker) != EAF_OK) {
        return 1;
    }
    if (CInterfaceBroker_RegisterInterface(pBroker, "FromC", &log) != EAF_OK) {
        return 2;
    }
    if (restartLogsFromC("FromC") != EAF_OK || nRestarts != 1) {
        return 3;
    }
    if (CInterfaceBroker_UnregisterInterface(pBroker, "FromC", &log) != EAF_OK) {
        return 4;
    }
    if (restartLogsFromC("FromC") != -1 || nRestarts != 1) {
        return 5;
    }
    return EAF_isFailure(CInterfaceBroker_DestroyInstance(pBroker)) ? 6 : 0;
}

long restartLogsFromC(const char* pName)
{
    void* pBroker = NULL;
    void* pFound = NULL;
    if (EAF_isFailure(CInterfaceBroker_GetInstance(&pBroker)) ||
        EAF_isFailure(CInterfaceBroker_GetInterface(pBroker, pName, &pFound)))
    {
        return -1;
    }
    const IOutputPowerControlLogCStruct* const pLog = pFound;
    return pLog->logsRestart(pLog->vpThis);
}
