#include "Unit/Recorder/RecordedTime.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <regex>

namespace
{
constexpr double LONGEST_SECONDS = 1e10;

int number(const std::ssub_match& match)
{
    int nNumber = 0;
    (void)std::from_chars(&*match.first, &*match.first + match.length(), nNumber);
    return nNumber;
}

/** @return the microseconds of ".5" */
std::int64_t fraction(const std::string& sFraction)
{
    std::string sDigits = sFraction.empty() ? "" : sFraction.substr(1);
    sDigits.resize(6, '0');
    return std::stoll(sDigits);
}

std::optional<std::int64_t> parseIsoTime(const std::string& sText)
{
    static const std::regex PATTERN(R"((\d{4})-(\d\d)-(\d\d)[T ](\d\d):(\d\d)(?::(\d\d)(\.\d{1,9})?)?)"
                                    R"((Z|([+-])(\d\d):?(\d\d))?)");
    std::smatch match;
    if (!std::regex_match(sText, match, PATTERN)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(number(match[1])),
                                           std::chrono::month(static_cast<unsigned int>(number(match[2]))),
                                           std::chrono::day(static_cast<unsigned int>(number(match[3])))};
    const int nHour = number(match[4]);
    const int nMinute = number(match[5]);
    const int nSecond = match[6].matched ? number(match[6]) : 0;
    if (!date.ok() || nHour > 23 || nMinute > 59 || nSecond > 59) {
        return std::nullopt;
    }
    std::chrono::seconds time = std::chrono::sys_days(date).time_since_epoch() + std::chrono::hours(nHour) +
                                std::chrono::minutes(nMinute) + std::chrono::seconds(nSecond);
    if (match[9].matched) {
        const auto offset = std::chrono::hours(number(match[10])) + std::chrono::minutes(number(match[11]));
        time -= match[9].str() == "-" ? -offset : offset;
    }
    return time.count() * SECOND_US + fraction(match[7].str());
}
} // namespace

std::optional<std::int64_t> parseRunTime(const std::string& sText, std::int64_t nStartedUnixUs)
{
    double seconds = 0.0;
    const char* const pEnd = sText.data() + sText.size();
    const auto [pRead, error] = std::from_chars(sText.data(), pEnd, seconds);
    if (error == std::errc() && pRead == pEnd && std::abs(seconds) <= LONGEST_SECONDS) {
        return std::llround(seconds * static_cast<double>(SECOND_US));
    }
    const auto nUnixUs = parseIsoTime(sText);
    return nUnixUs ? std::optional(*nUnixUs - nStartedUnixUs) : std::nullopt;
}
