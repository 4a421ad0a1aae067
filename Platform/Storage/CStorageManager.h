/** @file
 * Module storage: the unit's configuration variables, filled before the start-up phases.
 */
#pragma once

#include "Platform/EAFResult.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Finds a variable's content.
 * @param pName name of the variable
 * @param[out] ppContent address of the content, a signed 32-bit integer; valid while the process runs
 * @param nReserved pass 0
 * @return EAF_OK; EAF_NULL_POINTER for a null argument; EAF_FAILED when there is no variable of that name
 */
EAF_PUBLIC EAFResult CStorageManager_GetVariableContentAddressByName(const char* pName, void** ppContent,
                                                                     int nReserved);

#ifdef __cplusplus
}
#endif
