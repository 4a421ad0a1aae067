/** @file
 * The entry points of the frequency handler module.
 */
#include "Simulation/Handlers/private/ModuleEntryPoints.h"
#include "Simulation/Handlers/private/SimulatedFrequencyHandler.h"

extern "C" {

EAF_PUBLIC void FrequencyHandler_Construct(void** ppModule, unsigned int channel)
{
    constructHandler<SimulatedFrequencyHandler>(ppModule, channel);
}

EAF_PUBLIC void FrequencyHandler_Destruct(void* pModule)
{
    destructHandler<SimulatedFrequencyHandler>(pModule);
}

EAF_PUBLIC long FrequencyHandler_Initialize(void* pModule)
{
    return initializeHandler<SimulatedFrequencyHandler>(pModule);
}

EAF_PUBLIC long FrequencyHandler_Uninitialize(void* pModule)
{
    return uninitializeHandler<SimulatedFrequencyHandler>(pModule);
}
}
