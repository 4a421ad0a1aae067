/** @file
 * How often something took how long.
 */
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

/** What a histogram held at some moment. */
struct TimeCounts
{
    /** What a time may come to at most to be counted in a bucket, nanoseconds. */
    static constexpr std::array<std::int64_t, 15> BOUNDS_NS{1'000,     2'000,     5'000,      10'000,     20'000,
                                                            50'000,    100'000,   200'000,    500'000,    1'000'000,
                                                            2'000'000, 5'000'000, 10'000'000, 20'000'000, 50'000'000};

    std::array<std::uint64_t, BOUNDS_NS.size() + 1> counts{}; /**< by bucket; what is beyond every bound is the last */
    std::int64_t nTotalNs = 0;
};

/** Counts times by their size. One thread adds, any others read meanwhile; nobody waits, nothing is allocated. */
class TimeHistogram
{
public:
    /** @param nTimeNs below 0 counts as 0 */
    void add(std::int64_t nTimeNs)
    {
        nTimeNs = nTimeNs < 0 ? 0 : nTimeNs;
        std::size_t nBucket = 0;
        while (nBucket < TimeCounts::BOUNDS_NS.size() && nTimeNs > TimeCounts::BOUNDS_NS.at(nBucket)) {
            ++nBucket;
        }
        increase<std::uint64_t>(m_counts.at(nBucket), 1);
        increase(m_nTotalNs, nTimeNs);
    }

    /** @return every count as it is; the total may lack the latest time, or have it before the counts do */
    TimeCounts read() const
    {
        TimeCounts result;
        for (std::size_t nBucket = 0; nBucket < m_counts.size(); ++nBucket) {
            result.counts.at(nBucket) = m_counts.at(nBucket).load(std::memory_order_relaxed);
        }
        result.nTotalNs = m_nTotalNs.load(std::memory_order_relaxed);
        return result;
    }

private:
    // Only one thread adds, so that no read-modify-write is needed.
    template <class T> static void increase(std::atomic<T>& value, T by)
    {
        value.store(value.load(std::memory_order_relaxed) + by, std::memory_order_relaxed);
    }

    std::array<std::atomic<std::uint64_t>, TimeCounts::BOUNDS_NS.size() + 1> m_counts{};
    std::atomic<std::int64_t> m_nTotalNs{0};
};
