#include "Unit/Text/IsoTime.h"

#include <fmt/format.h>

#include <chrono>

std::string isoTime(std::int64_t nUnixUs)
{
    const std::chrono::sys_time<std::chrono::microseconds> time{std::chrono::microseconds(nUnixUs)};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z", static_cast<int>(date.year()),
                       static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
                       clock.hours().count(), clock.minutes().count(), clock.seconds().count(),
                       clock.subseconds().count());
}
