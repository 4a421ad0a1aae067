#include "Unit/Clock/DeadlineTimer.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace
{
constexpr std::int64_t NANOSECONDS_PER_SECOND = 1'000'000'000;

std::int64_t monotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * NANOSECONDS_PER_SECOND + now.tv_nsec;
}

void sleepUntil(std::int64_t nDeadlineNs)
{
    timespec deadline{};
    deadline.tv_sec = static_cast<time_t>(nDeadlineNs / NANOSECONDS_PER_SECOND);
    deadline.tv_nsec = static_cast<long>(nDeadlineNs % NANOSECONDS_PER_SECOND);
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

std::uint64_t DeadlineTimer::waitForNext()
{
    const std::uint64_t nSkipped = m_bStarted ? m_schedule.advance(monotonicNs()) : 0;
    m_bStarted = true;
    sleepUntil(m_schedule.deadlineNs());
    m_nLatenessNs = monotonicNs() - m_schedule.deadlineNs();
    m_statistics.add(m_nLatenessNs);
    return nSkipped;
}
