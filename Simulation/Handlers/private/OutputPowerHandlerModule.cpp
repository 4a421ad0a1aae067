/** @file
 * The entry points of the output power handler module.
 */
#include "Simulation/Handlers/private/ModuleEntryPoints.h"
#include "Simulation/Handlers/private/SimulatedOutputPowerHandler.h"

extern "C" {

EAF_PUBLIC void OutputPowerHandler_Construct(void** ppModule, unsigned int channel)
{
    constructHandler<SimulatedOutputPowerHandler>(ppModule, channel);
}

EAF_PUBLIC void OutputPowerHandler_Destruct(void* pModule)
{
    destructHandler<SimulatedOutputPowerHandler>(pModule);
}

EAF_PUBLIC long OutputPowerHandler_Initialize(void* pModule)
{
    return initializeHandler<SimulatedOutputPowerHandler>(pModule);
}

EAF_PUBLIC long OutputPowerHandler_Uninitialize(void* pModule)
{
    return uninitializeHandler<SimulatedOutputPowerHandler>(pModule);
}
}
