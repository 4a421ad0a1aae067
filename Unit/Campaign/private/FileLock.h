/** @file
 * Keeps a second process off a file.
 */
#pragma once

#include <string>

/**
 * A file's lock for as long as this stands; makes the file where there is none. It belongs to this opening of the file:
 * SQLite, which gives up all locks of the process on the file at once, leaves it alone. A forked process has it too
 * until it closes what it inherited.
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
