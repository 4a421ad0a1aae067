#include "Unit/Process/RegulationPace.h"

#include <sys/prctl.h>

#include <algorithm>

namespace
{
// What is kept free of commands before a step: a command that begins in time ends in time when it takes no longer.
constexpr std::int64_t MAX_RESERVE_NS = 2'000'000;
constexpr std::int64_t RESERVED_PART = 3; // of the interval, at most
} // namespace

void DeadlinePace::begin(std::chrono::nanoseconds interval)
{
    (void)prctl(PR_SET_TIMERSLACK, 1UL); // nanosecond; else the kernel may wake the thread 50 microseconds late
    m_interval = interval;
    m_timer.emplace(interval);
}

bool DeadlinePace::wait()
{
    m_timer->wait();
    return true;
}

void DeadlinePace::serve(CommandQueue& commands)
{
    const std::int64_t nNextNs = m_timer->deadlineNs();
    commands.serveUntil(nNextNs - std::min(m_interval.count() / RESERVED_PART, MAX_RESERVE_NS), nNextNs);
}

void DeadlinePace::setInterval(std::chrono::nanoseconds interval)
{
    m_interval = interval;
    m_timer->setInterval(interval);
}
