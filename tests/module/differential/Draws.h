/** @file
 * Random values as the controller meets them: mostly everyday ones, often notable ones, sometimes any.
 */
#pragma once

#include <cstdint>
#include <random>

namespace Differential
{
/** The same seed gives the same values. */
class Draws
{
public:
    explicit Draws(std::uint64_t nSeed) : m_random(nSeed) {}

    /** @return 0 up to but not @p nEnd */
    std::int32_t below(std::int32_t nEnd)
    {
        return static_cast<std::int32_t>(m_random() % static_cast<unsigned>(nEnd));
    }
    /** @return one of both bounds and what lies between */
    std::int32_t between(std::int32_t nLeast, std::int32_t nMost) { return nLeast + below(nMost - nLeast + 1); }
    bool oneIn(std::int32_t nTimes) { return below(nTimes) == 0; }

    /** @return any 32 bits; every magnitude is equally common */
    std::int32_t any();
    /** @return a power within what is usual, or one where something changes */
    std::int32_t power();
    /** @return a result of a handler or the platform, on both sides of what counts as failure */
    std::int32_t result();
    /** @return a result that counts as failure */
    std::int32_t failure();
    std::int32_t mode();
    /** @return not 0 */
    std::int32_t interval();
    /** @return one that is known, mostly */
    std::int32_t spacingCode();

private:
    std::mt19937_64 m_random; // NOLINT(cert-msc51-cpp): seeded by whoever asks
};
} // namespace Differential
