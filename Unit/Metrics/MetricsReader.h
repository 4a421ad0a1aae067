/** @file
 * Takes the figures of a running unit together.
 */
#pragma once

#include "Unit/Metrics/UnitMetrics.h"
#include "Unit/Process/RegulationLoop.h"
#include "Unit/Telemetry/RunFeed.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

class TransientLogFill;

/** Any thread but the regulation thread, which it asks for what no other thread may look at; one caller at a time. */
class MetricsReader
{
public:
    /**
     * @param loop, feed, server must outlive the object
     * @param nStartedUnixUs when the first step was due
     */
    MetricsReader(RegulationLoop& loop, const RunFeed& feed, const TestServer& server, std::int64_t nStartedUnixUs);
    ~MetricsReader();

    MetricsReader(const MetricsReader&) = delete;
    MetricsReader& operator=(const MetricsReader&) = delete;

    UnitMetrics read();

private:
    void readSteps(UnitMetrics& metrics);
    void readInside(UnitMetrics& metrics);

    RegulationLoop& m_loop;
    const RunFeed& m_feed;
    const TestServer& m_server;
    double m_startSeconds;
    std::mutex m_mutex; // guards what follows
    FeedPosition m_position;
    FeedBatch m_batch;
    std::vector<std::optional<StepSample>> m_lastSteps; // by channel
    std::vector<TransientLogFill> m_fills;              // by channel
    std::uint64_t m_nOverruns = 0;                      // as last seen
    CommandStatistics m_commands;
};
