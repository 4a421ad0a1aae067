/** @file
 * Waits for one deadline after the other.
 */
#pragma once

#include "Unit/Clock/DeadlineSchedule.h"
#include "Unit/Clock/LatenessStatistics.h"

#include <chrono>
#include <cstdint>

/** Waits on absolute deadlines of the monotonic clock, so that a late call delays none of those after it. */
class DeadlineTimer
{
public:
    /** The first deadline is now. */
    explicit DeadlineTimer(std::chrono::nanoseconds interval);

    /**
     * Goes on to the next deadline that has not passed.
     * @return how many deadlines had passed and are skipped
     */
    std::uint64_t next();

    /** Sleeps until the deadline, not at all when it has passed. */
    void wait();

    /** @return number of the deadline, skipped ones counted */
    std::uint64_t index() const { return m_schedule.index(); }

    /** @return monotonic time of the deadline */
    std::int64_t deadlineNs() const { return m_schedule.deadlineNs(); }

    /** @return time of the deadline since the first one */
    std::int64_t elapsedNs() const { return m_schedule.elapsedNs(); }

    /** Lets the deadlines after this one follow at another interval. */
    void setInterval(std::chrono::nanoseconds interval) { m_schedule.setInterval(interval.count()); }

    /** @return how long after its deadline the last wait() returned */
    std::int64_t latenessNs() const { return m_nLatenessNs; }

    const LatenessStatistics& statistics() const { return m_statistics; }

private:
    DeadlineSchedule m_schedule;
    std::int64_t m_nLatenessNs = 0;
    LatenessStatistics m_statistics;
};
