/** @file
 * Where every member of every C table and record lies, and what every enumerator is; in C and in C++, on any machine
 * whose pointers and longs are one word. Holds when it compiles.
 */
#pragma once

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

#include <assert.h>
#include <stddef.h>

#ifdef __cplusplus
#define MEMBER_SIZE(type, member) sizeof(type::member)
#else
#define MEMBER_SIZE(type, member) sizeof(((type*)0)->member)
#endif

// A table or record is its object pointer and so many functions, each a word.
#define ASSERT_TABLE(table, functions)                                                                                 \
    static_assert(offsetof(table, vpThis) == 0, #table " begins with vpThis");                                         \
    static_assert(MEMBER_SIZE(table, vpThis) == sizeof(void*), #table "'s vpThis is a word");                          \
    static_assert(sizeof(table) == (1 + (functions)) * sizeof(void*), #table " has its functions and nothing else")
#define ASSERT_ENTRY(table, member, number)                                                                            \
    static_assert(offsetof(table, member) == (number) * sizeof(void*), #table "::" #member " is function " #number);   \
    static_assert(MEMBER_SIZE(table, member) == sizeof(void*), #table "::" #member " is a word")
#define ASSERT_ENUMERATOR(name, value) static_assert((name) == (value), #name " is " #value)

static_assert(sizeof(void*) == 4 || sizeof(void*) == 8, "a word has 32 or 64 bits");
static_assert(sizeof(long) == sizeof(void*), "a long is a word");
static_assert(sizeof(int) == 4 && sizeof(bool) == 1, "what the tables' functions take");

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
ASSERT_ENTRY(IOutputPowerControlLogCStruct, logsRestart, 1);

ASSERT_TABLE(IOpcPctrlObserver, 1);
ASSERT_ENTRY(IOpcPctrlObserver, pfnNotify, 1);
ASSERT_TABLE(IOpcPtargetObserver, 1);
ASSERT_ENTRY(IOpcPtargetObserver, pfnNotify, 1);
ASSERT_TABLE(IOpcPredictedPctrlObserver, 1);
ASSERT_ENTRY(IOpcPredictedPctrlObserver, pfnNotify, 1);
ASSERT_TABLE(IOpcPowerModeObserver, 1);
ASSERT_ENTRY(IOpcPowerModeObserver, pfnNotify, 1);

ASSERT_TABLE(IOutputPowerHandlerCStruct, 13);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, setOutputPower, 1);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, reserved2, 2);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, reserved3, 3);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, setTxState, 4);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, setProductionTestSettings, 5);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, reserved6, 6);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, getReducedGainFromAmplifier, 7);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, getTxPowerReadings, 8);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, calculateDetectorUsage, 9);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, getPmeasured, 10);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, setZembraMlmTrafTx, 11);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, reserved12, 12);
ASSERT_ENTRY(IOutputPowerHandlerCStruct, getPctrlLimits, 13);

ASSERT_TABLE(TIMethodCStruct, 1);
ASSERT_ENTRY(TIMethodCStruct, handle, 1);
ASSERT_TABLE(ManageLogsCStruct, 1);
ASSERT_ENTRY(ManageLogsCStruct, manageLogs, 1);

static_assert(offsetof(GT_TraceObject, nLevel) == 0, "a trace object begins with its level");
static_assert(MEMBER_SIZE(GT_TraceObject, nLevel) == 4, "which has 32 bits");
static_assert(offsetof(GT_TraceObject, pName) == sizeof(void*), "its name follows at the next word");
static_assert(sizeof(GT_TraceObject) == 2 * sizeof(void*), "and ends it");

static_assert(sizeof(EAFResult) == 4 && sizeof(EOPHResult) == 4, "results have 32 bits");
static_assert(sizeof(EOPCState) == 4 && sizeof(ERequestedTxPowerState) == 4, "enumerations have 32 bits");
static_assert(sizeof(ETxPowerActualStatus) == 4 && sizeof(ETxPowerMode) == 4, "enumerations have 32 bits");
static_assert(sizeof(EOPHDetectorState) == 4 && sizeof(ERfDetectorLoopMode) == 4, "enumerations have 32 bits");
static_assert(sizeof(ETIErrorCode) == 4, "enumerations have 32 bits");

ASSERT_ENUMERATOR(eOPC_TX_OFF_INITIATED, 0);
ASSERT_ENUMERATOR(eOPC_TX_OFF_IN_PROGRESS, 1);
ASSERT_ENUMERATOR(eOPC_TX_OFF, 2);
ASSERT_ENUMERATOR(eOPC_DELAYED_TX_ON_INITIATED, 3);
ASSERT_ENUMERATOR(eOPC_DELAYED_TX_ON_IN_PROGRESS, 4);
ASSERT_ENUMERATOR(eOPC_TX_ON_INITIATED, 5);
ASSERT_ENUMERATOR(eOPC_TX_ON_IN_PROGRESS, 6);
ASSERT_ENUMERATOR(eOPC_TX_ON_RAMPING, 7);
ASSERT_ENUMERATOR(eOPC_TX_ON, 8);
ASSERT_ENUMERATOR(eOPC_UNDEFINED, 9);
ASSERT_ENUMERATOR(eREQUESTED_TX_POWER_OFF, 0);
ASSERT_ENUMERATOR(eREQUESTED_TX_POWER_ON, 1);
ASSERT_ENUMERATOR(eTX_POWER_ACTUAL_OFF, 0);
ASSERT_ENUMERATOR(eTX_POWER_ACTUAL_ON, 1);
ASSERT_ENUMERATOR(eTX_POWER_MODE_STEP_LIMITED, 0);
ASSERT_ENUMERATOR(eTX_POWER_MODE_FREE, 1);
ASSERT_ENUMERATOR(eTX_POWER_MODE_REPORT_THEN_LIMIT, 2);
ASSERT_ENUMERATOR(eTX_POWER_MODE_INITIAL, 3);
ASSERT_ENUMERATOR(eOPH_DETECTOR_STATE_0, 0);
ASSERT_ENUMERATOR(eOPH_DETECTOR_STATE_1, 1);
ASSERT_ENUMERATOR(eOPH_DETECTOR_STATE_2, 2);
ASSERT_ENUMERATOR(eOPH_DETECTOR_STATE_UNKNOWN, 3);
ASSERT_ENUMERATOR(eRF_DETECTOR_LOOP_MODE_NORMAL, 0);
ASSERT_ENUMERATOR(eRF_DETECTOR_LOOP_MODE_CLOSED, 1);
ASSERT_ENUMERATOR(eRF_DETECTOR_LOOP_MODE_OPEN, 2);
ASSERT_ENUMERATOR(eTI_E_REQUIRED_INPUT_MISSING, 2);
ASSERT_ENUMERATOR(eTI_E_FAILED, 4);
ASSERT_ENUMERATOR(EAF_OK, 0);
ASSERT_ENUMERATOR(EAF_FAILED, 0x8000);
ASSERT_ENUMERATOR(EAF_NULL_POINTER, 0x8002);
ASSERT_ENUMERATOR(OPC_POWER_UNKNOWN, -10000);
ASSERT_ENUMERATOR(OPC_POWER_OFF, -9900);
