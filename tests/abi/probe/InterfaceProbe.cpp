// A library whose debug information shows all public types: each is reached from an exported function's parameters.
// The functions have C names, so that a changed parameter shows as such and not as another function.
#include "Control/FrequencyHandler/IFrequencyHandler.h"
#include "Control/OutputPowerController/IOutputPowerControlLog.h"
#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Control/OutputPowerController/IOutputPowerController.h"
#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Control/OutputPowerController/OutputPowerController_c.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler.h"
#include "Control/OutputPowerHandler/IOutputPowerHandler_c.h"
#include "Control/TemperatureHandler/ITemperatureHandler.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/IInterface.h"
#include "Platform/Broker/IInterface_c.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Platform/Calibration/CCalibrationHandler.h"
#include "Platform/EAFResult.h"
#include "Platform/ModuleFramework/CModuleManager.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/Observer.h"
#include "Platform/Storage/CStorageManager.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Platform/Trace/GtTrace.h"
#include "Platform/Trace/KmtTrace.h"

/** An operation as a function that takes its object first: debug information describes that, and its result. */
namespace interfaceProbe
{
template <class TClass, class TResult, class... TArguments>
auto asFunction(TResult (TClass::*pOperation)(TArguments...)) -> TResult (*)(TClass*, TArguments...);
template <class TClass, class TResult, class... TArguments>
auto asFunction(TResult (TClass::*pOperation)(TArguments...) const) -> TResult (*)(const TClass*, TArguments...);
} // namespace interfaceProbe

// NOLINTBEGIN(bugprone-macro-parentheses): types, and names that become parts of names
#define PROBE(name, ...)                                                                                               \
    EAF_PUBLIC void probe_##name(__VA_ARGS__) {}
#define PROBE_TYPE(type) PROBE(type, type&)
#define PROBE_FUNCTION(function) PROBE(function, decltype(&function))
#define PROBE_STATIC(type, operation) PROBE(type##_##operation, decltype(&type::operation))
#define PROBE_OPERATION(type, operation)                                                                               \
    PROBE(type##_##operation, decltype(interfaceProbe::asFunction(&type::operation)))
// NOLINTEND(bugprone-macro-parentheses)

static_assert(sizeof(Observer<IFrequencyHandler>) == sizeof(void*)); // makes the type
static_assert(sizeof(Subject<IFrequencyHandler>) == sizeof(void*));

extern "C" {
// The module: entry points, interfaces, tables, records, enumerations.
PROBE_FUNCTION(OutputPowerController_Construct)
PROBE_FUNCTION(OutputPowerController_Destruct)
PROBE_FUNCTION(OutputPowerController_Initialize)
PROBE_FUNCTION(OutputPowerController_Uninitialize)
PROBE_TYPE(IOutputPowerController)
PROBE_TYPE(IOutputPowerControlLog)
PROBE_TYPE(IOutputPowerControllerCStruct)
PROBE_TYPE(IOutputPowerControlLogCStruct)
PROBE_TYPE(IOpcPctrlObserver)
PROBE_TYPE(IOpcPtargetObserver)
PROBE_TYPE(IOpcPredictedPctrlObserver)
PROBE_TYPE(IOpcPowerModeObserver)
PROBE_TYPE(EOPCState)
PROBE_TYPE(ERequestedTxPowerState)
PROBE_TYPE(ETxPowerActualStatus)
PROBE_TYPE(ETxPowerMode)

// The other control modules.
PROBE_TYPE(IOutputPowerHandler)
PROBE_TYPE(IOutputPowerHandlerCStruct)
PROBE_TYPE(EOPHDetectorState)
PROBE_TYPE(ERfDetectorLoopMode)
PROBE_TYPE(EOPHResult)
PROBE_TYPE(IFrequencyHandler)
PROBE(FrequencyObserver, Observer<IFrequencyHandler>&)
PROBE(FrequencySubject, Subject<IFrequencyHandler>&)
PROBE_TYPE(ITemperatureHandler)
PROBE_TYPE(ITemperatureObserver)
PROBE_STATIC(ITemperatureHandler, registerObserver)

// What the process supplies.
PROBE_TYPE(EAFResult)
PROBE_TYPE(IInterface)
PROBE_TYPE(IInterface_c)
PROBE_TYPE(InterfaceBroker)
PROBE_STATIC(InterfaceBroker, getInstance)
PROBE_OPERATION(InterfaceBroker, registerInterface)
PROBE_OPERATION(InterfaceBroker, unregisterInterface)
PROBE_OPERATION(InterfaceBroker, getInterface)
PROBE_FUNCTION(CInterfaceBroker_GetInstance)
PROBE_FUNCTION(CInterfaceBroker_RegisterInterface)
PROBE_FUNCTION(CInterfaceBroker_UnregisterInterface)
PROBE_FUNCTION(CInterfaceBroker_GetInterface)
PROBE_FUNCTION(CInterfaceBroker_DestroyInstance)
PROBE_TYPE(ModuleInterface)
PROBE_TYPE(ECallbackPriority)
PROBE_OPERATION(ModuleInterface, isInPhaseFilter)
PROBE_TYPE(CModuleManager)
PROBE_STATIC(CModuleManager, GetInstance)
PROBE_OPERATION(CModuleManager, RegisterModule)
PROBE_OPERATION(CModuleManager, UnRegisterModule)
PROBE_FUNCTION(CCalibrationHandler_GetTable)
PROBE_FUNCTION(CCalibrationTable_IsValid)
PROBE_FUNCTION(CCalibrationTable_BiLinearInterpolate)
PROBE_FUNCTION(CStorageManager_GetVariableContentAddressByName)
PROBE_TYPE(KmtTrace)
PROBE_OPERATION(KmtTrace, beginLogMsg)
PROBE_TYPE(GT_TraceObject)
PROBE(OPC_trace, decltype(OPC_trace)&)
PROBE(TI_trace, decltype(TI_trace)&)
PROBE_FUNCTION(CPlxTraceHandler_DmLevel2GtLevel)
PROBE_FUNCTION(GT_beginImpl)
PROBE_FUNCTION(GT_rawprintf)
PROBE_FUNCTION(GT_endImpl)
PROBE_TYPE(ETIErrorCode)
PROBE_TYPE(TIMethodCStruct)
PROBE_TYPE(ManageLogsCStruct)
}
