/** @file
 * Calls the program gnuplot.
 */
#pragma once

#include <string>

/** Formats of pictures. */
enum class EPicture
{
    Svg,
    Png
};

/** @return the format that a file's name asks for, SVG unless it ends with .png */
EPicture pictureFor(const std::string& sPath);

/** @return a text in quotes as gnuplot reads it, on one line of at most nMaximum bytes */
std::string gnuplotText(const std::string& sText, std::size_t nMaximum);

/**
 * @param sScript goes to its standard input through a pipe
 * @return what it wrote to its standard output
 * @throws std::runtime_error when it is not installed or fails, with its own words; SIGPIPE has to be ignored
 */
std::string runGnuplot(const std::string& sScript);
