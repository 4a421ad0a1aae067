/** @file
 * The process-wide registry of C interface records, and the C door to the C++ interfaces.
 *
 * Every operation may be called from any thread.
 */
#pragma once

#include "Platform/EAFResult.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Obtains a handle of the broker.
 * @param[out] ppBroker the handle, to be given back to CInterfaceBroker_DestroyInstance(); a handle that is never
 *                      given back costs nothing
 * @return EAF_OK, or EAF_NULL_POINTER for a null pointer
 */
EAF_PUBLIC EAFResult CInterfaceBroker_GetInstance(void** ppBroker);

/**
 * Publishes a record.
 * @param pBroker the handle
 * @param pName name to find the record by; copied
 * @param pInterface address of the record; not owned, must stay where it is until it is withdrawn
 * @return EAF_OK; EAF_NULL_POINTER for a null argument; EAF_FAILED when the name is taken, which keeps the first
 */
EAF_PUBLIC EAFResult CInterfaceBroker_RegisterInterface(void* pBroker, const char* pName, void* pInterface);

/**
 * Withdraws a record.
 * @param pBroker the handle
 * @param pName name that it was published under
 * @param pInterface the record published, or null to withdraw by name alone
 * @return EAF_OK; EAF_NULL_POINTER for a null handle or name; EAF_FAILED when the name is unknown or stands for
 *         another record
 */
EAF_PUBLIC EAFResult CInterfaceBroker_UnregisterInterface(void* pBroker, const char* pName, void* pInterface);

/**
 * Finds a record: one published here, or else the C function table of a C++ interface of that name.
 * @param pBroker the handle
 * @param pName name that it was published under
 * @param[out] ppInterface the record or table; null when nothing was found
 * @return EAF_OK; EAF_NULL_POINTER for a null argument; EAF_FAILED when the name is unknown or has no C table
 */
EAF_PUBLIC EAFResult CInterfaceBroker_GetInterface(void* pBroker, const char* pName, void** ppInterface);

/**
 * Gives a handle back. The broker itself and everything published in it stay.
 * @param pBroker the handle
 * @return EAF_OK, or EAF_NULL_POINTER for a null handle
 */
EAF_PUBLIC EAFResult CInterfaceBroker_DestroyInstance(void* pBroker);

#ifdef __cplusplus
}
#endif
