#include "Unit/Database/ReadOnlyDatabase.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <filesystem>

namespace
{
/** @return the path as SQLite takes it when it stands in a folder that cannot be written */
std::string immutableUri(const std::string& sPath)
{
    std::string sUri = "file:";
    for (const char c : std::filesystem::absolute(sPath).string()) {
        sUri += c == '%' || c == '?' || c == '#' ? fmt::format("%{:02x}", static_cast<unsigned char>(c))
                                                 : std::string(1, c);
    }
    return sUri + "?immutable=1";
}
} // namespace

SQLite::Database openDatabaseToRead(const std::string& sPath)
{
    try { // a database is read first when it is asked for something: until then it opens whatever it is
        SQLite::Database database(sPath, SQLite::OPEN_READONLY, DATABASE_BUSY_TIMEOUT_MS);
        (void)database.execAndGet("SELECT count(*) FROM sqlite_master").getInt();
        return database;
    }
    catch (const SQLite::Exception& error) {
        const bool bJournal = std::filesystem::exists(sPath + "-wal");
        if ((error.getErrorCode() != SQLITE_CANTOPEN && error.getErrorCode() != SQLITE_READONLY) || bJournal) {
            throw;
        }
        return {immutableUri(sPath), SQLite::OPEN_READONLY | SQLite::OPEN_URI, DATABASE_BUSY_TIMEOUT_MS};
    }
}
