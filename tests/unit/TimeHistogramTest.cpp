#include "Unit/Clock/TimeHistogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <thread>

namespace
{
struct Time
{
    std::int64_t nNs;
    std::size_t nBucket;
};

std::uint64_t sumOf(const TimeCounts& times)
{
    return std::accumulate(times.counts.begin(), times.counts.end(), std::uint64_t{0});
}
} // namespace

TEST(TimeHistogram, CountsATimeInTheFirstBucketThatItFits)
{
    for (const Time& time : {Time{-5, 0}, Time{0, 0}, Time{1'000, 0}, Time{1'001, 1}, Time{2'000, 1}, Time{999'999, 9},
                             Time{1'000'000, 9}, Time{50'000'000, 14}, Time{50'000'001, 15}})
    {
        TimeHistogram histogram;
        histogram.add(time.nNs);
        const TimeCounts times = histogram.read();
        EXPECT_EQ(times.counts.at(time.nBucket), 1U) << time.nNs;
        EXPECT_EQ(sumOf(times), 1U) << time.nNs;
        EXPECT_EQ(times.nTotalNs, std::max<std::int64_t>(time.nNs, 0));
    }
}

TEST(TimeHistogram, HasBoundsThatAscend)
{
    EXPECT_TRUE(std::is_sorted(TimeCounts::BOUNDS_NS.begin(), TimeCounts::BOUNDS_NS.end()));
}

TEST(TimeHistogram, IsReadWhileAnotherThreadAdds)
{
    constexpr std::uint64_t TIMES = 100'000;
    TimeHistogram histogram;
    std::jthread writer([&histogram] {
        for (std::uint64_t n = 0; n < TIMES; ++n) {
            histogram.add(static_cast<std::int64_t>(n % 3'000));
        }
    });
    std::uint64_t nBefore = 0;
    while (nBefore < TIMES) {
        const std::uint64_t nNow = sumOf(histogram.read());
        ASSERT_GE(nNow, nBefore);
        nBefore = nNow;
    }
    EXPECT_EQ(nBefore, TIMES);
}
