#include "tests/module/ScriptedClock.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace
{
bool s_bScripted = false;
timespec s_now{};
} // namespace

ScriptedClock::ScriptedClock(timespec now)
{
    set(now);
    s_bScripted = true;
}

ScriptedClock::~ScriptedClock()
{
    s_bScripted = false;
}

void ScriptedClock::set(timespec now)
{
    s_now = now;
}

void ScriptedClock::advanceMs(long nMilliseconds)
{
    s_now.tv_sec += nMilliseconds / 1000;
    s_now.tv_nsec += nMilliseconds % 1000 * 1000000;
    if (s_now.tv_nsec >= 1000000000) {
        s_now.tv_nsec -= 1000000000;
        ++s_now.tv_sec;
    }
}

// Stands before the C library's in the executable, so that it serves everyone in the process.
extern "C" int clock_gettime(clockid_t nClock, timespec* pTime) noexcept
{
    if (s_bScripted && nClock == CLOCK_MONOTONIC) {
        *pTime = s_now;
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, nClock, pTime));
}
