#include "Platform/Trace/SystemLogSettings.h"

#include <algorithm>
#include <array>

namespace
{

// The code of a name is its place. The first facility is the kernel's: syslog(3) takes its code for "none given".
constexpr std::array<std::string_view, 24> FACILITIES = {"kern",   "user",   "mail",   "daemon", "auth",     "syslog",
                                                         "lpr",    "news",   "uucp",   "cron",   "authpriv", "ftp",
                                                         "ntp",    "audit",  "alert",  "clock",  "local0",   "local1",
                                                         "local2", "local3", "local4", "local5", "local6",   "local7"};
constexpr std::size_t FIRST_FACILITY = 1;

constexpr std::array<std::string_view, 8> SEVERITIES = {"emerg",   "alert",  "crit", "err",
                                                        "warning", "notice", "info", "debug"};

template <class TNames> std::optional<int> codeOf(const TNames& names, std::size_t nFirst, std::string_view sName)
{
    const auto it = std::find(names.begin() + nFirst, names.end(), sName);
    return it == names.end() ? std::nullopt : std::optional<int>(static_cast<int>(it - names.begin()));
}

} // namespace

std::optional<int> SystemLogNames::facility(std::string_view sName)
{
    return codeOf(FACILITIES, FIRST_FACILITY, sName);
}

std::optional<int> SystemLogNames::severity(std::string_view sName)
{
    return codeOf(SEVERITIES, 0, sName);
}

std::vector<std::string_view> SystemLogNames::facilities()
{
    return {FACILITIES.begin() + FIRST_FACILITY, FACILITIES.end()};
}

std::vector<std::string_view> SystemLogNames::severities()
{
    return {SEVERITIES.begin(), SEVERITIES.end()};
}
