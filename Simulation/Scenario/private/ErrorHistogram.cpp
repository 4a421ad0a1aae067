#include "Simulation/Scenario/ErrorHistogram.h"

ErrorHistogram::ErrorHistogram() : m_countByError(ERROR_COUNTS, 0) {}

std::int32_t ErrorHistogram::percentile(std::uint32_t nPerMille) const
{
    std::uint64_t nUpTo = 0;
    for (std::size_t nError = 0; nError + 1 < m_countByError.size(); ++nError) {
        nUpTo += m_countByError[nError];
        if (nUpTo * 1000 >= m_nErrors * nPerMille) {
            return static_cast<std::int32_t>(nError);
        }
    }
    return m_nMaximum;
}

std::uint64_t ErrorHistogram::countUpTo(std::int32_t nAbsoluteCentiDb) const
{
    std::uint64_t nUpTo = 0;
    for (std::size_t nError = 0; nError <= static_cast<std::size_t>(nAbsoluteCentiDb); ++nError) {
        nUpTo += m_countByError.at(nError);
    }
    return nUpTo;
}
