/** @file
 * Takes out of a recording what is too old, or too much.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <array>
#include <cstdint>

/** Bytes of max_mb that are kept for the journal. */
inline constexpr std::int64_t JOURNAL_BYTES = 16'000'000;

/** How far the run that is being recorded is. */
struct RecordingMoment
{
    std::int64_t nRun = 0;
    std::int64_t nStartedUnixUs = 0;
    std::int64_t nTimeUs = 0; /**< of the latest step */
};

/** Keeps each kind of rows as long as it is wanted and the file as small as it is wanted. */
class Retention
{
public:
    explicit Retention(const RecorderConfiguration& configuration);

    /**
     * Takes out a part of what has to go, the oldest first; a part, so that no transaction becomes long. Use it inside
     * of one.
     */
    void apply(SQLite::Database& database, const RecordingMoment& now) const;

private:
    struct Level
    {
        const char* pTable;
        std::int64_t keepUs;    /**< rows older than this go */
        std::int64_t atLeastUs; /**< the latest that stay when the file is too large */
        std::int64_t partUs;    /**< goes at a time */
    };

    static bool dropOldest(SQLite::Database& database, const Level& level, const RecordingMoment& now,
                           std::int64_t nKeepUs);
    static void dropEmptyRun(SQLite::Database& database, const RecordingMoment& now);
    bool isTooLarge(SQLite::Database& database) const;
    void shrink(SQLite::Database& database) const;

    std::array<Level, 4> m_levels;
    std::int64_t m_nMaxBytes;
};
