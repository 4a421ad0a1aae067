#include "Simulation/Scenario/TrackingMeasures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace
{
/** Absolute errors of up to 40.94 dB are counted one by one. */
constexpr std::size_t ERROR_COUNTS = 4096;

double ratio(double part, std::uint64_t nWhole)
{
    return nWhole == 0 ? 0.0 : part / static_cast<double>(nWhole);
}
} // namespace

TrackingMeasures::TrackingMeasures() : m_countByAbsoluteError(ERROR_COUNTS, 0) {}

void TrackingMeasures::addStep(std::int32_t nPtargetCentiDb, std::int32_t nPmeasuredCentiDb)
{
    const std::int64_t nMove = std::int64_t{nPtargetCentiDb} - m_nLastPtarget;
    if (!m_bHasTarget) {
        m_bHasTarget = true;
        m_nStepsSinceJump = 0;
    }
    else if (std::abs(nMove) > JUMP_CENTI_DB) {
        ++m_nJumps;
        m_bSettling = true;
        m_nStepsSinceJump = 0;
    }
    else if (m_nStepsSinceJump < std::numeric_limits<std::uint32_t>::max()) {
        ++m_nStepsSinceJump;
    }
    m_nLastPtarget = nPtargetCentiDb;

    constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();
    const auto nError =
        static_cast<std::int32_t>(std::clamp(std::int64_t{nPmeasuredCentiDb} - nPtargetCentiDb, -highest, highest));
    if (m_bSettling && std::abs(nError) <= SETTLED_CENTI_DB) {
        m_bSettling = false;
        ++m_nJumpsSettled;
        m_nSettlingStepsTotal += m_nStepsSinceJump;
        m_nMaxSettlingSteps = std::max(m_nMaxSettlingSteps, m_nStepsSinceJump);
    }
    if (m_nStepsSinceJump >= SETTLING_STEPS) {
        addSettledError(nError);
    }
}

void TrackingMeasures::interrupt()
{
    m_bHasTarget = false;
    m_bSettling = false;
}

void TrackingMeasures::addSettledError(std::int32_t nErrorCentiDb)
{
    const std::int32_t nAbsolute = std::abs(nErrorCentiDb);
    ++m_countByAbsoluteError[std::min(static_cast<std::size_t>(nAbsolute), ERROR_COUNTS - 1)];
    ++m_nSettledSteps;
    m_sum += nErrorCentiDb;
    m_sumOfSquares += static_cast<double>(nErrorCentiDb) * nErrorCentiDb;
    m_nMaxCentiDb = std::max(m_nMaxCentiDb, nAbsolute);
}

std::int32_t TrackingMeasures::percentile(std::uint32_t nPerMille) const
{
    std::uint64_t nUpTo = 0;
    for (std::size_t nAbsolute = 0; nAbsolute + 1 < m_countByAbsoluteError.size(); ++nAbsolute) {
        nUpTo += m_countByAbsoluteError[nAbsolute];
        if (nUpTo * 1000 >= m_nSettledSteps * nPerMille) {
            return static_cast<std::int32_t>(nAbsolute);
        }
    }
    return m_nMaxCentiDb;
}

TrackingSummary TrackingMeasures::summary() const
{
    TrackingSummary summary;
    summary.nSettledSteps = m_nSettledSteps;
    summary.meanCentiDb = ratio(m_sum, m_nSettledSteps);
    summary.rmsCentiDb = std::sqrt(ratio(m_sumOfSquares, m_nSettledSteps));
    summary.p99CentiDb = percentile(990);
    summary.p999CentiDb = percentile(999);
    summary.maxCentiDb = m_nMaxCentiDb;
    std::uint64_t nWithin = 0;
    for (std::size_t nAbsolute = 0; nAbsolute <= static_cast<std::size_t>(SETTLED_CENTI_DB); ++nAbsolute) {
        nWithin += m_countByAbsoluteError[nAbsolute];
    }
    summary.shareWithinTenCentiDb = ratio(static_cast<double>(nWithin), m_nSettledSteps);
    summary.nJumps = m_nJumps;
    summary.nJumpsSettled = m_nJumpsSettled;
    summary.meanSettlingSteps = ratio(static_cast<double>(m_nSettlingStepsTotal), m_nJumpsSettled);
    summary.maxSettlingSteps = m_nMaxSettlingSteps;
    return summary;
}
