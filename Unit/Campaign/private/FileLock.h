/** @file
 * Keeps a second process off a file.
 */
#pragma once

#include <string>

/**
 * A file's lock for as long as this stands; makes the file where there is none. It lies far behind the bytes that
 * SQLite locks. Forked processes do not have it.
 */
class FileLock
{
public:
    /** @throws std::runtime_error when the file cannot be opened for writing, or another process has it */
    explicit FileLock(const std::string& sPath);
    ~FileLock();

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_fd;
};
