#include "Control/OutputPowerController/OutputPowerController_c.h"

#include "Control/OutputPowerController/private/DiagnosticTrace.h"
#include "Control/OutputPowerController/private/OutputPowerController.h"

namespace
{

// The lines that these records carry are fixed: those who read the trace know the entry point by them.
constexpr int CONSTRUCT_LINE = 30;
constexpr int DESTRUCT_LINE = 45;
constexpr int INITIALIZE_LINE = 59;
constexpr int UNINITIALIZE_LINE = 73;

void traceNullPointer(int nLine)
{
    traceDiagnostic(OPC_trace, EAF_NULL_POINTER, "Control/OutputPowerController/private/OutputPowerController_c", nLine,
                    "Null pointer in argument");
}

} // namespace

void OutputPowerController_Construct(void** ppModule, unsigned int channel)
{
    if (ppModule == nullptr) {
        traceNullPointer(CONSTRUCT_LINE);
        return;
    }
    *ppModule = new OutputPowerController(channel);
}

void OutputPowerController_Destruct(void* pModule)
{
    if (pModule == nullptr) {
        traceNullPointer(DESTRUCT_LINE);
        return;
    }
    delete static_cast<OutputPowerController*>(pModule);
}

long OutputPowerController_Initialize(void* pModule)
{
    if (pModule == nullptr) {
        traceNullPointer(INITIALIZE_LINE);
        return EAF_NULL_POINTER;
    }
    return static_cast<OutputPowerController*>(pModule)->initialize();
}

long OutputPowerController_Uninitialize(void* pModule)
{
    if (pModule == nullptr) {
        traceNullPointer(UNINITIALIZE_LINE);
        return EAF_NULL_POINTER;
    }
    return static_cast<OutputPowerController*>(pModule)->unInitialize();
}
