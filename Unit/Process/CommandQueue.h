/** @file
 * The way of other threads into the regulation thread.
 */
#pragma once

#include "Platform/Threads/ThreadRules.h"

#include <semaphore.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

/** Is thrown to whoever wants a command carried out when there is no regulation any more. */
class RegulationOver : public std::runtime_error
{
public:
    RegulationOver() : std::runtime_error("the unit is stopping") {}
};

/** What the commands so far came to. */
struct CommandStatistics
{
    std::uint64_t nCommands = 0;
    std::int64_t nLongestNs = 0; /**< the longest that a step may have had to wait for a command */
};

/**
 * Carries commands of other threads into the regulation thread, which runs them between two steps.
 *
 * So the controllers, which lock nothing, are never entered from two threads at once. Neither does the regulation
 * thread ever wait for another one here, since the queue is without locks, nor does it allocate: the queue is a list of
 * what the waiting threads hold.
 */
class CommandQueue
{
public:
    CommandQueue();
    ~CommandQueue();

    CommandQueue(const CommandQueue&) = delete;
    CommandQueue& operator=(const CommandQueue&) = delete;

    /**
     * Has a function run between two steps, and waits for it. Any thread but the regulation thread; under
     * executeInCaller() that thread only.
     * @param function must be short; it delays the next step if it is not
     * @throws RegulationOver when regulation ended before the function's turn
     * @throws std::runtime_error with the text of what the function threw
     */
    void run(const std::function<void()>& function);

    /** Says that the calling thread is the regulation thread, which is to serve. */
    void begin() const { m_server.check("CommandQueue::begin"); }

    /**
     * Runs what is waiting and what comes. The regulation thread.
     * @param nLatestStartNs monotonic time after which no command is begun
     * @param nEndNs monotonic time at which to return
     */
    void serveUntil(std::int64_t nLatestStartNs, std::int64_t nEndNs);

    /** From now on run() carries its function out itself: for a regulation whose thread is the only one. */
    void executeInCaller() { m_bInCaller = true; }

    bool isExecutedInCaller() const { return m_bInCaller; }

    /** Refuses what is waiting and what comes. The regulation thread at its end, or any once that has ended. */
    void close();

    /** The regulation thread, or any once that has ended. */
    const CommandStatistics& statistics() const
    {
        m_server.check("CommandQueue::statistics");
        return m_statistics;
    }

private:
    struct Command
    {
        const std::function<void()>& function;
        sem_t done;
        Command* pNext = nullptr;
        bool bRefused = false;
        std::string sError{};
    };

    static void refuse(Command& command);
    void add(Command& command);
    Command* takeNext();
    void execute(Command& command);
    bool serveOne();
    void waitForCommand(std::int64_t nEndNs);

    std::atomic<Command*> m_pAdded{nullptr}; // the latest first
    Command* m_pTaken = nullptr;             // the oldest first; the serving thread's
    int m_nWakeUp;                           // an event descriptor
    std::atomic<bool> m_bSleeping{false};    // the regulation thread is, so that it needs waking
    std::atomic<unsigned int> m_nCallers{0};
    std::atomic<bool> m_bClosed{false};
    bool m_bInCaller = false;
    unsigned int m_nGapsWithoutTime = 0;
    CommandStatistics m_statistics;
    [[no_unique_address]] OwnedByThread m_server; // the regulation thread, until it closes the queue
};
