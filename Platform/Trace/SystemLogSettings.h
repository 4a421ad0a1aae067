/** @file
 * How the unit's lines are marked in the system log, in the codes of RFC 5424.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <optional>
#include <string_view>
#include <vector>

/** Marks of the lines to come. */
struct SystemLogSettings
{
    int nFacility = 1; /**< 1 to 23: user to local7 */
    int nSeverity = 6; /**< 0 to 7: emerg to debug */
};

/** The names that people write for the codes, such as "local0" and "notice". */
class EAF_PUBLIC SystemLogNames
{
public:
    /** @return the code of a facility; nothing for an unknown name and for the kernel's, which no program can use */
    static std::optional<int> facility(std::string_view sName);
    static std::optional<int> severity(std::string_view sName);

    /** @return the names that facility() knows, by code */
    static std::vector<std::string_view> facilities();

    /** @return the names that severity() knows, by code */
    static std::vector<std::string_view> severities();
};
