#include "Unit/Clock/DeadlineSchedule.h"

DeadlineSchedule::DeadlineSchedule(std::int64_t nStartNs, std::int64_t nIntervalNs)
    : m_nStartNs(nStartNs), m_nIntervalNs(nIntervalNs), m_nDeadlineNs(nStartNs)
{}

std::uint64_t DeadlineSchedule::advance(std::int64_t nNowNs)
{
    if (nNowNs - m_nDeadlineNs <= m_nIntervalNs) { // as nearly always, and without a division
        m_nDeadlineNs += m_nIntervalNs;
        ++m_nIndex;
        return 0;
    }
    const std::int64_t nIntervals = (nNowNs - m_nDeadlineNs + m_nIntervalNs - 1) / m_nIntervalNs;
    m_nDeadlineNs += nIntervals * m_nIntervalNs;
    m_nIndex += static_cast<std::uint64_t>(nIntervals);
    return static_cast<std::uint64_t>(nIntervals) - 1;
}
