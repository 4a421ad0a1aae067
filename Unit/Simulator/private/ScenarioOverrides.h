/** @file
 * Puts values that people give beside a scenario file into what the file says.
 */
#pragma once

#include "Unit/Simulator/Scenario.h"

#include <toml++/toml.h>

/** Puts the overrides into a file's contents, in their order. @throws ConfigurationError that names the override */
void applyOverrides(toml::table& document, const std::vector<ScenarioOverride>& overrides);
