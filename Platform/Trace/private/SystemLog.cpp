#include "Platform/Trace/private/SystemLog.h"

#include "Platform/Trace/private/SystemLogProbe.h"

#include <fmt/format.h>
#include <pthread.h>
#include <syslog.h>

#include <algorithm>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace
{

constexpr const char* SOCKET_PATH = "/dev/log"; // where syslog(3) looks
constexpr std::chrono::seconds PROBE_INTERVAL(1);
constexpr std::chrono::milliseconds LONGEST_WAIT = std::chrono::hours(24);
constexpr int FACILITY_SHIFT = 3;

int priorityOf(const SystemLogSettings& settings)
{
    return (settings.nFacility << FACILITY_SHIFT) | settings.nSeverity;
}

/** Keeps signals away from threads that are started meanwhile: they are other threads' to take. */
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_previous);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t m_previous{};
};

} // namespace

SystemLog::SystemLog(std::function<void(const std::string&)> complain)
    : m_complain(std::move(complain)), m_nPriority(priorityOf({}))
{
    openlog("opc", LOG_PID, LOG_USER);
}

void SystemLog::setSettings(const SystemLogSettings& settings)
{
    m_nPriority = priorityOf(settings);
    const std::lock_guard<std::mutex> lock(m_mutex);
    start();
}

void SystemLog::start()
{
    if (!m_bStarted) {
        const SignalsBlocked blocked;
        // Not joined: the system logger may hold it up when the process ends.
        std::thread([this] { run(); }).detach();
        m_bStarted = true;
    }
}

void SystemLog::write(std::string sText)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_lines.size() < CAPACITY) {
            m_lines.push_back({m_nPriority, std::move(sText)});
            ++m_nQueued;
            start();
            m_written.notify_one();
            return;
        }
        ++m_nLost;
        if (std::exchange(m_bLossTold, true)) {
            return;
        }
    }
    m_complain(fmt::format("the system logger at {} is not keeping up: {} lines wait for it, and more are lost",
                           SOCKET_PATH, CAPACITY));
}

bool SystemLog::wait(std::chrono::milliseconds limit)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::uint64_t nWanted = m_nQueued;
    return m_handedOver.wait_for(lock, std::min(limit, LONGEST_WAIT),
                                 [this, nWanted] { return m_nHandedOver >= nWanted; });
}

std::uint64_t SystemLog::lostLines() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_nLost;
}

void SystemLog::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        m_written.wait(lock, [this] { return !m_lines.empty(); });
        const Line& line = m_lines.front(); // stays in its place while others are added
        lock.unlock();
        handOver(line);
        lock.lock();
        m_lines.pop_front();
        ++m_nHandedOver;
        m_bLossTold = m_bLossTold && !m_lines.empty();
        m_handedOver.notify_all();
    }
}

void SystemLog::handOver(const Line& line) noexcept
{
    try {
        lookForLogger();
    }
    catch (const std::exception&) {
        // The words for the trouble are lost; the line need not be.
        m_bLoggerMissing = true;
    }
    // Also while no logger was found: one that has come since gets the line.
    syslog(line.nPriority, "%s", line.sText.c_str());
}

void SystemLog::lookForLogger()
{
    const auto now = std::chrono::steady_clock::now();
    if (m_probedAt && now - *m_probedAt < PROBE_INTERVAL) {
        return;
    }
    m_probedAt = now;
    const int nError = probeSystemLog(SOCKET_PATH);
    const bool bWasMissing = std::exchange(m_bLoggerMissing, nError != 0);
    if (m_bLoggerMissing && !bWasMissing) {
        m_complain(fmt::format("no system logger at {} ({}): lines for it are lost until there is one", SOCKET_PATH,
                               std::generic_category().message(nError)));
    }
}
