/** @file
 * Files that a sweep's values name.
 */
#pragma once

#include "Unit/Simulator/Scenario.h"

#include <string>

/** @return the override, its file sought from a folder where its value names one, such as that of drive.file */
ScenarioOverride fromFolder(const ScenarioOverride& given, const std::string& sFolder);
