/** @file
 * The thread that ends connections that take too long.
 */
#pragma once

#include "Unit/Http/private/ConnectionBook.h"
#include "Unit/Http/private/SafeHandler.h"

#include <condition_variable>
#include <mutex>
#include <thread>

/** Looks through the book several times within each limit, as long as there are connections, from begin to end. */
class Watchdog
{
public:
    Watchdog(ConnectionBook& book, SafeHandler& handler, const HttpLimits& limits);

    /** Ends the thread. Harmless when it ended already. */
    void stop();

private:
    void watch(const std::stop_token& stop);
    void pause(const std::stop_token& stop);

    ConnectionBook& m_book;
    SafeHandler& m_handler;
    const std::chrono::milliseconds m_interval;
    std::mutex m_mutex;
    std::condition_variable_any m_never;
    std::jthread m_thread; // last, so that it ends before the rest goes
};
