/** @file
 * How often an error of which size came.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/** Counts absolute errors by hundredths of a decibel. Its memory does not grow with the number of errors. */
class ErrorHistogram
{
public:
    ErrorHistogram();

    /** @param nAbsoluteCentiDb not negative; from 40.95 dB on errors are no longer told apart */
    void add(std::int32_t nAbsoluteCentiDb)
    {
        const auto nError = static_cast<std::size_t>(nAbsoluteCentiDb);
        ++m_countByError[nError < ERROR_COUNTS ? nError : ERROR_COUNTS - 1];
        ++m_nErrors;
        m_nMaximum = nAbsoluteCentiDb > m_nMaximum ? nAbsoluteCentiDb : m_nMaximum;
    }

    std::uint64_t errors() const { return m_nErrors; }

    /** @return the largest error; 0 without any */
    std::int32_t maximum() const { return m_nMaximum; }

    /** @return the smallest error that so many thousandths of all errors do not exceed; 0 without any */
    std::int32_t percentile(std::uint32_t nPerMille) const;

    /** @return number of errors of at most this size, which has to be below 40.95 dB */
    std::uint64_t countUpTo(std::int32_t nAbsoluteCentiDb) const;

private:
    static constexpr std::size_t ERROR_COUNTS = 4096;

    std::vector<std::uint64_t> m_countByError; // the last entry takes all that is larger
    std::uint64_t m_nErrors = 0;
    std::int32_t m_nMaximum = 0;
};
