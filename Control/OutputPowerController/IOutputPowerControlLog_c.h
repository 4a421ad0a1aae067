/** @file
 * The output power control log as C callers see it.
 */
#pragma once

#include "Platform/EAFResult.h"

/** The log's operations. Pass vpThis first; a null vpThis gives EAF_NULL_POINTER. */
typedef struct IOutputPowerControlLogCStruct
{
    void* vpThis; /**< the log */

    /** Restarts whichever of the two logs is recording. */
    long (*logsRestart)(void* vpThis);
} IOutputPowerControlLogCStruct;
