#include "Simulation/Scenario/private/JumpMeter.h"

#include "Platform/Conversions.h"
#include "Simulation/Scenario/TrackingMeasures.h"
#include "Simulation/Scenario/private/MeterTolerance.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace
{
constexpr std::uint32_t SETTLED_STEPS = 10; // in a row within the band
/** Moves that follow each other by at most so many steps in one direction are one jump. */
constexpr std::uint32_t CHAIN_STEPS = 2;
} // namespace

JumpMeter::JumpMeter(double settlingBandDb) : m_bandDb(settlingBandDb + METER_ROUNDING_DB) {}

void JumpMeter::onRampEnd(double errorDb)
{
    onLeft();
    watchOvershoot(1.0);
    m_watchedOvershootDb = std::max(0.0, errorDb);
}

void JumpMeter::add(std::int64_t nTimeUs, std::int32_t nReferenceCentiDbm, double errorDb)
{
    const std::int64_t nMove = std::int64_t{nReferenceCentiDbm} - m_nReference;
    m_nReference = nReferenceCentiDbm;
    if (!m_bHasReference) {
        m_bHasReference = true;
        m_nSince = 0;
        if (!m_bWatching) {
            watchOvershoot(1.0);
        }
    }
    else if (std::abs(nMove) > TrackingMeasures::JUMP_CENTI_DB) {
        onMove(nTimeUs, nMove);
    }
    else if (m_nSince < STEADY_AFTER_STEPS) {
        ++m_nSince;
    }
    addInBand(nTimeUs, std::abs(errorDb) <= m_bandDb);
    if (m_bWatching) {
        if (isSteady()) {
            endOvershoot();
        }
        else {
            m_watchedOvershootDb = std::max(m_watchedOvershootDb, m_sign * errorDb);
        }
    }
}

void JumpMeter::onMove(std::int64_t nTimeUs, std::int64_t nMove)
{
    const double sign = nMove > 0 ? 1.0 : -1.0;
    const bool bGoesOn = m_bJumped && m_sign == sign && m_nSince < CHAIN_STEPS;
    if (!bGoesOn) {
        endOvershoot();
        ++m_nJumps;
    }
    watchOvershoot(sign); // what was beyond a value that was only passed through is none
    m_bJumped = true;
    m_bSettling = true;
    m_nJumpUs = nTimeUs;
    m_nInBand = 0;
    m_nSince = 0;
}

void JumpMeter::watchOvershoot(double sign)
{
    m_bWatching = true;
    m_sign = sign;
    m_watchedOvershootDb = 0.0;
}

void JumpMeter::endOvershoot()
{
    if (m_bWatching) {
        m_overshootDb = std::max(m_overshootDb, m_watchedOvershootDb);
    }
    m_bWatching = false;
}

void JumpMeter::addInBand(std::int64_t nTimeUs, bool bInBand)
{
    if (!m_bSettling) {
        return;
    }
    if (!bInBand) {
        m_nInBand = 0;
        return;
    }
    if (m_nInBand == 0) {
        m_nInBandUs = nTimeUs;
    }
    if (++m_nInBand == SETTLED_STEPS) {
        const std::int64_t nSettlingUs = m_nInBandUs - m_nJumpUs;
        m_bSettling = false;
        ++m_nJumpsSettled;
        m_nSettlingTotalUs += nSettlingUs;
        m_nSettlingMaxUs = std::max(m_nSettlingMaxUs, nSettlingUs);
    }
}

void JumpMeter::onLeft()
{
    endOvershoot();
    m_bHasReference = false;
    m_bJumped = false;
    m_bSettling = false;
    m_nSince = 0;
}

void JumpMeter::fill(RunMeasures& measures) const
{
    measures.jumps = static_cast<double>(m_nJumps);
    measures.jumpsSettled = static_cast<double>(m_nJumpsSettled);
    if (m_nJumpsSettled > 0) {
        const double totalMs = static_cast<double>(m_nSettlingTotalUs) / US_PER_MS;
        measures.settlingMeanMs = totalMs / static_cast<double>(m_nJumpsSettled);
        measures.settlingMaxMs = static_cast<double>(m_nSettlingMaxUs) / US_PER_MS;
    }
    const double overshootDb = m_bWatching ? std::max(m_overshootDb, m_watchedOvershootDb) : m_overshootDb;
    measures.overshootDb = overshootDb < 0.0 ? NO_MEASURE : overshootDb;
}
