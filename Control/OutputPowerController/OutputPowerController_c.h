/** @file
 * The four functions through which a loader drives the module. Call them from one thread, in the order Construct,
 * Initialize, Uninitialize, Destruct; the module manager's phases run between Construct and Destruct.
 */
#pragma once

#include "Platform/EAFResult.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Creates the controller of a channel, which registers itself with the module manager and the interface broker.
 * @param[out] ppModule handle of the controller, to be given back to OutputPowerController_Destruct(); a null pointer
 *                      is traced and creates nothing
 * @param channel radio channel
 */
EAF_PUBLIC void OutputPowerController_Construct(void** ppModule, unsigned int channel);

/**
 * Destroys a controller.
 * @param pModule handle of the controller; null is traced and does nothing
 */
EAF_PUBLIC void OutputPowerController_Destruct(void* pModule);

/**
 * Resets and publishes the controller's logs.
 * @param pModule handle of the controller
 * @return EAF_OK, or EAF_NULL_POINTER for a null handle, which is traced
 */
EAF_PUBLIC long OutputPowerController_Initialize(void* pModule);

/**
 * Withdraws the controller's logs.
 * @param pModule handle of the controller
 * @return EAF_OK, or EAF_NULL_POINTER for a null handle, which is traced
 */
EAF_PUBLIC long OutputPowerController_Uninitialize(void* pModule);

#ifdef __cplusplus
}
#endif
