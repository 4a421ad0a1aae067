#include "tests/platform/SystemLogRecorder.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace
{

struct State
{
    std::mutex mutex;
    std::condition_variable released;
    std::vector<SystemLogLine> lines;
    std::string sIdentity;
    int nOptions = -1;
    int nFacility = -1;
    bool bHeld = false;
    int nConnectError = 0;
    bool bStream = false;
};

// Not destroyed: lines may be sent while the process ends.
State& state()
{
    static State& theState = *new State;
    return theState;
}

void record(int nPriority, const char* pFormat, va_list arguments)
{
    std::array<char, 4096> text{};
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): both callers start it
    static_cast<void>(std::vsnprintf(text.data(), text.size(), pFormat, arguments));
    std::unique_lock<std::mutex> lock(state().mutex);
    state().released.wait(lock, [] { return !state().bHeld; });
    state().lines.push_back({nPriority, text.data()});
}

bool isSystemLog(const sockaddr* pAddress)
{
    return pAddress->sa_family == AF_UNIX &&
           std::strcmp(reinterpret_cast<const sockaddr_un*>(pAddress)->sun_path, "/dev/log") == 0;
}

int connectError(int nSocket)
{
    int nType = 0;
    socklen_t nSize = sizeof(nType);
    getsockopt(nSocket, SOL_SOCKET, SO_TYPE, &nType, &nSize);
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().bStream && nType != SOCK_STREAM ? EPROTOTYPE : state().nConnectError;
}

} // namespace

// The executable's definitions come before the C library's. Its own header is not included, since it may define the
// first of them inline.
extern "C" {
void syslog(int nPriority, const char* pFormat, ...);
void __syslog_chk(int nPriority, int nFlag, const char* pFormat, ...);
void openlog(const char* pIdentity, int nOption, int nFacility);

void syslog(int nPriority, const char* pFormat, ...)
{
    va_list arguments;
    va_start(arguments, pFormat);
    record(nPriority, pFormat, arguments);
    va_end(arguments);
}

void __syslog_chk(int nPriority, int /*nFlag*/, const char* pFormat, ...)
{
    va_list arguments;
    va_start(arguments, pFormat);
    record(nPriority, pFormat, arguments);
    va_end(arguments);
}

void openlog(const char* pIdentity, int nOption, int nFacility)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().sIdentity = pIdentity;
    state().nOptions = nOption;
    state().nFacility = nFacility;
}

int connect(int nSocket, const sockaddr* pAddress, socklen_t nSize)
{
    if (!isSystemLog(pAddress)) {
        return static_cast<int>(::syscall(SYS_connect, nSocket, pAddress, nSize));
    }
    const int nError = connectError(nSocket);
    errno = nError;
    return nError == 0 ? 0 : -1;
}
}

std::vector<SystemLogLine> SystemLogRecorder::lines()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().lines;
}

void SystemLogRecorder::clear()
{
    release();
    setLogger(0, false);
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().lines.clear();
}

std::string SystemLogRecorder::identity()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().sIdentity;
}

int SystemLogRecorder::options()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().nOptions;
}

int SystemLogRecorder::facility()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().nFacility;
}

void SystemLogRecorder::hold()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().bHeld = true;
}

void SystemLogRecorder::release()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().bHeld = false;
    state().released.notify_all();
}

void SystemLogRecorder::setLogger(int nError, bool bStream)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().nConnectError = nError;
    state().bStream = bStream;
}
