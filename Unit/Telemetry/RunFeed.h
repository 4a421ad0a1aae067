/** @file
 * The latest samples and events of a run, for any number of readers.
 */
#pragma once

#include "Unit/Process/StepSample.h"
#include "Unit/Telemetry/RunEvent.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <span>
#include <vector>

/** How far a reader is: the numbers of the sample and the event that it wants next. */
struct FeedPosition
{
    std::uint64_t nSample = 0;
    std::uint64_t nEvent = 0;
};

/** What a reader gets at a time. */
struct FeedBatch
{
    std::vector<StepSample> samples; /**< oldest first; the one before the reader's new position is the last */
    std::vector<RunEvent> events;    /**< oldest first */
    std::uint64_t nLostSamples = 0;  /**< that were gone before the reader came for them */
    std::uint64_t nLostEvents = 0;
};

/**
 * A bounded store that forgets the oldest: who writes never waits for who reads, and a reader that is too late is told
 * what it has lost. Samples of all channels are numbered in one row from 0. Any thread.
 */
class RunFeed
{
public:
    /** What the texts of its events come to at most, since clients decide on their length. */
    static constexpr std::size_t MAX_EVENT_BYTES = std::size_t{8} * 1024 * 1024;

    /** @param nMaxSamples, nMaxEvents how many it holds; at least 1 of each */
    RunFeed(std::size_t nMaxSamples, std::size_t nMaxEvents);

    RunFeed(const RunFeed&) = delete;
    RunFeed& operator=(const RunFeed&) = delete;
    ~RunFeed() = default;

    void add(std::span<const StepSample> samples);

    /** Adds an event and gives it its number. */
    void add(RunEvent event);

    /** Adds an event that has its number already. */
    void addNumbered(RunEvent event);

    /** Ends every wait, now and later: nothing will be added any more. */
    void close();
    bool isClosed() const;

    FeedPosition oldest() const;
    FeedPosition newest() const; /**< the position of what is yet to come */

    /** @return the position of the first sample that is not earlier than a time; what is yet to come when all are */
    FeedPosition atTime(std::uint64_t nTimeUs) const;

    /** @return samples that readers came too late for, all of them together */
    std::uint64_t lostSamples() const;

    /**
     * Reads what comes after a position, and moves the position on behind it.
     * @param[in,out] position beyond the newest counts as the newest
     * @param[out] batch replaced; its memory is used again
     * @param nMostSamples leave more samples than these to the next call
     */
    void read(FeedPosition& position, FeedBatch& batch, std::size_t nMostSamples) const;

    /** Waits for something after a position. @return false when there is nothing: the time is over or the feed closed
     */
    bool wait(const FeedPosition& position, std::chrono::milliseconds longest) const;

private:
    void addLocked(RunEvent event);
    bool hasBeyond(const FeedPosition& position) const;
    std::uint64_t firstSample() const;
    std::uint64_t firstEvent() const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<StepSample> m_samples; // a ring: number n at n modulo its size
    std::uint64_t m_nNextSample = 0;
    mutable std::uint64_t m_nLostSamples = 0;
    std::size_t m_nMaxEvents;
    std::deque<RunEvent> m_events;
    std::size_t m_nEventBytes = 0;
    std::uint64_t m_nNextEvent = 0;
    bool m_bClosed = false;
};
