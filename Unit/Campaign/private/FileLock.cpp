#include "Unit/Campaign/private/FileLock.h"

#include "Platform/ConfigurationError.h"

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

/** A file that is only read is somebody's input; one for results is where work has to go on. */
[[noreturn]] void fail(ELock eLock, const std::string& sReason, const char* pAdvice)
{
    if (eLock == ELock::Read) {
        throw ConfigurationError(fmt::format("{}; {}name another file", sReason, pAdvice));
    }
    throw std::runtime_error(fmt::format("{}; {}name another file with --results", sReason, pAdvice));
}
} // namespace

FileLock::FileLock(const std::string& sPath, ELock eLock)
    : m_fd(eLock == ELock::Write ? open(sPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, READ_AND_WRITE)
                                 : open(sPath.c_str(), O_RDONLY | O_CLOEXEC))
{
    if (m_fd < 0) {
        fail(eLock,
             fmt::format("{}: cannot be {}: {}", sPath, eLock == ELock::Write ? "written" : "read",
                         std::strerror(errno)),
             "");
    }
    const struct flock lock = lockOf(eLock == ELock::Write ? F_WRLCK : F_RDLCK);
    if (fcntl(m_fd, F_OFD_SETLK, &lock) == 0) {
        return;
    }
    const int nError = errno;
    (void)close(m_fd);
    if (nError == EACCES || nError == EAGAIN) {
        fail(eLock, fmt::format("{}: another process is at work on it", sPath), "wait for its end, or ");
    }
    fail(eLock, fmt::format("{}: cannot be locked: {}", sPath, std::strerror(nError)), "");
}

FileLock::~FileLock()
{
    (void)close(m_fd);
}
