#include "Unit/Recorder/private/RecordingWriter.h"

#include "Unit/Recorder/private/RecordingSchema.h"

#include <algorithm>

namespace
{
constexpr std::size_t EVENT_COLUMNS = 8;
constexpr std::array<std::uint64_t, 2> SUMMARY_US = {1'000'000, 60'000'000};

std::int64_t signedOf(std::uint64_t nNumber)
{
    return static_cast<std::int64_t>(nNumber);
}

void execute(SQLite::Statement& statement)
{
    statement.exec();
    statement.reset();
}
} // namespace

RecordingWriter::RecordingWriter(SQLite::Database& database, std::int64_t nRun)
    : m_database(database), m_nRun(nRun), m_step(database, insertStatement("step", KEY_COLUMNS + stepColumns().size())),
      m_event(database, insertStatement("event", EVENT_COLUMNS)),
      m_summaryStatements{
          SQLite::Statement(database, insertStatement("second", KEY_COLUMNS + summaryColumnNames().size())),
          SQLite::Statement(database, insertStatement("minute", KEY_COLUMNS + summaryColumnNames().size()))}
{}

void RecordingWriter::write(const FeedBatch& batch)
{
    for (const StepSample& sample : batch.samples) {
        writeStep(sample);
        addToSummaries(sample);
        m_nLatestUs = std::max(m_nLatestUs, sample.nTimeUs);
    }
    for (std::size_t nLevel = 0; nLevel < m_summaries.size(); ++nLevel) {
        for (const SummaryBuilder& builder : m_summaries.at(nLevel)) {
            if (!builder.isEmpty()) {
                writeSummary(nLevel, builder.summary());
            }
        }
    }
    for (const RunEvent& event : batch.events) {
        writeEvent(event);
    }
}

void RecordingWriter::writeStep(const StepSample& sample)
{
    (void)m_step.tryReset(); // it may have failed the last time
    m_step.bind(1, m_nRun);
    m_step.bind(2, signedOf(sample.nTimeUs));
    m_step.bind(3, static_cast<std::int64_t>(sample.nChannelNumber));
    int nParameter = KEY_COLUMNS;
    for (const StepColumn& column : stepColumns()) {
        column.bind(m_step, ++nParameter, sample);
    }
    execute(m_step);
}

void RecordingWriter::addToSummaries(const StepSample& sample)
{
    for (std::size_t nLevel = 0; nLevel < m_summaries.size(); ++nLevel) {
        std::vector<SummaryBuilder>& channels = m_summaries.at(nLevel);
        if (sample.nChannelIndex >= channels.size()) {
            channels.resize(sample.nChannelIndex + std::size_t{1});
        }
        SummaryBuilder& builder = channels[sample.nChannelIndex];
        const std::uint64_t nBeginUs = sample.nTimeUs - sample.nTimeUs % SUMMARY_US.at(nLevel);
        if (builder.beginUs() != nBeginUs) {
            if (!builder.isEmpty()) {
                writeSummary(nLevel, builder.summary());
            }
            builder = SummaryBuilder(nBeginUs);
        }
        builder.add(sample);
    }
}

void RecordingWriter::writeSummary(std::size_t nLevel, const StepSummary& summary)
{
    SQLite::Statement& statement = m_summaryStatements.at(nLevel);
    (void)statement.tryReset();
    int nParameter = 0;
    for (const std::int64_t nValue :
         {m_nRun, signedOf(summary.nTimeUs), static_cast<std::int64_t>(summary.nChannelNumber),
          signedOf(summary.nSteps), signedOf(summary.nFailedSteps), static_cast<std::int64_t>(summary.nState)})
    {
        statement.bind(++nParameter, nValue);
    }
    for (const auto& quantity : summary.quantities) {
        if (!quantity) {
            for (int nPart = 0; nPart < 3; ++nPart) {
                statement.bind(++nParameter); // NULL
            }
            continue;
        }
        for (const std::int64_t nValue : {quantity->nMin, quantity->nMean, quantity->nMax}) {
            statement.bind(++nParameter, nValue);
        }
    }
    execute(statement);
}

void RecordingWriter::writeEvent(const RunEvent& event)
{
    (void)m_event.tryReset();
    m_event.bind(1, m_nRun);
    m_event.bind(2, signedOf(event.nTimeUs));
    m_event.bind(3, signedOf(event.nId));
    m_event.bind(4, signedOf(event.nSteps));
    if (event.nChannelNumber) {
        m_event.bind(5, static_cast<std::int64_t>(*event.nChannelNumber));
    }
    else {
        m_event.bind(5);
    }
    m_event.bind(6, runEventName(event.eEvent));
    m_event.bind(7, event.sText);
    m_event.bind(8, event.sDetail);
    execute(m_event);
}

void RecordingWriter::writeEnd()
{
    SQLite::Statement update(m_database, "UPDATE run SET ended_us = ? WHERE id = ?");
    update.bind(1, signedOf(m_nLatestUs));
    update.bind(2, m_nRun);
    update.exec();
}
