#include "Unit/Clock/DeadlineTimer.h"

#include "Unit/Clock/MonotonicTime.h"

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

DeadlineTimer::DeadlineTimer(std::chrono::nanoseconds interval) : m_schedule(monotonicNs(), interval.count()) {}

std::uint64_t DeadlineTimer::next()
{
    return m_schedule.advance(monotonicNs());
}

void DeadlineTimer::wait()
{
    if (monotonicNs() < m_schedule.deadlineNs()) { // not so when the thread waited for commands until then
        sleepUntil(m_schedule.deadlineNs());
    }
    m_nLatenessNs = monotonicNs() - m_schedule.deadlineNs();
    m_statistics.add(m_nLatenessNs);
}
