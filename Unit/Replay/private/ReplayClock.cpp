#include "Unit/Replay/ReplayClock.h"

#include <condition_variable>
#include <exception>
#include <utility>

ReplayClock::ReplayClock(ReplayPlayer& player)
    : m_player(player), m_thread([this](const std::stop_token& stop) { play(stop); })
{}

std::string ReplayClock::takeTrouble()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_sTrouble, {});
}

void ReplayClock::play(const std::stop_token& stop)
{
    using Clock = std::chrono::steady_clock;
    std::mutex mutex;
    std::condition_variable_any never;
    Clock::time_point last = Clock::now();
    while (!stop.stop_requested()) {
        {
            std::unique_lock lock(mutex);
            never.wait_for(lock, stop, INTERVAL, [] { return false; });
        }
        const Clock::time_point now = Clock::now();
        try {
            m_player.advance(std::chrono::duration_cast<std::chrono::microseconds>(now - last));
        }
        catch (const std::exception& error) {
            const std::lock_guard lock(m_mutex);
            m_sTrouble = error.what();
        }
        last = now;
    }
}
