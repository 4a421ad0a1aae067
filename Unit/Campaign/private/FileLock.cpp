#include "Unit/Campaign/private/FileLock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

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

FileLock::FileLock(const std::string& sPath) : m_fd(open(sPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, READ_AND_WRITE))
{
    if (m_fd < 0) {
        throw std::runtime_error(
            fmt::format("{}: cannot be written: {}; name another file with --results", sPath, std::strerror(errno)));
    }
    const struct flock lock = lockOf(F_WRLCK);
    if (fcntl(m_fd, F_OFD_SETLK, &lock) == 0) {
        return;
    }
    const int nError = errno;
    (void)close(m_fd);
    if (nError == EACCES || nError == EAGAIN) {
        throw std::runtime_error(fmt::format("{}: another process is at work on it; wait for its end, or name another "
                                             "file with --results",
                                             sPath));
    }
    throw std::runtime_error(fmt::format("{}: cannot be locked: {}", sPath, std::strerror(nError)));
}

FileLock::~FileLock()
{
    (void)close(m_fd);
}
