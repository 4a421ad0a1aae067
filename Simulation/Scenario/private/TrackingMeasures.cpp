#include "Simulation/Scenario/TrackingMeasures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace
{
double ratio(double part, std::uint64_t nWhole)
{
    return nWhole == 0 ? 0.0 : part / static_cast<double>(nWhole);
}
} // namespace

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
    m_settledErrors.add(std::abs(nErrorCentiDb));
    m_sum += nErrorCentiDb;
    m_sumOfSquares += static_cast<double>(nErrorCentiDb) * nErrorCentiDb;
}

TrackingSummary TrackingMeasures::summary() const
{
    TrackingSummary summary;
    const std::uint64_t nSteps = m_settledErrors.errors();
    summary.nSettledSteps = nSteps;
    summary.meanCentiDb = ratio(m_sum, nSteps);
    summary.rmsCentiDb = std::sqrt(ratio(m_sumOfSquares, nSteps));
    summary.p99CentiDb = m_settledErrors.percentile(990);
    summary.p999CentiDb = m_settledErrors.percentile(999);
    summary.maxCentiDb = m_settledErrors.maximum();
    const auto nWithin = static_cast<double>(m_settledErrors.countUpTo(SETTLED_CENTI_DB));
    summary.shareWithinTenCentiDb = ratio(nWithin, nSteps);
    summary.nJumps = m_nJumps;
    summary.nJumpsSettled = m_nJumpsSettled;
    summary.meanSettlingSteps = ratio(static_cast<double>(m_nSettlingStepsTotal), m_nJumpsSettled);
    summary.maxSettlingSteps = m_nMaxSettlingSteps;
    return summary;
}
