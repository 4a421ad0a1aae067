#include "Unit/Http/private/Watchdog.h"

#include <algorithm>

using std::chrono::milliseconds;

namespace
{
milliseconds sweepInterval(const HttpLimits& limits)
{
    constexpr int SWEEPS_PER_LIMIT = 5;
    const milliseconds shortest = std::min<milliseconds>(limits.deadline, limits.inactivity);
    return std::clamp(shortest / SWEEPS_PER_LIMIT, milliseconds(10), milliseconds(250));
}
} // namespace

Watchdog::Watchdog(ConnectionBook& book, SafeHandler& handler, const HttpLimits& limits)
    : m_book(book), m_handler(handler), m_interval(sweepInterval(limits)),
      m_thread([this](const std::stop_token& stop) { watch(stop); })
{}

void Watchdog::stop()
{
    m_thread.request_stop();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Watchdog::watch(const std::stop_token& stop)
{
    while (m_book.waitForConnection(stop) && !stop.stop_requested()) {
        for (const LateConnection& late : m_book.shutDownLate()) {
            if (!late.sWhat.empty()) {
                m_handler.onTurnedAway(late.sAddress, late.sWhat);
            }
        }
        pause(stop);
    }
}

void Watchdog::pause(const std::stop_token& stop)
{
    std::unique_lock lock(m_mutex);
    m_never.wait_for(lock, stop, m_interval, [] { return false; });
}
