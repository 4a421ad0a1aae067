/** @file
 * What fuzz targets have in common: a place for files, and checks that end the process.
 */
#pragma once

#include "Platform/ConfigurationError.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/** What each target defines: takes an input, checks what has to hold, and ends the process when it does not. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);

/** @return the input as text */
std::string inputText(const std::uint8_t* pData, std::size_t nSize);

/** Ends the process, which counts as a finding. */
[[noreturn]] void fail(const std::string& sWhat);

/** Ends the process unless something holds. @param sWhat what does not hold then */
void require(bool bHolds, const std::string& sWhat);

/** Ends the process unless a text fits on one line of a terminal and has no control characters. */
void requireOneLine(const std::string& sText);

/** @return path of a file in the process's own folder, which goes with it */
std::string pathInFolder(const std::string& sName);

/** Replaces the contents of a file in the process's own folder. @return its path */
std::string writeInFolder(const std::string& sName, std::string_view sText);

/**
 * Reads a file as the product does. Ends the process for an error that is no ConfigurationError, and for one that does
 * not name the file or names a line that the file does not have.
 * @param sPath of the file, whose text is sText
 * @return whether it was accepted
 */
bool accepts(const std::string& sPath, std::string_view sText, const std::function<void()>& read);

/** Ends the process unless an error is one that accepts() lets through. */
void requireNamesPlace(const ConfigurationError& error, const std::string& sPath, std::string_view sText);

/** @return the parts of a text between separators; one at least */
std::vector<std::string> splitText(const std::string& sText, char cSeparator);

/** Ends the process unless a value lies in a range; NaN lies in none. */
void requireWithin(double value, double minimum, double maximum, const char* pWhat);
