/** @file
 * Deadlines at a fixed interval.
 */
#pragma once

#include <cstdint>

/** Deadlines 0, 1, 2, ... at an interval from a start. All times are nanoseconds of one monotonic clock. */
class DeadlineSchedule
{
public:
    /** @param nIntervalNs greater than 0 */
    DeadlineSchedule(std::int64_t nStartNs, std::int64_t nIntervalNs);

    /** @return number of the current deadline, which is 0 until advance() is called */
    std::uint64_t index() const { return m_nIndex; }

    /** @return time of the current deadline */
    std::int64_t deadlineNs() const { return m_nDeadlineNs; }

    /** @return the current deadline's time since the first one */
    std::int64_t elapsedNs() const { return m_nDeadlineNs - m_nStartNs; }

    std::int64_t intervalNs() const { return m_nIntervalNs; }

    /** Lets the deadlines after the current one follow at another interval, greater than 0. */
    void setInterval(std::int64_t nIntervalNs) { m_nIntervalNs = nIntervalNs; }

    /**
     * Goes on to the next deadline that has not passed; one that is due at this very time has not.
     * @return how many deadlines had passed and are left out
     */
    std::uint64_t advance(std::int64_t nNowNs);

private:
    std::int64_t m_nStartNs;
    std::int64_t m_nIntervalNs;
    std::int64_t m_nDeadlineNs;
    std::uint64_t m_nIndex = 0;
};
