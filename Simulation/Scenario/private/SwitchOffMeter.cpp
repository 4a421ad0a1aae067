#include "Simulation/Scenario/private/SwitchOffMeter.h"

#include "Platform/Conversions.h"

#include <algorithm>
#include <cmath>

void SwitchOffMeter::add(const MeasuredStep& step)
{
    if (step.eStateBefore == eOPC_TX_OFF_INITIATED && !m_bUnderWay) {
        m_bUnderWay = true;
        m_nBeganUs = step.nTimeUs;
    }
    if (step.eState != eOPC_TX_OFF) {
        return;
    }
    if (m_bUnderWay) {
        m_bUnderWay = false;
        ++m_nSwitchOffs;
        m_nLongestUs = std::max(m_nLongestUs, step.nTimeUs - m_nBeganUs);
    }
    m_nRadiatingOff += std::isfinite(step.outputPowerDbm) ? 1 : 0;
}

void SwitchOffMeter::fill(RunMeasures& measures, double stepSeconds) const
{
    measures.switchOffs = static_cast<double>(m_nSwitchOffs);
    if (m_nLongestUs >= 0) {
        measures.switchOffMs = static_cast<double>(m_nLongestUs) / US_PER_MS;
    }
    measures.radiatingOffS = static_cast<double>(m_nRadiatingOff) * stepSeconds;
}
