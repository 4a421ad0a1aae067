/** @file
 * Reads storage variables from a file.
 */
#pragma once

#include <cstdint>
#include <map>
#include <string>

/**
 * @return names and values of a TOML file's table [variables]
 * @throws ConfigurationError that names the file and line
 */
std::map<std::string, int32_t> readStorageFile(const std::string& sPath);
