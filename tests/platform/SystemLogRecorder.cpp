#include "tests/platform/SystemLogRecorder.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace
{

struct State
{
    std::mutex mutex;
    std::vector<SystemLogLine> lines;
    std::string sIdentity;
    int nFacility = -1;
};

State& state()
{
    static State theState;
    return theState;
}

void record(int nPriority, const char* pFormat, va_list arguments)
{
    std::array<char, 4096> text{};
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): both callers start it
    static_cast<void>(std::vsnprintf(text.data(), text.size(), pFormat, arguments));
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().lines.push_back({nPriority, text.data()});
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

void openlog(const char* pIdentity, int /*nOption*/, int nFacility)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().sIdentity = pIdentity;
    state().nFacility = nFacility;
}
}

std::vector<SystemLogLine> SystemLogRecorder::lines()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().lines;
}

void SystemLogRecorder::clear()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().lines.clear();
}

std::string SystemLogRecorder::identity()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().sIdentity;
}

int SystemLogRecorder::facility()
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().nFacility;
}
