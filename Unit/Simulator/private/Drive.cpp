#include "Unit/Simulator/private/Drive.h"

#include <cmath>

Drive::Drive(const DriveConfiguration& configuration)
    : m_profile(configuration.sFile, configuration.interpolation), m_startSeconds(configuration.startSeconds),
      m_periodSeconds(configuration.bRepeat ? m_profile.lastSecond() - m_profile.firstSecond() : 0.0)
{}

ProfilePoint Drive::at(double seconds)
{
    double driveSeconds = m_startSeconds + seconds;
    if (m_periodSeconds > 0.0) {
        if (driveSeconds - m_rounds * m_periodSeconds >= m_profile.lastSecond()) {
            m_rounds = std::floor((driveSeconds - m_profile.firstSecond()) / m_periodSeconds);
        }
        driveSeconds -= m_rounds * m_periodSeconds;
    }
    return m_profile.at(driveSeconds, m_nRow);
}
