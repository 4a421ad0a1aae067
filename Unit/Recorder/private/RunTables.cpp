#include "Unit/Recorder/private/RecordingSchema.h"

#include <utility>

namespace
{
/** @return the id of a text, which is kept once however many runs had it */
std::int64_t addContent(SQLite::Database& database, const std::string& sContent)
{
    SQLite::Statement query(database, "SELECT id FROM content WHERE content = ?");
    query.bind(1, sContent);
    if (query.executeStep()) {
        return query.getColumn(0).getInt64();
    }
    SQLite::Statement insert(database, "INSERT INTO content(content) VALUES (?)");
    insert.bind(1, sContent);
    insert.exec();
    return database.getLastInsertRowid();
}

void addParts(SQLite::Database& database, std::int64_t nRun, const RecordedRun& run)
{
    for (std::size_t nChannel = 0; nChannel < run.channels.size(); ++nChannel) {
        SQLite::Statement insert(database, "INSERT INTO channel VALUES (?, ?, ?)");
        insert.bind(1, nRun);
        insert.bind(2, static_cast<std::int64_t>(nChannel));
        insert.bind(3, static_cast<std::int64_t>(run.channels[nChannel]));
        insert.exec();
    }
    for (std::size_t nModule = 0; nModule < run.modules.size(); ++nModule) {
        SQLite::Statement insert(database, "INSERT INTO module VALUES (?, ?, ?, ?, ?)");
        insert.bind(1, nRun);
        insert.bind(2, static_cast<std::int64_t>(nModule));
        insert.bind(3, run.modules[nModule].sName);
        insert.bind(4, run.modules[nModule].sLibrary);
        insert.bind(5, run.modules[nModule].eScope == EModuleScope::Unit ? "unit" : "channel");
        insert.exec();
    }
    for (std::size_t nFile = 0; nFile < run.files.size(); ++nFile) {
        const std::int64_t nContent = addContent(database, run.files[nFile].sContent);
        SQLite::Statement insert(database, "INSERT INTO run_file VALUES (?, ?, ?, ?, ?)");
        insert.bind(1, nRun);
        insert.bind(2, static_cast<std::int64_t>(nFile));
        insert.bind(3, run.files[nFile].sKind);
        insert.bind(4, run.files[nFile].sName);
        insert.bind(5, nContent);
        insert.exec();
    }
}

void readParts(SQLite::Database& database, RecordedRun& run)
{
    SQLite::Statement channels(database, "SELECT number FROM channel WHERE run = ? ORDER BY position");
    channels.bind(1, run.nId);
    while (channels.executeStep()) {
        run.channels.push_back(channels.getColumn(0).getUInt());
    }
    SQLite::Statement modules(database, "SELECT name, library, scope FROM module WHERE run = ? ORDER BY position");
    modules.bind(1, run.nId);
    while (modules.executeStep()) {
        ModuleConfiguration module;
        module.sName = modules.getColumn(0).getString();
        module.sLibrary = modules.getColumn(1).getString();
        module.eScope = modules.getColumn(2).getString() == "unit" ? EModuleScope::Unit : EModuleScope::Channel;
        run.modules.push_back(std::move(module));
    }
}
} // namespace

std::int64_t addRun(SQLite::Database& database, const RecordedRun& run)
{
    SQLite::Statement insert(database, "INSERT INTO run(run, started_unix_us, interval_ms, speed, start_s, version) "
                                       "VALUES (?, ?, ?, ?, ?, ?)");
    insert.bind(1, run.sRun);
    insert.bind(2, run.nStartedUnixUs);
    insert.bind(3, static_cast<std::int64_t>(run.intervalMs));
    insert.bind(4, run.speed);
    insert.bind(5, run.startSeconds);
    insert.bind(6, run.sVersion);
    insert.exec();
    const std::int64_t nRun = database.getLastInsertRowid();
    addParts(database, nRun, run);
    return nRun;
}

std::vector<RecordedRun> readRuns(SQLite::Database& database)
{
    std::vector<RecordedRun> runs;
    SQLite::Statement query(database, "SELECT id, run, started_unix_us, interval_ms, speed, start_s, version, ended_us "
                                      "FROM run ORDER BY id");
    while (query.executeStep()) {
        RecordedRun run;
        run.nId = query.getColumn(0).getInt64();
        run.sRun = query.getColumn(1).getString();
        run.nStartedUnixUs = query.getColumn(2).getInt64();
        run.intervalMs = query.getColumn(3).getUInt();
        run.speed = query.getColumn(4).getDouble();
        run.startSeconds = query.getColumn(5).getDouble();
        run.sVersion = query.getColumn(6).getString();
        if (!query.getColumn(7).isNull()) {
            run.nEndedUs = static_cast<std::uint64_t>(query.getColumn(7).getInt64());
        }
        readParts(database, run);
        runs.push_back(std::move(run));
    }
    return runs;
}

std::vector<RecordedFile> readFiles(SQLite::Database& database, std::int64_t nRun)
{
    std::vector<RecordedFile> files;
    SQLite::Statement query(database, "SELECT kind, name, content.content FROM run_file JOIN content "
                                      "ON content.id = run_file.content WHERE run = ? ORDER BY position");
    query.bind(1, nRun);
    while (query.executeStep()) {
        files.push_back(
            {query.getColumn(0).getString(), query.getColumn(1).getString(), query.getColumn(2).getString()});
    }
    return files;
}
