/** @file
 * Pages that need no other file.
 */
#pragma once

#include <string>

/** @return text as it stands in HTML, in quotes too */
std::string escapedHtml(const std::string& sText);

/** @return a page up to its body's first element, with a style for reports, in light and in dark */
std::string htmlHead(const std::string& sTitle);

/**
 * @param sPicture an SVG drawing as a file
 * @return its element, to stand in a page, without a title to hover over
 */
std::string svgElement(const std::string& sPicture);
