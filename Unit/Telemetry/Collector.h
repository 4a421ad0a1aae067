/** @file
 * Takes the samples out of the regulation thread's queue.
 */
#pragma once

#include "Unit/Process/RegulationLoop.h"
#include "Unit/Telemetry/RunFeed.h"
#include "Unit/Telemetry/StepEvents.h"

#include <chrono>
#include <stop_token>
#include <thread>
#include <vector>

/**
 * Empties the queue about thirty times a second into a feed, with the events that the samples tell and the
 * begin of the stop, in a thread.
 */
class Collector
{
public:
    static constexpr std::chrono::milliseconds INTERVAL{33};

    /**
     * Starts.
     * @param loop, queue, feed must outlive the object; nobody else reads the queue
     * @param faults what the unit file switches while the unit runs
     */
    Collector(const RegulationLoop& loop, SampleQueue& queue, RunFeed& feed,
              const std::vector<FaultConfiguration>& faults = {});

    /** Stops as stop() does. */
    ~Collector();

    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    /** Takes what is left out of the queue, closes the feed and ends the thread. Harmless when stopped already. */
    void stop();

private:
    void collect(const std::stop_token& stop);
    void drain();
    void addStop(std::vector<RunEvent>& events);

    const RegulationLoop& m_loop;
    SampleQueue& m_queue;
    RunFeed& m_feed;
    StepEvents m_events;
    std::vector<StepSample> m_samples;
    bool m_bStopTold = false;
    std::jthread m_thread; // last, since it uses the others
};
