/** @file
 * The methods that manage the modules' logs.
 */
#pragma once

#include "Unit/TestServer/MethodTable.h"

class RegulationLoop;

/** Adds TI.ManageOPCTransientLog and TI.ManageLogs, which call the handlers that the logs published by name. */
void addLogMethods(MethodTable& table, RegulationLoop& loop);
