/** @file
 * A sweep's report as a page.
 */
#pragma once

#include "Unit/Campaign/SweepReport.h"

#include <string>

/**
 * @param sPicture an SVG drawing
 * @return one HTML page that needs nothing else
 */
std::string sweepPage(const SweepReport& report, const std::string& sPicture);
