/** @file
 * One reader per table of the unit file; each throws ConfigurationError.
 */
#pragma once

#include "Unit/Configuration/TomlTable.h"
#include "Unit/Configuration/UnitConfiguration.h"

void readUnit(const TomlTable& root, UnitConfiguration& configuration);
void readModules(const TomlTable& root, UnitConfiguration& configuration);
void readCalibrations(const TomlTable& root, UnitConfiguration& configuration);
void readTrace(const TomlTable& root, UnitConfiguration& configuration);
void readTestInterface(const TomlTable& root, UnitConfiguration& configuration);
void readRecorder(const TomlTable& root, UnitConfiguration& configuration);
void readProfile(const TomlTable& root, UnitConfiguration& configuration);

/** Reads [transmitter] as well, which every channel starts from. */
void readChannels(const TomlTable& root, UnitConfiguration& configuration);

/** Reads faults; call it after readChannels(), whose channels they name. */
void readFaults(const TomlTable& root, UnitConfiguration& configuration);
