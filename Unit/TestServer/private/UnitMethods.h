/** @file
 * The methods of a unit.
 */
#pragma once

#include "Unit/TestServer/MethodTable.h"

class RegulationLoop;

/** @return all of the methods below. @param loop must outlive them */
MethodTable unitMethods(RegulationLoop& loop);

/** Adds TI.ManageOPCTransientLog and TI.ManageLogs, which call the handlers that the logs published by name. */
void addLogMethods(MethodTable& table, RegulationLoop& loop);

/** Adds Unit.Status and Unit.Gains. */
void addStatusMethods(MethodTable& table, RegulationLoop& loop);

/** Adds what changes the unit's and the channels' inputs and settings. */
void addSettingMethods(MethodTable& table, RegulationLoop& loop);

/** Adds the methods of trace levels and of the simulated handlers' faults. */
void addDiagnosisMethods(MethodTable& table, RegulationLoop& loop);
