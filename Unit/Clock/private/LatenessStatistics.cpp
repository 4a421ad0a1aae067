#include "Unit/Clock/LatenessStatistics.h"

#include <algorithm>
#include <bit>
#include <cmath>

void LatenessStatistics::add(std::int64_t nLatenessNs)
{
    ++m_nCount;
    m_nMaxNs = std::max(m_nMaxNs, nLatenessNs);
    m_nTotalNs += nLatenessNs;
    ++m_counts.at(bucketOf(static_cast<std::uint64_t>(std::max<std::int64_t>(nLatenessNs, 0))));
}

double LatenessStatistics::meanNs() const
{
    return m_nCount == 0 ? 0.0 : static_cast<double>(m_nTotalNs) / static_cast<double>(m_nCount);
}

std::int64_t LatenessStatistics::quantileNs(double share) const
{
    const auto nWanted = static_cast<std::uint64_t>(std::ceil(share * static_cast<double>(m_nCount)));
    std::uint64_t nSoFar = 0;
    for (std::size_t nBucket = 0; nBucket < m_counts.size(); ++nBucket) {
        nSoFar += m_counts.at(nBucket);
        if (nSoFar > 0 && nSoFar >= nWanted) {
            return std::min(static_cast<std::int64_t>(lastOf(nBucket)), m_nMaxNs);
        }
    }
    return 0;
}

/** Times below PARTS have a bucket each; every further power of two has PARTS of equal width. */
std::size_t LatenessStatistics::bucketOf(std::uint64_t nTimeNs)
{
    if (nTimeNs < PARTS) {
        return static_cast<std::size_t>(nTimeNs);
    }
    const auto nShift = static_cast<std::size_t>(std::bit_width(nTimeNs)) - std::bit_width(PARTS);
    return nShift * PARTS + static_cast<std::size_t>(nTimeNs >> nShift);
}

/** @return the largest time of a bucket */
std::uint64_t LatenessStatistics::lastOf(std::size_t nBucket)
{
    if (nBucket < 2 * PARTS) {
        return nBucket;
    }
    const std::size_t nShift = nBucket / PARTS - 1;
    return ((std::uint64_t{nBucket % PARTS + PARTS} + 1) << nShift) - 1;
}
