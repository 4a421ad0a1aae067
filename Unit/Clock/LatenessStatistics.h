/** @file
 * How late a thread woke, time after time.
 */
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/** Mean, quantiles and greatest of any number of times. Its memory does not grow; adding allocates nothing. */
class LatenessStatistics
{
public:
    /** @param nLatenessNs below 0 counts as 0 among the quantiles */
    void add(std::int64_t nLatenessNs);

    std::uint64_t count() const { return m_nCount; }
    std::int64_t maxNs() const { return m_nMaxNs; }

    /** @return 0 of none */
    double meanNs() const;

    /**
     * @param share 0 to 1, such as 0.99
     * @return a time that this share of the times does not exceed, at most an eighth too large; 0 of none
     */
    std::int64_t quantileNs(double share) const;

private:
    static constexpr std::size_t PARTS = 8; // of each power of two
    static constexpr std::size_t BUCKETS = 64 * PARTS;

    static std::size_t bucketOf(std::uint64_t nTimeNs);
    static std::uint64_t lastOf(std::size_t nBucket);

    std::uint64_t m_nCount = 0;
    std::int64_t m_nMaxNs = 0;
    std::int64_t m_nTotalNs = 0;
    std::array<std::uint64_t, BUCKETS> m_counts{};
};
