/** @file
 * Where the regulation gets its time from.
 */
#pragma once

#include "Unit/Clock/DeadlineTimer.h"
#include "Unit/Process/CommandQueue.h"

#include <chrono>
#include <cstdint>
#include <optional>

/** The deadlines of a regulation, and the time between them. For the regulation thread, but where it says otherwise. */
class IRegulationPace
{
public:
    virtual ~IRegulationPace() = default;

    /** Begins with the first deadline; once. */
    virtual void begin(std::chrono::nanoseconds interval) = 0;

    /** Waits for the deadline. @return false when there is none any more: the regulation is over */
    virtual bool wait() = 0;

    /** Goes on to the next deadline. @return how many before it are skipped */
    virtual std::uint64_t next() = 0;

    /** Has the commands of the time until the deadline carried out. */
    virtual void serve(CommandQueue& commands) = 0;

    /** Lets the deadlines after this one follow at another interval. */
    virtual void setInterval(std::chrono::nanoseconds interval) = 0;

    /** @return time of the deadline since the first one; 0 before it */
    virtual std::int64_t elapsedNs() const = 0;

    /** @return how long after its deadline the last wait() returned */
    virtual std::int64_t latenessNs() const = 0;

    /** The regulation thread, or any once that has ended. */
    virtual const LatenessStatistics& statistics() const = 0;
};

/** Deadlines of the monotonic clock: real time. Allocates nothing and takes no lock. */
class DeadlinePace final : public IRegulationPace
{
public:
    void begin(std::chrono::nanoseconds interval) override;
    bool wait() override;
    std::uint64_t next() override { return m_timer->next(); }
    void serve(CommandQueue& commands) override;
    void setInterval(std::chrono::nanoseconds interval) override;
    std::int64_t elapsedNs() const override { return m_timer ? m_timer->elapsedNs() : 0; }
    std::int64_t latenessNs() const override { return m_timer->latenessNs(); }
    const LatenessStatistics& statistics() const override { return m_timer ? m_timer->statistics() : m_noLateness; }

private:
    std::optional<DeadlineTimer> m_timer; // from the first deadline on
    std::chrono::nanoseconds m_interval{0};
    LatenessStatistics m_noLateness;
};
