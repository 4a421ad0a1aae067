#include "Unit/Files/FileLock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace
{
constexpr off_t LOCKED_BYTE = off_t{1} << 62;
constexpr mode_t READ_AND_WRITE = 0666;

struct flock lockOf(short nType)
{
    struct flock lock = {};
    lock.l_type = nType;
    lock.l_whence = SEEK_SET;
    lock.l_start = LOCKED_BYTE;
    lock.l_len = 1;
    return lock;
}
} // namespace

FileLock::FileLock(const std::string& sPath, ELock eLock, const std::string& sAdvice)
    : m_fd(eLock == ELock::Write ? open(sPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, READ_AND_WRITE)
                                 : open(sPath.c_str(), O_RDONLY | O_CLOEXEC))
{
    if (m_fd < 0) {
        throw FileNotLocked(fmt::format("{}: cannot be {}: {}; {}", sPath, eLock == ELock::Write ? "written" : "read",
                                        std::strerror(errno), sAdvice));
    }
    const struct flock lock = lockOf(eLock == ELock::Write ? F_WRLCK : F_RDLCK);
    if (fcntl(m_fd, F_OFD_SETLK, &lock) == 0) {
        return;
    }
    const int nError = errno;
    (void)close(m_fd);
    if (nError == EACCES || nError == EAGAIN) {
        throw FileNotLocked(
            fmt::format("{}: another process is at work on it; wait for its end, or {}", sPath, sAdvice));
    }
    throw FileNotLocked(fmt::format("{}: cannot be locked: {}; {}", sPath, std::strerror(nError), sAdvice));
}

FileLock::~FileLock()
{
    (void)close(m_fd);
}
