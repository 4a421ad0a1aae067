/** @file
 * The methods of the unit's own.
 */
#pragma once

#include "Unit/TestServer/MethodTable.h"

class RegulationLoop;

/** Adds Unit.Status and Unit.Gains. */
void addStatusMethods(MethodTable& table, RegulationLoop& loop);

/** Adds what changes the unit's and the channels' inputs and settings. */
void addSettingMethods(MethodTable& table, RegulationLoop& loop);

/** Adds the methods of trace levels and of the simulated handlers' faults. */
void addDiagnosisMethods(MethodTable& table, RegulationLoop& loop);
