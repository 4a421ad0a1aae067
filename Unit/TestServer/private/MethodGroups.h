/** @file
 * The methods of a unit, by what they are for.
 */
#pragma once

#include "Unit/TestServer/MethodTable.h"

class RegulationLoop;

/** Adds TI.ManageOPCTransientLog and TI.ManageLogs, which call the handlers that the logs published by name. @param
 * loop must outlive the table */
void addLogMethods(MethodTable& table, RegulationLoop& loop);

/** Adds Unit.Status and Unit.Gains. */
void addStatusMethods(MethodTable& table, RegulationLoop& loop);

/** Adds what changes the unit's and the channels' inputs and settings. */
void addSettingMethods(MethodTable& table, RegulationLoop& loop);

/** Adds the methods of trace levels and of the simulated handlers' faults. */
void addDiagnosisMethods(MethodTable& table, RegulationLoop& loop);
