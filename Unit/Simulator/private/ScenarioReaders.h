/** @file
 * One reader per table of a scenario file; each throws ConfigurationError.
 */
#pragma once

#include "Unit/Configuration/TomlTable.h"
#include "Unit/Simulator/Scenario.h"

/** Reads [unit], [channel], [transmitter] and the seed, over the unit file where one is named. */
void readScenarioUnit(const TomlTable& root, const std::string& sFolder, Scenario& scenario);

void readDrive(const TomlTable& root, const std::string& sFolder, Scenario& scenario);

/** Reads events; call it when the duration, the channel and its transmitter are known. */
void readEvents(const TomlTable& root, Scenario& scenario);

/** Reads faults; call it when the duration and the channel are known. */
void readScenarioFaults(const TomlTable& root, Scenario& scenario);

void readMeasures(const TomlTable& root, Scenario& scenario);
void readExpectations(const TomlTable& root, Scenario& scenario);

/** @return a number above 0, if the key is there */
std::optional<double> positiveNumber(const TomlTable& table, const std::string& sKey, double maximum);

/**
 * @return path of a file that is there: from a file's folder as in the file, from the current folder when somebody gave
 *         it in an override
 */
std::string existingFile(const TomlTable& table, const std::string& sKey, const std::string& sFolder);

/** Refuses a time at or after the end of the run, by the override when one has made the run too short. */
void checkWithinRun(const TomlTable& root, const TomlTable& table, const std::string& sKey, double seconds,
                    double durationSeconds);
