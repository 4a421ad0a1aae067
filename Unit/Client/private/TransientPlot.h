/** @file
 * The transient log as a picture.
 */
#pragma once

#include <nlohmann/json.hpp>

#include <string>

/**
 * Plots the answer to a read of the transient log with the program gnuplot: the powers over the sample number, and
 * below them IF power and gain.
 * @param sPath ends with .svg or .png
 * @throws std::runtime_error when gnuplot is not there or fails, or the file cannot be written
 */
void plotTransientLog(const nlohmann::ordered_json& answer, const std::string& sPath);

/** @return what gnuplot is told: settings, the samples, and two plots; the picture goes to its standard output */
std::string transientPlotScript(const nlohmann::ordered_json& answer, bool bSvg);
