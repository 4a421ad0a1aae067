/** @file
 * Deadlines at a fixed interval.
 */
#pragma once

#include <cstdint>

/** Deadlines 0, 1, 2, ... at a fixed interval from a start. All times are nanoseconds of one monotonic clock. */
class DeadlineSchedule
{
public:
    /** @param nIntervalNs greater than 0 */
    DeadlineSchedule(std::int64_t nStartNs, std::int64_t nIntervalNs);

    /** @return number of the current deadline, which is 0 until advance() is called */
    std::uint64_t index() const { return m_nIndex; }

    /** @return time of the current deadline */
    std::int64_t deadlineNs() const;

    /**
     * Goes on to the next deadline that has not passed; one that is due at this very time has not.
     * @return how many deadlines had passed and are left out
     */
    std::uint64_t advance(std::int64_t nNowNs);

private:
    std::int64_t m_nStartNs;
    std::int64_t m_nIntervalNs;
    std::uint64_t m_nIndex = 0;
};
