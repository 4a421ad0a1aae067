#include "Unit/Process/CommandQueue.h"

#include "Unit/Clock/MonotonicTime.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <exception>
#include <system_error>
#include <thread>

namespace
{
// Where the steps leave no time at all, a command gets its turn after so many of them all the same.
constexpr unsigned int MAX_GAPS_WITHOUT_TIME = 16;
} // namespace

CommandQueue::CommandQueue() : m_nWakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_nWakeUp < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

CommandQueue::~CommandQueue()
{
    close();
    ::close(m_nWakeUp);
}

void CommandQueue::run(const std::function<void()>& function)
{
    if (m_bInCaller) {
        m_server.check("CommandQueue::run");
    }
    else {
        m_server.refuseOwner("CommandQueue::run");
    }
    Command command{function, {}};
    sem_init(&command.done, 0, 0);
    ++m_nCallers; // before the look at m_bClosed: close() goes on refusing while there are callers
    if (m_bClosed) {
        refuse(command);
    }
    else if (m_bInCaller) {
        execute(command);
    }
    else {
        add(command);
    }
    while (sem_wait(&command.done) != 0 && errno == EINTR) {
    }
    sem_destroy(&command.done);
    --m_nCallers;
    if (command.bRefused) {
        throw RegulationOver();
    }
    if (!command.sError.empty()) {
        throw std::runtime_error(command.sError);
    }
}

void CommandQueue::refuse(Command& command)
{
    command.bRefused = true;
    sem_post(&command.done);
}

void CommandQueue::add(Command& command)
{
    command.pNext = m_pAdded;
    while (!m_pAdded.compare_exchange_weak(command.pNext, &command)) {
    }
    if (m_bSleeping.exchange(false)) {
        eventfd_write(m_nWakeUp, 1);
    }
}

CommandQueue::Command* CommandQueue::takeNext()
{
    if (m_pTaken == nullptr) {
        // All at once, so that no command can come back between a look at the list and its change.
        for (Command* pAdded = m_pAdded.exchange(nullptr); pAdded != nullptr;) {
            Command* const pOlder = pAdded->pNext;
            pAdded->pNext = m_pTaken;
            m_pTaken = pAdded;
            pAdded = pOlder;
        }
    }
    Command* const pNext = m_pTaken;
    if (pNext != nullptr) {
        m_pTaken = pNext->pNext;
    }
    return pNext;
}

void CommandQueue::execute(Command& command)
{
    const std::int64_t nBeginNs = monotonicNs();
    try {
        command.function();
    }
    catch (const std::exception& error) {
        command.sError = error.what();
    }
    catch (...) {
        command.sError = "unknown error";
    }
    ++m_statistics.nCommands;
    m_statistics.nLongestNs = std::max(m_statistics.nLongestNs, monotonicNs() - nBeginNs);
    sem_post(&command.done); // the command is its caller's again
}

bool CommandQueue::serveOne()
{
    Command* const pCommand = takeNext();
    if (pCommand == nullptr) {
        return false;
    }
    execute(*pCommand);
    return true;
}

void CommandQueue::serveUntil(std::int64_t nLatestStartNs, std::int64_t nEndNs)
{
    m_server.check("CommandQueue::serveUntil");
    if (monotonicNs() >= nLatestStartNs) {
        if (++m_nGapsWithoutTime > MAX_GAPS_WITHOUT_TIME) {
            m_nGapsWithoutTime = 0;
            serveOne();
        }
        return;
    }
    m_nGapsWithoutTime = 0;
    while (monotonicNs() < nLatestStartNs) {
        if (!serveOne()) {
            waitForCommand(nEndNs);
        }
    }
}

void CommandQueue::waitForCommand(std::int64_t nEndNs)
{
    m_bSleeping = true;
    if (m_pAdded == nullptr) { // or its caller may have seen m_bSleeping too early
        const std::int64_t nLeftNs = std::max<std::int64_t>(nEndNs - monotonicNs(), 0);
        const timespec left = toTimespec(nLeftNs);
        pollfd wakeUp{m_nWakeUp, POLLIN, 0};
        if (ppoll(&wakeUp, 1, &left, nullptr) > 0) {
            eventfd_t nCount = 0;
            (void)eventfd_read(m_nWakeUp, &nCount);
        }
    }
    m_bSleeping = false;
}

void CommandQueue::close()
{
    m_bClosed = true;
    while (m_nCallers > 0) {
        while (Command* const pCommand = takeNext()) {
            refuse(*pCommand);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    m_server.handOver();
}
