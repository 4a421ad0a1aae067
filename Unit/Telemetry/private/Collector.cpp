#include "Unit/Telemetry/Collector.h"

#include <condition_variable>
#include <mutex>
#include <utility>

Collector::Collector(const RegulationLoop& loop, SampleQueue& queue, RunFeed& feed,
                     const std::vector<FaultConfiguration>& faults)
    : m_loop(loop), m_queue(queue), m_feed(feed), m_events(faults),
      m_thread([this](const std::stop_token& stop) { collect(stop); })
{}

Collector::~Collector()
{
    stop();
}

void Collector::stop()
{
    m_thread.request_stop();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Collector::collect(const std::stop_token& stop)
{
    std::mutex mutex;
    std::condition_variable_any never;
    while (!stop.stop_requested()) {
        std::unique_lock lock(mutex);
        never.wait_for(lock, stop, INTERVAL, [] { return false; });
        drain();
    }
    drain();
    m_feed.close();
}

void Collector::drain()
{
    m_samples.clear();
    std::vector<RunEvent> events;
    m_queue.consumeAll([&](const StepSample& sample) {
        m_samples.push_back(sample);
        for (RunEvent& event : m_events.look(sample)) {
            events.push_back(std::move(event));
        }
    });
    for (RunEvent& event : m_events.lookAtDropped(m_loop.droppedSamples())) {
        events.push_back(std::move(event));
    }
    addStop(events);
    m_feed.add(m_samples);
    for (RunEvent& event : events) {
        m_feed.add(std::move(event));
    }
}

void Collector::addStop(std::vector<RunEvent>& events)
{
    const auto moment = m_bStopTold ? std::nullopt : m_loop.stopMoment();
    if (moment) {
        m_bStopTold = true;
        RunEvent event;
        event.nTimeUs = moment->nTimeUs;
        event.nSteps = moment->nSteps;
        event.sText = "switching off";
        event.sDetail = STOP_DETAIL;
        events.push_back(std::move(event));
    }
}
