/** @file
 * The output power control log as C callers see it.
 */
#pragma once

#include "Platform/EAFResult.h"

/** The log's operations. Pass vpThis first; a null vpThis gives EAF_NULL_POINTER. */
typedef struct IOutputPowerControlLogCStruct
{
    void* vpThis; /**< the log */

    /**
     * Empties whichever of the two logs is recording and lets it go on. Call it in the thread that regulates.
     * @param vpThis the log
     * @return EAF_OK, or EAF_NULL_POINTER for a null log
     */
    long (*logsRestart)(void* vpThis);
} IOutputPowerControlLogCStruct;
