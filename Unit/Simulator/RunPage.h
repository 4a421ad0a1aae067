/** @file
 * A run as a page.
 */
#pragma once

#include "Unit/Simulator/RunReport.h"

#include <string>

/**
 * @param sScenarioText the scenario file as it was read
 * @param sPicture an SVG drawing
 * @return one HTML page that needs nothing else
 */
std::string runPage(const RunReport& report, const std::string& sScenarioText, const std::string& sPicture);
