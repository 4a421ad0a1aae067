#include "Unit/Simulator/private/PlotData.h"

#include <fmt/format.h>

#include <iterator>

namespace
{
constexpr double SECONDS_PER_MINUTE = 60.0;
constexpr double SECONDS_PER_HOUR = 3600.0;
constexpr double SECONDS_PER_DAY = 86400.0;
constexpr double MOST_SECONDS = 180.0;
constexpr double MOST_MINUTES = 180.0;
constexpr double MOST_HOURS = 100.0;

std::string meanText(const StepBucket& bucket, EQuantity eQuantity)
{
    const ValueRange& range = bucket.range(eQuantity);
    return range.hasValues() ? fmt::format("{:.4f}", range.mean()) : std::string("NaN");
}

/** @return smallest, mean and largest value */
std::string rangeText(const StepBucket& bucket, EQuantity eQuantity)
{
    const ValueRange& range = bucket.range(eQuantity);
    return range.hasValues() ? fmt::format("{:.4f} {:.4f} {:.4f}", range.minimum, range.mean(), range.maximum)
                             : std::string("NaN NaN NaN");
}
} // namespace

TimeAxis timeAxisFor(double seconds)
{
    if (seconds <= MOST_SECONDS) {
        return {"s", 1.0};
    }
    if (seconds <= MOST_MINUTES * SECONDS_PER_MINUTE) {
        return {"min", SECONDS_PER_MINUTE};
    }
    return seconds <= MOST_HOURS * SECONDS_PER_HOUR ? TimeAxis{"h", SECONDS_PER_HOUR} : TimeAxis{"d", SECONDS_PER_DAY};
}

std::string plotData(const std::vector<StepBucket>& buckets, const TimeAxis& axis)
{
    std::string sData;
    for (const StepBucket& bucket : buckets) {
        fmt::format_to(std::back_inserter(sData), "{:.9g} {} {} {} {} {} {} {}\n",
                       bucket.firstSeconds / axis.secondsPerUnit, meanText(bucket, EQuantity::RequestedPower),
                       meanText(bucket, EQuantity::TargetPower), meanText(bucket, EQuantity::ControlPower),
                       rangeText(bucket, EQuantity::OutputPower), rangeText(bucket, EQuantity::OutputError),
                       meanText(bucket, EQuantity::Temperature), meanText(bucket, EQuantity::Frequency));
    }
    return sData;
}

std::string stateData(const std::vector<StepBucket>& buckets, const TimeAxis& axis)
{
    std::string sData;
    for (const StepBucket& bucket : buckets) {
        const double time = bucket.firstSeconds / axis.secondsPerUnit;
        const int nLowest = bucket.nLowestDegree;
        const int nLast = onDegree(bucket.nLastState);
        fmt::format_to(std::back_inserter(sData), "{:.9g} {}\n", time, nLowest);
        if (nLowest != nLast) {
            fmt::format_to(std::back_inserter(sData), "{:.9g} {}\n", bucket.lastSeconds / axis.secondsPerUnit, nLast);
        }
    }
    return sData;
}

const char* stateTics()
{
    return "('off' 0, 'switching' 1, 'ramping' 2, 'on' 3)";
}

ValueRange rangeOver(const std::vector<StepBucket>& buckets, EQuantity eQuantity)
{
    ValueRange all;
    for (const StepBucket& bucket : buckets) {
        all.add(bucket.range(eQuantity));
    }
    return all;
}
