#include "Unit/Recorder/private/RecordingFile.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Recorder/private/RecordingSchema.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <filesystem>

namespace
{
constexpr const char* ADVICE = "name another file to record into";

std::string checkedPath(const std::string& sPath)
{
    if (std::filesystem::exists(sPath)) {
        if (!std::filesystem::is_regular_file(sPath)) {
            throw ConfigurationError(fmt::format("{}: is no file; {}", sPath, ADVICE));
        }
        refuseOtherFile(sPath);
    }
    return sPath;
}
} // namespace

std::string databaseTrouble(const SQLite::Exception& error)
{
    return error.getErrorCode() == SQLITE_FULL ? "the disk is full" : std::string(error.getErrorStr());
}

RecordingFile::RecordingFile(const std::string& sPath)
    : m_sPath(checkedPath(sPath)), m_bMade(!std::filesystem::exists(sPath))
{
    try {
        m_lock.emplace(m_sPath, ELock::Write, ADVICE);
    }
    catch (const FileNotLocked& error) {
        throw ConfigurationError(error.what());
    }
}

RecordingFile::~RecordingFile()
{
    if (m_bMade) {
        std::error_code error;
        std::filesystem::remove(m_sPath, error);
    }
}

SQLite::Database RecordingFile::openDatabase() const
{
    try {
        return openToRecord(m_sPath);
    }
    catch (const SQLite::Exception& error) {
        throw ConfigurationError(
            fmt::format("{}: cannot be recorded into: {}; {}", m_sPath, databaseTrouble(error), ADVICE));
    }
}
