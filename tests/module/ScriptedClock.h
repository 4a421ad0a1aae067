/** @file
 * The process's clock_gettime(), which a test may script.
 */
#pragma once

#include <ctime>

/** While one lives the monotonic clock stands where it was set; every other clock goes on. */
class ScriptedClock
{
public:
    explicit ScriptedClock(timespec now);
    ~ScriptedClock();

    ScriptedClock(const ScriptedClock&) = delete;
    ScriptedClock& operator=(const ScriptedClock&) = delete;

    void set(timespec now);
    void advanceMs(long nMilliseconds);
};
