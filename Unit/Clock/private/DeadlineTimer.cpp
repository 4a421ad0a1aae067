#include "Unit/Clock/DeadlineTimer.h"

#include "Unit/Clock/MonotonicTime.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace
{
void sleepUntil(std::int64_t nDeadlineNs)
{
    const timespec deadline = toTimespec(nDeadlineNs);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
    }
}
} // namespace

void LatenessStatistics::add(std::int64_t nLatenessNs)
{
    ++nCount;
    nMaxNs = std::max(nMaxNs, nLatenessNs);
    nTotalNs += nLatenessNs;
}

DeadlineTimer::DeadlineTimer(std::chrono::nanoseconds interval) : m_schedule(monotonicNs(), interval.count()) {}

std::uint64_t DeadlineTimer::next()
{
    return m_schedule.advance(monotonicNs());
}

void DeadlineTimer::wait()
{
    sleepUntil(m_schedule.deadlineNs());
    m_nLatenessNs = monotonicNs() - m_schedule.deadlineNs();
    m_statistics.add(m_nLatenessNs);
}
