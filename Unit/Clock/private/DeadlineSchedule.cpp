#include "Unit/Clock/DeadlineSchedule.h"

#include <algorithm>

DeadlineSchedule::DeadlineSchedule(std::int64_t nStartNs, std::int64_t nIntervalNs)
    : m_nStartNs(nStartNs), m_nIntervalNs(nIntervalNs)
{}

std::int64_t DeadlineSchedule::deadlineNs() const
{
    return m_nStartNs + static_cast<std::int64_t>(m_nIndex) * m_nIntervalNs;
}

std::uint64_t DeadlineSchedule::advance(std::int64_t nNowNs)
{
    const std::uint64_t nNext = m_nIndex + 1;
    const std::int64_t nElapsedNs = std::max<std::int64_t>(nNowNs - m_nStartNs, 0);
    const auto nNotPassed = static_cast<std::uint64_t>((nElapsedNs + m_nIntervalNs - 1) / m_nIntervalNs);
    m_nIndex = std::max(nNext, nNotPassed);
    return m_nIndex - nNext;
}
