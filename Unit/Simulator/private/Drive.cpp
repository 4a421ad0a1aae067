#include "Unit/Simulator/private/Drive.h"

#include "Unit/Simulator/private/VirtualTime.h"

Drive::Drive(const DriveConfiguration& configuration)
    : m_profile(configuration.sFile, configuration.interpolation), m_startSeconds(configuration.startSeconds),
      m_nLastNs(toNs(m_profile.lastSecond())), m_nPeriodNs(m_nLastNs - toNs(m_profile.firstSecond())),
      m_bRepeat(configuration.bRepeat && m_nPeriodNs > 0), m_nRoundStartNs(-toNs(configuration.startSeconds))
{}

ProfilePoint Drive::at(std::int64_t nNs)
{
    if (!m_bRepeat) {
        return m_profile.at(m_startSeconds + toSeconds(nNs), m_nRow);
    }
    // In whole nanoseconds, so that every round meets the rows at the same times.
    const std::int64_t nBehindNs = nNs - m_nRoundStartNs - m_nLastNs;
    if (nBehindNs >= 0) {
        m_nRoundStartNs += (nBehindNs / m_nPeriodNs + 1) * m_nPeriodNs;
    }
    return m_profile.at(toSeconds(nNs - m_nRoundStartNs), m_nRow);
}
