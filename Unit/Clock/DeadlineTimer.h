/** @file
 * Waits for one deadline after the other.
 */
#pragma once

#include "Unit/Clock/DeadlineSchedule.h"

#include <chrono>
#include <cstdint>

/** How late a thread woke after its deadlines. */
struct LatenessStatistics
{
    std::uint64_t nCount = 0;
    std::int64_t nMaxNs = 0;
    std::int64_t nTotalNs = 0;

    void add(std::int64_t nLatenessNs);
};

/** Waits on absolute deadlines of the monotonic clock, so that a late call delays none of those after it. */
class DeadlineTimer
{
public:
    /** The first deadline is now. */
    explicit DeadlineTimer(std::chrono::nanoseconds interval);

    /**
     * Sleeps until the next deadline that has not passed.
     * @return how many deadlines had passed since the last call and were skipped
     */
    std::uint64_t waitForNext();

    /** @return number of the deadline waited for last, skipped ones counted */
    std::uint64_t index() const { return m_schedule.index(); }

    /** @return how long after its deadline the last call returned */
    std::int64_t latenessNs() const { return m_nLatenessNs; }

    const LatenessStatistics& statistics() const { return m_statistics; }

private:
    DeadlineSchedule m_schedule;
    bool m_bStarted = false;
    std::int64_t m_nLatenessNs = 0;
    LatenessStatistics m_statistics;
};
