/** @file
 * Finds what somebody meant who made a slip in a name.
 */
#pragma once

#include <string>
#include <vector>

/** @return the name that differs from a text by the fewest slips, or an empty text when none is near enough */
std::string nearName(const std::string& sText, const std::vector<std::string>& names);

/** @return the names, told as what is known, after the one that may have been meant */
std::string knownNames(const std::string& sText, const std::vector<std::string>& names, const std::string& sWhat);
