#include "Platform/Trace/private/SystemLogProbe.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace
{

int connectOnce(const char* pPath, int nType) noexcept
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, pPath, sizeof(address.sun_path) - 1);
    // A logger that is too busy to accept is there all the same, and must not be waited for.
    const int nSocket = socket(AF_UNIX, nType | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (nSocket < 0) {
        return errno;
    }
    const bool bConnected = connect(nSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    const int nError = bConnected || errno == EAGAIN || errno == EINPROGRESS ? 0 : errno;
    close(nSocket);
    return nError;
}

} // namespace

int probeSystemLog(const char* pPath) noexcept
{
    const int nError = connectOnce(pPath, SOCK_DGRAM);
    return nError == EPROTOTYPE ? connectOnce(pPath, SOCK_STREAM) : nError;
}
