/** @file
 * Keeps a second process off a file.
 */
#pragma once

#include <string>

/** What a file is locked for. */
enum class ELock
{
    Read, /**< others may read, too */
    Write /**< nobody else; the file is made where there is none */
};

/**
 * A file's lock for as long as this stands. It belongs to this opening of the file:
 * SQLite, which gives up all locks of the process on the file at once, leaves it alone. A forked process has it too
 * until it closes what it inherited.
 */
class FileLock
{
public:
    /**
     * @throws std::runtime_error, for reading ConfigurationError, when the file cannot be opened for that, or when
     * another process has it
     */
    FileLock(const std::string& sPath, ELock eLock);
    ~FileLock();

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_fd;
};
