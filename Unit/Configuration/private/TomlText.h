/** @file
 * Shows a value of a TOML file in a message.
 */
#pragma once

#include <toml++/toml.h>

#include <string>

/** @return the value as people write it, in one line and shortened */
std::string tomlText(const toml::node& node);

/** @return the text in quotation marks, in one line and shortened */
std::string tomlText(const std::string& sText);
