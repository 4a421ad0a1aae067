/** @file
 * Lets a replay go on with the time.
 */
#pragma once

#include "Unit/Replay/ReplayPlayer.h"

#include <chrono>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

/** Plays on about thirty times a second while it stands, in a thread. */
class ReplayClock
{
public:
    static constexpr std::chrono::milliseconds INTERVAL{33};

    /** @param player must outlive the object */
    explicit ReplayClock(ReplayPlayer& player);

    /** @return what went wrong since the last call; empty when nothing did. Any thread */
    std::string takeTrouble();

private:
    void play(const std::stop_token& stop);

    ReplayPlayer& m_player;
    std::mutex m_mutex;
    std::string m_sTrouble;
    std::jthread m_thread; // last, since it uses the others
};
