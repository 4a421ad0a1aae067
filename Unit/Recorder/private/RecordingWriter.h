/** @file
 * Adds what a run tells to a recording.
 */
#pragma once

#include "Unit/Recorder/StepSummary.h"
#include "Unit/Telemetry/RunFeed.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <array>
#include <cstdint>
#include <vector>

/** Writes a run's steps, summaries and events. Use it inside a transaction. */
class RecordingWriter
{
public:
    /** The summaries that are not complete yet; to be put back when the transaction fails. */
    using Summaries = std::array<std::vector<SummaryBuilder>, 2>; // of seconds and of minutes, by channel index

    /** @param database must outlive the object. @param nRun id of the run */
    RecordingWriter(SQLite::Database& database, std::int64_t nRun);

    /** Writes samples and events, and how far the summaries are. */
    void write(const FeedBatch& batch);

    void writeEvent(const RunEvent& event);

    /** Writes when the run ended. */
    void writeEnd();

    const Summaries& summaries() const { return m_summaries; }
    void restore(const Summaries& summaries) { m_summaries = summaries; }

    /** @return time of the latest step */
    std::uint64_t latestUs() const { return m_nLatestUs; }

private:
    void writeStep(const StepSample& sample);
    void addToSummaries(const StepSample& sample);
    void writeSummary(std::size_t nLevel, const StepSummary& summary);

    SQLite::Database& m_database;
    std::int64_t m_nRun;
    SQLite::Statement m_step;
    SQLite::Statement m_event;
    std::array<SQLite::Statement, 2> m_summaryStatements;
    Summaries m_summaries;
    std::uint64_t m_nLatestUs = 0;
};
