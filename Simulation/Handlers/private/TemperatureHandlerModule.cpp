/** @file
 * The entry points of the temperature handler module.
 */
#include "Simulation/Handlers/private/ModuleEntryPoints.h"
#include "Simulation/Handlers/private/SimulatedTemperatureHandler.h"

extern "C" {

EAF_PUBLIC void TemperatureHandler_Construct(void** ppModule, unsigned int channel)
{
    constructHandler<SimulatedTemperatureHandler>(ppModule, channel);
}

EAF_PUBLIC void TemperatureHandler_Destruct(void* pModule)
{
    destructHandler<SimulatedTemperatureHandler>(pModule);
}

EAF_PUBLIC long TemperatureHandler_Initialize(void* pModule)
{
    return initializeHandler<SimulatedTemperatureHandler>(pModule);
}

EAF_PUBLIC long TemperatureHandler_Uninitialize(void* pModule)
{
    return uninitializeHandler<SimulatedTemperatureHandler>(pModule);
}
}
