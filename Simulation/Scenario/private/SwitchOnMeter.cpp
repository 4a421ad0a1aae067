#include "Simulation/Scenario/private/SwitchOnMeter.h"

#include "Platform/Conversions.h"
#include "Simulation/Scenario/private/MeterTolerance.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double WIDE_BAND_DB = 1.0;

bool isOff(EOPCState eState)
{
    return eState <= eOPC_TX_OFF; // also on the way there
}

double milliseconds(std::int64_t nUs)
{
    return nUs < 0 ? NO_MEASURE : static_cast<double>(nUs) / US_PER_MS;
}
} // namespace

SwitchOnMeter::SwitchOnMeter(double settlingBandDb) : m_wide{WIDE_BAND_DB}, m_narrow{settlingBandDb} {}

void SwitchOnMeter::BandTime::add(double errorDb, std::int64_t nSinceUs)
{
    if (bOpen && std::abs(errorDb) <= bandDb + METER_ROUNDING_DB) {
        bOpen = false;
        ++nTimes;
        nLongestUs = std::max(nLongestUs, nSinceUs);
    }
}

void SwitchOnMeter::begin(std::int64_t nTimeUs)
{
    ++m_nSwitchOns;
    m_bUnderWay = true;
    m_nBeganUs = nTimeUs;
    m_nRampSteps = 0;
    m_wide.bOpen = true;
    m_narrow.bOpen = true;
}

void SwitchOnMeter::add(const MeasuredStep& step, double errorDb)
{
    const bool bStill = m_eLastBefore == eOPC_TX_ON_INITIATED && m_eLast == eOPC_TX_ON_INITIATED;
    if (step.eStateBefore == eOPC_TX_ON_INITIATED && !bStill) {
        begin(step.nTimeUs);
    }
    m_eLastBefore = step.eStateBefore;
    m_eLast = step.eState;
    if (!m_bUnderWay) {
        return;
    }
    if (isOff(step.eStateBefore) || isOff(step.eState)) {
        m_bUnderWay = false;
        return;
    }
    if (step.eStateBefore == eOPC_TX_ON_RAMPING) {
        ++m_nRampSteps;
        m_nMostRampSteps = std::max(m_nMostRampSteps, m_nRampSteps);
    }
    m_wide.add(errorDb, step.nTimeUs - m_nBeganUs);
    m_narrow.add(errorDb, step.nTimeUs - m_nBeganUs);
    m_bUnderWay = m_wide.bOpen || m_narrow.bOpen || step.eState != eOPC_TX_ON;
}

void SwitchOnMeter::fill(RunMeasures& measures) const
{
    measures.switchOns = static_cast<double>(m_nSwitchOns);
    measures.switchOnsInBand = static_cast<double>(m_narrow.nTimes);
    measures.switchOnTo1DbMs = milliseconds(m_wide.nLongestUs);
    measures.switchOnTo01DbMs = milliseconds(m_narrow.nLongestUs);
    measures.rampSteps = m_nMostRampSteps == 0 ? NO_MEASURE : static_cast<double>(m_nMostRampSteps);
}
