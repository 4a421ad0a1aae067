#include "Unit/Clock/DeadlineSchedule.h"

#include <algorithm>

DeadlineSchedule::DeadlineSchedule(std::int64_t nStartNs, std::int64_t nIntervalNs)
    : m_nStartNs(nStartNs), m_nIntervalNs(nIntervalNs), m_nDeadlineNs(nStartNs)
{}

std::uint64_t DeadlineSchedule::advance(std::int64_t nNowNs)
{
    const std::int64_t nBehindNs = std::max<std::int64_t>(nNowNs - m_nDeadlineNs, 0);
    const std::int64_t nIntervals = std::max<std::int64_t>((nBehindNs + m_nIntervalNs - 1) / m_nIntervalNs, 1);
    m_nDeadlineNs += nIntervals * m_nIntervalNs;
    m_nIndex += static_cast<std::uint64_t>(nIntervals);
    return static_cast<std::uint64_t>(nIntervals) - 1;
}
