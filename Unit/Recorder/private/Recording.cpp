#include "Unit/Recorder/Recording.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Database/ReadOnlyDatabase.h"
#include "Unit/Recorder/RecordedTime.h"
#include "Unit/Recorder/private/RecordingSchema.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace
{
constexpr int ROWS_AT_A_TIME = 20'000;

/** Nothing of a unit is later, and with the time that the run began it makes no more than 63 bits. */
constexpr std::int64_t LATEST_US = (std::int64_t{1} << 62U) - 1;

std::int64_t possibleTime(std::uint64_t nTimeUs)
{
    return static_cast<std::int64_t>(std::min(nTimeUs, static_cast<std::uint64_t>(LATEST_US)));
}

const char* tableOf(EResolution eResolution)
{
    return eResolution == EResolution::Steps ? "step" : eResolution == EResolution::Seconds ? "second" : "minute";
}

void refuseNoFile(const std::string& sPath)
{
    if (!std::filesystem::is_regular_file(sPath)) {
        throw ConfigurationError(fmt::format("{}: {}; name a recording of opc run", sPath,
                                             std::filesystem::exists(sPath) ? "is no file" : "does not exist"));
    }
}

ERunEvent runEventNamed(const std::string& sName)
{
    for (const ERunEvent eEvent : {ERunEvent::State, ERunEvent::Failure, ERunEvent::Overrun, ERunEvent::Command}) {
        if (sName == runEventName(eEvent)) {
            return eEvent;
        }
    }
    return ERunEvent::Note;
}

std::uint64_t unsignedOf(const SQLite::Column& column)
{
    return static_cast<std::uint64_t>(column.getInt64());
}

StepSummary summaryOf(SQLite::Statement& row)
{
    StepSummary summary;
    summary.nTimeUs = unsignedOf(row.getColumn(1));
    summary.nChannelNumber = row.getColumn(2).getUInt();
    summary.nSteps = unsignedOf(row.getColumn(3));
    summary.nFailedSteps = unsignedOf(row.getColumn(4));
    summary.nState = row.getColumn(5).getInt();
    int nColumn = KEY_COLUMNS + 3;
    for (auto& quantity : summary.quantities) {
        if (!row.getColumn(nColumn).isNull()) {
            quantity = QuantitySummary{row.getColumn(nColumn).getInt64(), row.getColumn(nColumn + 1).getInt64(),
                                       row.getColumn(nColumn + 2).getInt64()};
        }
        nColumn += 3;
    }
    return summary;
}

RunEvent eventOf(SQLite::Statement& row)
{
    RunEvent event;
    event.nTimeUs = unsignedOf(row.getColumn(1));
    event.nId = unsignedOf(row.getColumn(2));
    event.nSteps = unsignedOf(row.getColumn(3));
    if (!row.getColumn(4).isNull()) {
        event.nChannelNumber = row.getColumn(4).getUInt();
    }
    event.eEvent = runEventNamed(row.getColumn(5).getString());
    event.sText = row.getColumn(6).getString();
    event.sDetail = row.getColumn(7).getString();
    return event;
}
} // namespace

class Recording::Implementation
{
public:
    explicit Implementation(const std::string& sPath) : m_sPath(sPath), m_database(openDatabaseToRead(sPath))
    {
        checkIsRecording(m_database, sPath);
    }

    /** Adds the file's name to what goes wrong in its database. */
    template <class TAction> auto guarded(const TAction& action)
    {
        try {
            return action(m_database);
        }
        catch (const SQLite::Exception& error) {
            throw std::runtime_error(fmt::format("{}: {}", m_sPath, error.what()));
        }
    }

    /** Calls a function with each row of a range, by a query for each part. @param pSecondKey after time_us */
    template <class TFunction>
    void forEachRow(const char* pTable, const char* pSecondKey, const RecordedRange& range, const TFunction& function)
    {
        const std::string sChannel = range.nChannel ? fmt::format(" AND channel = {}", *range.nChannel) : "";
        SQLite::Statement query(m_database,
                                fmt::format("SELECT * FROM {0} WHERE run = ? AND time_us <= ? AND (time_us, {1}) > (?, "
                                            "?){2} ORDER BY time_us, {1} LIMIT {3}",
                                            pTable, pSecondKey, sChannel, ROWS_AT_A_TIME));
        std::int64_t nAfterUs = possibleTime(range.nFromUs) - 1;
        std::int64_t nAfterKey = std::numeric_limits<std::int64_t>::max();
        int nRows = 0;
        do {
            nRows = 0;
            query.reset();
            query.bind(1, range.nRun);
            query.bind(2, possibleTime(range.nToUs));
            query.bind(3, nAfterUs);
            query.bind(4, nAfterKey);
            while (query.executeStep()) {
                ++nRows;
                nAfterUs = query.getColumn(1).getInt64();
                nAfterKey = query.getColumn(2).getInt64();
                function(query);
            }
        } while (nRows == ROWS_AT_A_TIME);
    }

private:
    std::string m_sPath;
    SQLite::Database m_database;
};

Recording::Recording(std::string sPath) : m_sPath(std::move(sPath))
{
    refuseNoFile(m_sPath);
    refuseOtherFile(m_sPath); // even a look at another program's database may make files beside it
    open();
}

Recording Recording::ofThisProcess(std::string sPath)
{
    Recording recording;
    recording.m_sPath = std::move(sPath);
    refuseNoFile(recording.m_sPath);
    recording.open();
    return recording;
}

void Recording::open()
{
    try {
        m_pImplementation = std::make_unique<Implementation>(m_sPath);
    }
    catch (const SQLite::Exception& error) {
        throw ConfigurationError(
            fmt::format("{}: cannot be read as a recording of opc run: {}; name another file", m_sPath, error.what()));
    }
}

Recording::~Recording() = default;
Recording::Recording(Recording&&) noexcept = default;

std::vector<RecordedRun> Recording::runs() const
{
    return m_pImplementation->guarded([this](SQLite::Database& database) {
        std::vector<RecordedRun> runs = readRuns(database);
        for (const RecordedRun& run : runs) {
            if (run.nStartedUnixUs < 0 || run.nStartedUnixUs > LATEST_US) {
                throw std::runtime_error(fmt::format("{}: is damaged: run {} began {} microseconds after 1970", m_sPath,
                                                     run.nId, run.nStartedUnixUs));
            }
        }
        return runs;
    });
}

std::vector<RecordedFile> Recording::files(std::int64_t nRun) const
{
    return m_pImplementation->guarded([&](SQLite::Database& database) { return readFiles(database, nRun); });
}

std::optional<RecordedTimes> Recording::times(EResolution eResolution, std::int64_t nRun,
                                              std::optional<unsigned int> nChannel) const
{
    return m_pImplementation->guarded([&](SQLite::Database& database) -> std::optional<RecordedTimes> {
        const std::string sChannel = nChannel ? fmt::format(" AND channel = {}", *nChannel) : "";
        const auto end = [&](const char* pOrder) -> std::optional<std::uint64_t> {
            SQLite::Statement query(database,
                                    fmt::format("SELECT time_us FROM {} WHERE run = ?{} AND time_us BETWEEN 0 "
                                                "AND ? ORDER BY time_us {} LIMIT 1",
                                                tableOf(eResolution), sChannel, pOrder));
            query.bind(1, nRun);
            query.bind(2, LATEST_US);
            return query.executeStep() ? std::optional(unsignedOf(query.getColumn(0))) : std::nullopt;
        };
        const auto nFirstUs = end("ASC");
        const auto nLastUs = end("DESC");
        return nFirstUs && nLastUs ? std::optional(RecordedTimes{*nFirstUs, *nLastUs}) : std::nullopt;
    });
}

void Recording::forEachStep(const RecordedRange& range, const std::function<void(const StepSample&)>& function) const
{
    m_pImplementation->guarded([&](SQLite::Database& database) {
        std::vector<unsigned int> channels;
        for (const RecordedRun& run : readRuns(database)) {
            if (run.nId == range.nRun) {
                channels = run.channels;
            }
        }
        m_pImplementation->forEachRow("step", "channel", range, [&](SQLite::Statement& row) {
            StepSample sample{};
            sample.nTimeUs = unsignedOf(row.getColumn(1));
            sample.nChannelNumber = row.getColumn(2).getUInt();
            sample.nChannelIndex = static_cast<std::uint32_t>(
                std::find(channels.begin(), channels.end(), sample.nChannelNumber) - channels.begin());
            int nColumn = KEY_COLUMNS;
            for (const StepColumn& column : stepColumns()) {
                column.read(row.getColumn(nColumn++), sample);
            }
            function(sample);
        });
    });
}

void Recording::forEachSummary(EResolution eResolution, const RecordedRange& range,
                               const std::function<void(const StepSummary&)>& function) const
{
    const std::uint64_t nLengthUs = eResolution == EResolution::Minutes ? MINUTE_US : SECOND_US;
    RecordedRange whole = range;
    whole.nFromUs -= whole.nFromUs % nLengthUs;
    m_pImplementation->guarded([&](SQLite::Database&) {
        m_pImplementation->forEachRow(tableOf(eResolution), "channel", whole,
                                      [&](SQLite::Statement& row) { function(summaryOf(row)); });
    });
}

void Recording::forEachEvent(const RecordedRange& range, const std::function<void(const RunEvent&)>& function) const
{
    m_pImplementation->guarded([&](SQLite::Database&) {
        m_pImplementation->forEachRow("event", "id", range, [&](SQLite::Statement& row) { function(eventOf(row)); });
    });
}

std::vector<RunEvent> Recording::lastEvents(const RecordedRange& range, std::uint64_t nBeforeId,
                                            std::size_t nMost) const
{
    return m_pImplementation->guarded([&](SQLite::Database& database) {
        const std::string sChannel = range.nChannel ? fmt::format(" AND channel = {}", *range.nChannel) : "";
        SQLite::Statement query(database, fmt::format("SELECT * FROM event WHERE run = ? AND time_us BETWEEN ? AND ? "
                                                      "AND id < ?{} ORDER BY time_us DESC, id DESC LIMIT ?",
                                                      sChannel));
        constexpr auto GREATEST = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        query.bind(1, range.nRun);
        query.bind(2, possibleTime(range.nFromUs));
        query.bind(3, possibleTime(range.nToUs));
        query.bind(4, static_cast<std::int64_t>(std::min(nBeforeId, GREATEST)));
        query.bind(5, static_cast<std::int64_t>(nMost));
        std::vector<RunEvent> events;
        while (query.executeStep()) {
            events.push_back(eventOf(query));
        }
        std::reverse(events.begin(), events.end());
        return events;
    });
}
