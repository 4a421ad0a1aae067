#include "Unit/Campaign/private/NewResultsFile.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/private/ResultsSchema.h"
#include "Unit/Files/FileBeside.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace
{
/** Also seen: a symbolic link that leads nowhere. */
bool isThere(const std::string& sPath)
{
    return std::filesystem::symlink_status(sPath).type() != std::filesystem::file_type::not_found;
}

/** Renames a file unless there is one of the new name. @return whether it went well; else errno says why */
bool renameToNew(const std::string& sOld, const std::string& sNew)
{
    if (renameat2(AT_FDCWD, sOld.c_str(), AT_FDCWD, sNew.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) { // what file systems answer that do not know the flag
        return false;
    }
    if (isThere(sNew)) {
        errno = EEXIST;
        return false;
    }
    return std::rename(sOld.c_str(), sNew.c_str()) == 0;
}

bool flushToDisk(const std::string& sPath)
{
    const int fd = ::open(sPath.c_str(), O_RDWR | O_CLOEXEC);
    const bool bFlushed = fd >= 0 && fsync(fd) == 0;
    const int nError = errno;
    if (fd >= 0) {
        (void)::close(fd);
    }
    errno = nError;
    return bFlushed;
}
} // namespace

NewResultsFile::NewResultsFile(std::string sPath, const CampaignDescription& description,
                               const SweepDefinition& definition)
    : m_sPath(std::move(sPath))
{
    refuseWhatIsThere();
    FileBeside file = makeFileBeside(m_sPath);
    if (file.fd < 0) {
        throw ConfigurationError(fmt::format("{}: cannot be written: {}; name a file in a folder that can be written "
                                             "to",
                                             m_sPath, std::strerror(errno)));
    }
    (void)::close(file.fd); // before SQLite has it open, whose locks would go with this
    m_sTemporaryPath = std::move(file.sPath);
    try {
        open(description, definition);
    }
    catch (const SQLite::Exception& error) {
        close();
        (void)unlink(m_sTemporaryPath.c_str());
        failWith(error, m_sPath);
    }
}

NewResultsFile::~NewResultsFile()
{
    close();
    if (!m_sTemporaryPath.empty()) {
        (void)unlink(m_sTemporaryPath.c_str());
    }
}

void NewResultsFile::refuseWhatIsThere() const
{
    if (isThere(m_sPath)) {
        throw ConfigurationError(fmt::format("{}: exists already; name a file that does not, or remove it", m_sPath));
    }
    for (const char* pJournal : {"-wal", "-journal"}) {
        if (isThere(m_sPath + pJournal)) { // would be taken for this file's own, and change it
            throw ConfigurationError(fmt::format("{}{}: is left of another file {}; remove it, or name another file",
                                                 m_sPath, pJournal, m_sPath));
        }
    }
}

void NewResultsFile::open(const CampaignDescription& description, const SweepDefinition& definition)
{
    m_database.emplace(m_sTemporaryPath, SQLite::OPEN_READWRITE);
    (void)m_database->execAndGet("PRAGMA journal_mode = OFF").getString(); // what goes wrong is thrown away whole
    m_database->exec("PRAGMA synchronous = OFF");
    createTables(*m_database, description, definition);
    m_database->exec("BEGIN");
    m_insert.emplace(*m_database, insertStatement(definition, EPresentRun::Stays));
    m_same.emplace(*m_database, sameRunStatement(definition));
}

void NewResultsFile::close()
{
    m_same.reset();
    m_insert.reset();
    m_database.reset();
}

EAddedRun NewResultsFile::add(const ResultRow& row)
{
    try {
        (void)m_insert->tryReset();
        bindRun(*m_insert, row);
        if (m_insert->exec() == 1) {
            return EAddedRun::New;
        }
        m_same->reset();
        bindRun(*m_same, row);
        (void)m_same->executeStep();
        return m_same->getColumn(0).getInt() == 1 ? EAddedRun::Same : EAddedRun::Differs;
    }
    catch (const SQLite::Exception& error) {
        failWith(error, m_sPath);
    }
}

void NewResultsFile::finish()
{
    try {
        m_same->reset();
        m_insert->reset();
        m_database->exec("COMMIT");
        close();
    }
    catch (const SQLite::Exception& error) {
        failWith(error, m_sPath);
    }
    if (!flushToDisk(m_sTemporaryPath)) {
        throw std::runtime_error(fmt::format("{}: cannot be written: {}", m_sPath, std::strerror(errno)));
    }
    if (!renameToNew(m_sTemporaryPath, m_sPath)) {
        throw std::runtime_error(fmt::format("{}: cannot be given its name: {}", m_sPath, std::strerror(errno)));
    }
    m_sTemporaryPath.clear();
}
