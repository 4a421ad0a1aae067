#include "Unit/Clock/LatenessStatistics.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

TEST(LatenessStatistics, KnowsNothingOfNoTime)
{
    const LatenessStatistics statistics;
    EXPECT_EQ(statistics.count(), 0U);
    EXPECT_EQ(statistics.meanNs(), 0.0);
    EXPECT_EQ(statistics.maxNs(), 0);
    EXPECT_EQ(statistics.quantileNs(0.5), 0);
}

TEST(LatenessStatistics, KeepsCountGreatestAndMean)
{
    LatenessStatistics statistics;
    for (const std::int64_t nLatenessNs : {100, 800, 300}) {
        statistics.add(nLatenessNs);
    }
    EXPECT_EQ(statistics.count(), 3U);
    EXPECT_EQ(statistics.maxNs(), 800);
    EXPECT_EQ(statistics.meanNs(), 400.0);
}

TEST(LatenessStatistics, HasQuantilesThatAreTooLargeByAnEighthAtMost)
{
    LatenessStatistics statistics;
    for (std::int64_t nTimeNs = 1; nTimeNs <= 100'000; ++nTimeNs) {
        statistics.add(nTimeNs);
    }
    for (const double share : {0.0001, 0.01, 0.5, 0.9, 0.99, 0.999, 1.0}) {
        const double exactNs = share * 100'000;
        const auto toldNs = static_cast<double>(statistics.quantileNs(share));
        EXPECT_GE(toldNs, exactNs) << share;
        EXPECT_LE(toldNs, exactNs * 1.125) << share;
    }
}

TEST(LatenessStatistics, TellsSmallTimesExactly)
{
    for (std::int64_t nTimeNs = 0; nTimeNs < 16; ++nTimeNs) {
        LatenessStatistics statistics;
        statistics.add(nTimeNs);
        statistics.add(1'000'000);
        EXPECT_EQ(statistics.quantileNs(0.5), nTimeNs);
    }
}

TEST(LatenessStatistics, TakesTimesOfAnySize)
{
    LatenessStatistics statistics;
    statistics.add(-5);
    statistics.add(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(statistics.quantileNs(0.5), 0);
    EXPECT_EQ(statistics.quantileNs(1.0), std::numeric_limits<std::int64_t>::max());
}
