#include "Unit/Recorder/private/Retention.h"

#include "Unit/Recorder/RecordedTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace
{
constexpr std::int64_t HOUR_US = 60 * MINUTE_US;
constexpr std::int64_t DAY_US = 24 * HOUR_US;
constexpr std::int64_t BYTES_PER_MB = 1'000'000;
constexpr int MOST_PARTS = 20;             // that go in a transaction because the file is too large
constexpr int MOST_PAGES_GIVEN_BACK = 500; // in a transaction

std::int64_t number(SQLite::Database& database, const char* pPragma)
{
    return database.execAndGet(pPragma).getInt64();
}

/** The first row of a table: rows are in the order of runs and times. */
struct OldestRow
{
    std::int64_t nRun;
    std::int64_t nTimeUs;
    std::int64_t nStartedUnixUs;
};

std::optional<OldestRow> oldestRow(SQLite::Database& database, const char* pTable)
{
    SQLite::Statement query(database, fmt::format("SELECT run, time_us, (SELECT started_unix_us FROM run WHERE id = "
                                                  "{0}.run) FROM {0} ORDER BY run, time_us LIMIT 1",
                                                  pTable));
    if (!query.executeStep()) {
        return std::nullopt;
    }
    return OldestRow{query.getColumn(0).getInt64(), query.getColumn(1).getInt64(), query.getColumn(2).getInt64()};
}
} // namespace

Retention::Retention(const RecorderConfiguration& configuration)
    : m_levels{{{"step", static_cast<std::int64_t>(configuration.stepsHours * HOUR_US), MINUTE_US, 10 * SECOND_US},
                {"second", static_cast<std::int64_t>(configuration.secondsHours * HOUR_US), HOUR_US, HOUR_US},
                {"minute", static_cast<std::int64_t>(configuration.minutesDays * DAY_US), HOUR_US, DAY_US},
                {"event", static_cast<std::int64_t>(configuration.minutesDays * DAY_US), MINUTE_US, DAY_US}}},
      m_nMaxBytes(configuration.maxMb * BYTES_PER_MB - JOURNAL_BYTES)
{}

void Retention::apply(SQLite::Database& database, const RecordingMoment& now) const
{
    for (const Level& level : m_levels) {
        (void)dropOldest(database, level, now, level.keepUs);
    }
    dropEmptyRun(database, now);
    for (int nPart = 0; nPart < MOST_PARTS && isTooLarge(database); ++nPart) {
        const bool bDropped = std::any_of(m_levels.begin(), m_levels.end(), [&](const Level& level) {
            return dropOldest(database, level, now, level.atLeastUs);
        });
        if (!bDropped) {
            break;
        }
    }
    shrink(database);
}

/** @return whether there was something older than what is to be kept */
bool Retention::dropOldest(SQLite::Database& database, const Level& level, const RecordingMoment& now,
                           std::int64_t nKeepUs)
{
    const std::optional<OldestRow> oldest = oldestRow(database, level.pTable);
    if (!oldest) {
        return false;
    }
    const std::int64_t nKeptFromUs = now.nStartedUnixUs + now.nTimeUs - nKeepUs - oldest->nStartedUnixUs;
    if (oldest->nTimeUs >= nKeptFromUs) {
        return false;
    }
    SQLite::Statement statement(database, fmt::format("DELETE FROM {} WHERE run = ? AND time_us < ?", level.pTable));
    statement.bind(1, oldest->nRun);
    statement.bind(2, std::min(nKeptFromUs, oldest->nTimeUs + level.partUs));
    statement.exec();
    return true;
}

void Retention::dropEmptyRun(SQLite::Database& database, const RecordingMoment& now)
{
    const std::int64_t nRun = database.execAndGet("SELECT min(id) FROM run").getInt64();
    SQLite::Statement rows(database, "SELECT EXISTS(SELECT 1 FROM step WHERE run = ?1) OR EXISTS(SELECT 1 FROM second "
                                     "WHERE run = ?1) OR EXISTS(SELECT 1 FROM minute WHERE run = ?1) OR EXISTS(SELECT "
                                     "1 FROM event WHERE run = ?1)");
    rows.bind(1, nRun);
    if (nRun == now.nRun || !rows.executeStep() || rows.getColumn(0).getInt() != 0) {
        return;
    }
    rows.reset();
    for (const char* const pTable : {"channel", "module", "run_file"}) {
        database.exec(fmt::format("DELETE FROM {} WHERE run = {}", pTable, nRun));
    }
    database.exec(fmt::format("DELETE FROM run WHERE id = {}", nRun));
    database.exec("DELETE FROM content WHERE id NOT IN (SELECT content FROM run_file)");
}

bool Retention::isTooLarge(SQLite::Database& database) const
{
    const std::int64_t nUsedPages = number(database, "PRAGMA page_count") - number(database, "PRAGMA freelist_count");
    return nUsedPages * number(database, "PRAGMA page_size") > m_nMaxBytes;
}

/** Gives pages back that have been too many since max_mb became smaller. */
void Retention::shrink(SQLite::Database& database) const
{
    if (number(database, "PRAGMA page_count") * number(database, "PRAGMA page_size") > m_nMaxBytes &&
        number(database, "PRAGMA freelist_count") > 0)
    {
        database.exec(fmt::format("PRAGMA incremental_vacuum({})", MOST_PAGES_GIVEN_BACK));
    }
}
