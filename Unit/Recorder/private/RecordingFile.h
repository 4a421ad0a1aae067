/** @file
 * The file that a unit records into.
 */
#pragma once

#include "Unit/Files/FileLock.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <optional>
#include <string>

/** @return what people are told of an error of a database */
std::string databaseTrouble(const SQLite::Exception& error);

/** The file, locked, and taken away again when this made it and nothing came of it. Must outlive its database, whose
 * own locks would end with it. */
class RecordingFile
{
public:
    /** @throws ConfigurationError when it is not fit to be recorded into; nothing in it changes then */
    explicit RecordingFile(const std::string& sPath);
    ~RecordingFile();

    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    /** @return the database, with its tables. @throws ConfigurationError */
    SQLite::Database openDatabase() const;

    /** Lets it be, whatever comes. */
    void keep() { m_bMade = false; }

    const std::string& path() const { return m_sPath; }

private:
    std::string m_sPath;
    bool m_bMade;
    std::optional<FileLock> m_lock;
};
