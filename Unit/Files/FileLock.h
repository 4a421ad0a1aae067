/** @file
 * Keeps a second process off a file.
 */
#pragma once

#include <stdexcept>
#include <string>

/** A file cannot be opened or locked; the text says which, why, and what to do. */
class FileNotLocked : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

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
     * @param sAdvice what to do when that fails, such as "name another file"
     * @throws FileNotLocked when the file cannot be opened for that, or when another process has it
     */
    FileLock(const std::string& sPath, ELock eLock, const std::string& sAdvice);
    ~FileLock();

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_fd;
};
