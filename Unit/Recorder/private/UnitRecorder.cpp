#include "Unit/Recorder/UnitRecorder.h"

#include "Platform/Threads/ThreadRules.h"
#include "Unit/Recorder/private/RecordingFile.h"
#include "Unit/Recorder/private/RecordingSchema.h"
#include "Unit/Recorder/private/RecordingWriter.h"
#include "Unit/Recorder/private/Retention.h"

#include <fmt/format.h>

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>
#include <utility>

namespace
{
constexpr std::size_t MOST_SAMPLES = 20'000; // in a transaction
constexpr std::int64_t JOURNAL_LIMIT = JOURNAL_BYTES / 2;
} // namespace

class UnitRecorder::Implementation
{
public:
    explicit Implementation(const RecorderConfiguration& configuration)
        : m_file(configuration.sFile), m_database(m_file.openDatabase()), m_retention(configuration)
    {
        m_database.exec(fmt::format("PRAGMA journal_size_limit = {}", JOURNAL_LIMIT));
    }

    ~Implementation() { stop(); }
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    void begin(RecordedRun run, const RunFeed& feed)
    {
        m_starter.check("UnitRecorder::begin");
        m_file.keep();
        m_run = std::move(run);
        m_pFeed = &feed;
        m_thread = std::jthread([this](const std::stop_token& stop) { record(stop); });
    }

    void stop()
    {
        m_starter.check("UnitRecorder::stop");
        m_thread.request_stop();
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    const std::string& path() const { return m_file.path(); }

    RecorderStatus status() const
    {
        const std::lock_guard lock(m_mutex);
        return m_status;
    }

    std::vector<std::string> takeNotices()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_notices, {});
    }

private:
    void record(const std::stop_token& stop)
    {
        std::mutex mutex;
        std::condition_variable_any never;
        while (!stop.stop_requested()) {
            writeAll();
            std::unique_lock lock(mutex);
            never.wait_for(lock, stop, INTERVAL, [] { return false; });
        }
        writeAll();
        finish();
    }

    void writeAll()
    {
        m_writing.check("UnitRecorder::writeAll");
        do {
            FeedPosition position = m_position;
            m_pFeed->read(position, m_batch, MOST_SAMPLES);
            if (!tryWrite()) {
                return;
            }
            m_position = position;
        } while (m_batch.samples.size() == MOST_SAMPLES);
    }

    bool tryWrite()
    {
        const auto summaries = m_writer ? std::optional(m_writer->summaries()) : std::nullopt;
        const std::string sTrouble = write();
        if (sTrouble.empty()) {
            noteWritten();
            return true;
        }
        notePause(sTrouble);
        if (summaries) {
            m_writer->restore(*summaries);
        }
        else {
            m_writer.reset(); // the run is not in the file
        }
        return false;
    }

    /** @return what went wrong, and left the file as it was; empty when nothing did */
    std::string write()
    {
        try {
            limitJournal();
            writeBatch();
            return {};
        }
        catch (const SQLite::Exception& error) {
            return databaseTrouble(error);
        }
        catch (const std::exception& error) {
            return error.what();
        }
    }

    /** The journal begins anew once all of it is in the file, which somebody who reads for long prevents. */
    void limitJournal()
    {
        const std::string sJournal = path() + "-wal";
        const auto isTooLarge = [&] {
            std::error_code error;
            const auto nBytes = std::filesystem::file_size(sJournal, error);
            return !error && nBytes > static_cast<std::uintmax_t>(JOURNAL_LIMIT);
        };
        if (m_status.bPaused || isTooLarge()) { // a full disk has more room without a journal
            m_database.exec("PRAGMA wal_checkpoint(TRUNCATE)");
        }
        if (isTooLarge()) {
            throw std::runtime_error("another program has been reading the file for too long");
        }
    }

    void writeBatch()
    {
        if (!m_writer) {
            (void)m_database.execAndGet("PRAGMA journal_mode = WAL").getString();
        }
        SQLite::Transaction transaction(m_database, SQLite::TransactionBehavior::IMMEDIATE);
        if (!m_writer) {
            m_run.nId = addRun(m_database, m_run);
            m_writer.emplace(m_database, m_run.nId);
        }
        m_writer->write(m_batch);
        if (m_batch.nLostSamples > 0 || m_batch.nLostEvents > 0) {
            m_writer->writeEvent(lossEvent());
        }
        m_retention.apply(m_database,
                          {m_run.nId, m_run.nStartedUnixUs, static_cast<std::int64_t>(m_writer->latestUs())});
        transaction.commit();
    }

    RunEvent lossEvent() const
    {
        RunEvent event;
        event.nId = static_cast<std::uint64_t>(-1 - static_cast<std::int64_t>(m_nLosses)); // the feed's own are from 0
        if (!m_batch.samples.empty()) {
            event.nTimeUs = m_batch.samples.front().nTimeUs;
            event.nSteps = m_batch.samples.front().nSteps - 1;
        }
        event.sText = fmt::format("{} steps and {} events before this were not recorded", m_batch.nLostSamples,
                                  m_batch.nLostEvents);
        return event;
    }

    void noteWritten()
    {
        const std::lock_guard lock(m_mutex);
        m_nLosses += m_batch.nLostSamples > 0 || m_batch.nLostEvents > 0 ? 1U : 0U;
        m_status.nSteps += m_batch.samples.size();
        m_status.nLostSteps += m_batch.nLostSamples;
        if (m_status.bPaused) {
            m_notices.push_back(fmt::format("{}: recording goes on{}", path(),
                                            m_batch.nLostSamples == 0
                                                ? "; nothing is lost"
                                                : fmt::format("; {} steps are lost", m_batch.nLostSamples)));
        }
        m_status.bPaused = false;
        m_status.sReason.clear();
    }

    void notePause(const std::string& sReason)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_status.bPaused) {
            m_notices.push_back(fmt::format("{}: recording pauses: {}; it goes on when that is over", path(), sReason));
        }
        m_status.bPaused = true;
        m_status.sReason = sReason;
    }

    /** Makes the file complete in itself, without a journal beside it, where nobody is reading it. */
    void finish()
    {
        try {
            if (m_writer) {
                m_writer->writeEnd();
            }
            m_writer.reset(); // its statements keep the journal's mode
            (void)m_database.execAndGet("PRAGMA journal_mode = DELETE").getString();
        }
        catch (const SQLite::Exception&) { // it stays as it is, complete with its journal
            return;
        }
    }

    RecordingFile m_file; // goes after the database, whose own locks would end with it
    SQLite::Database m_database;
    Retention m_retention;
    RecordedRun m_run;
    const RunFeed* m_pFeed = nullptr;
    FeedPosition m_position;
    FeedBatch m_batch;
    std::optional<RecordingWriter> m_writer; // from the first transaction on
    std::uint64_t m_nLosses = 0;
    mutable std::mutex m_mutex; // of the two below
    RecorderStatus m_status;
    std::vector<std::string> m_notices;
    [[no_unique_address]] OwnedByThread m_starter;
    [[no_unique_address]] OwnedByThread m_writing; // the recorder thread: what is not guarded by the mutex
    std::jthread m_thread;                         // last, since it uses the others
};

UnitRecorder::UnitRecorder(const RecorderConfiguration& configuration)
    : m_pImplementation(std::make_unique<Implementation>(configuration))
{}

UnitRecorder::~UnitRecorder() = default;

void UnitRecorder::begin(RecordedRun run, const RunFeed& feed)
{
    m_pImplementation->begin(std::move(run), feed);
}

void UnitRecorder::stop()
{
    m_pImplementation->stop();
}

const std::string& UnitRecorder::path() const
{
    return m_pImplementation->path();
}

RecorderStatus UnitRecorder::status() const
{
    return m_pImplementation->status();
}

std::vector<std::string> UnitRecorder::takeNotices()
{
    return m_pImplementation->takeNotices();
}
