#include "Unit/Process/CommandQueue.h"

#include "Unit/Clock/MonotonicTime.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

namespace
{
constexpr std::int64_t MILLISECOND_NS = 1'000'000;

/** Serves in a thread of its own until it is told to end. */
class Server
{
public:
    explicit Server(CommandQueue& queue)
        : m_thread([&queue](const std::stop_token& end) {
              while (!end.stop_requested()) {
                  const std::int64_t nNowNs = monotonicNs();
                  queue.serveUntil(nNowNs + 4 * MILLISECOND_NS, nNowNs + 6 * MILLISECOND_NS);
              }
              queue.close();
          })
    {}
    std::thread::id id() { return m_thread.get_id(); }
    void end() { m_thread.request_stop(); }

private:
    std::jthread m_thread;
};
} // namespace

TEST(CommandQueue, RunsACommandInTheThreadThatServesAndWaitsForIt)
{
    CommandQueue queue;
    Server server(queue);
    std::thread::id ran;
    queue.run([&ran] { ran = std::this_thread::get_id(); });
    EXPECT_EQ(ran, server.id());
}

TEST(CommandQueue, NeverRunsTwoCommandsAtOnceWhoeverAsks)
{
    CommandQueue queue;
    Server server(queue);
    constexpr int CALLERS = 8;
    constexpr int CALLS = 500;
    int nCount = 0; // no atomic: the serving thread alone touches it
    std::vector<std::jthread> callers;
    callers.reserve(CALLERS);
    for (int nCaller = 0; nCaller < CALLERS; ++nCaller) {
        callers.emplace_back([&queue, &nCount] {
            for (int nCall = 0; nCall < CALLS; ++nCall) {
                queue.run([&nCount] { ++nCount; });
            }
        });
    }
    callers.clear();
    int nSeen = 0;
    queue.run([&] { nSeen = nCount; });
    EXPECT_EQ(nSeen, CALLERS * CALLS);
    std::uint64_t nCommands = 0;
    queue.run([&] { nCommands = queue.statistics().nCommands; });
    EXPECT_EQ(nCommands, CALLERS * CALLS + 1U);
}

TEST(CommandQueue, HandsAnExceptionsTextToTheCaller)
{
    CommandQueue queue;
    Server server(queue);
    try {
        queue.run([] { throw std::invalid_argument("no such thing"); });
        FAIL();
    }
    catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "no such thing");
    }
    EXPECT_THROW(queue.run([] { throw 1; }), std::runtime_error);
    queue.run([] {}); // the thread still serves
}

TEST(CommandQueue, RefusesWhatWaitsAndWhatComesOnceItIsClosed)
{
    CommandQueue queue;
    std::vector<std::jthread> callers;
    callers.reserve(5);
    std::atomic<int> nRefused{0};
    for (int nCaller = 0; nCaller < 4; ++nCaller) {
        callers.emplace_back([&] {
            EXPECT_THROW(queue.run([] { ADD_FAILURE(); }), RegulationOver);
            ++nRefused;
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10)); // nobody serves
    EXPECT_EQ(nRefused, 0);
    queue.close();
    callers.clear();
    EXPECT_EQ(nRefused, 4);
    EXPECT_THROW(queue.run([] { ADD_FAILURE(); }), RegulationOver);
}

TEST(CommandQueue, AnswersEveryCallerWhenTheServerEndsAmongThem)
{
    for (int nRound = 0; nRound < 20; ++nRound) {
        CommandQueue queue;
        Server server(queue);
        std::vector<std::jthread> callers;
        callers.reserve(5);
        for (int nCaller = 0; nCaller < 4; ++nCaller) {
            callers.emplace_back([&queue] {
                try {
                    for (;;) {
                        queue.run([] {});
                    }
                }
                catch (const RegulationOver&) {
                    return;
                }
            });
        }
        server.end();
        callers.clear(); // joins: nobody is left waiting
    }
}

TEST(CommandQueue, RunsCommandsInTheOrderTheyCame)
{
    CommandQueue queue;
    std::vector<int> order;
    std::vector<std::jthread> callers;
    callers.reserve(5);
    for (int nCaller = 0; nCaller < 5; ++nCaller) {
        callers.emplace_back([&queue, &order, nCaller] { queue.run([&order, nCaller] { order.push_back(nCaller); }); });
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // it waits
    }
    Server server(queue);
    callers.clear();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(CommandQueue, BeginsNoCommandAfterTheLatestStart)
{
    CommandQueue queue;
    std::atomic<bool> bRan{false};
    std::jthread caller([&] { queue.run([&bRan] { bRan = true; }); });
    std::this_thread::sleep_for(std::chrono::milliseconds(10)); // it waits
    const std::int64_t nNowNs = monotonicNs();
    queue.serveUntil(nNowNs, nNowNs + MILLISECOND_NS);
    EXPECT_FALSE(bRan);
    queue.serveUntil(monotonicNs() + 1000 * MILLISECOND_NS, monotonicNs());
    EXPECT_TRUE(bRan);
}

TEST(CommandQueue, GivesACommandItsTurnThoughThereIsNeverTime)
{
    CommandQueue queue;
    std::atomic<bool> bRan{false};
    std::jthread caller([&] { queue.run([&bRan] { bRan = true; }); });
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    int nGaps = 0;
    while (!bRan && nGaps < 100) {
        ++nGaps;
        queue.serveUntil(0, 0);
    }
    EXPECT_EQ(nGaps, 17);
}

TEST(CommandQueue, MeasuresTheLongestCommand)
{
    CommandQueue queue;
    {
        Server server(queue);
        queue.run([] { std::this_thread::sleep_for(std::chrono::milliseconds(5)); });
        queue.run([] {});
    }
    EXPECT_EQ(queue.statistics().nCommands, 2U);
    EXPECT_GE(queue.statistics().nLongestNs, 5 * MILLISECOND_NS);
}

TEST(CommandQueue, WaitsOutTheGapWhenNothingComes)
{
    CommandQueue queue;
    const std::int64_t nEndNs = monotonicNs() + 5 * MILLISECOND_NS;
    queue.serveUntil(nEndNs - MILLISECOND_NS, nEndNs);
    EXPECT_GE(monotonicNs(), nEndNs - MILLISECOND_NS);
}

TEST(CommandQueue, RunsCommandsOfARegulationWithASingleThreadInIt)
{
    CommandQueue queue;
    queue.executeInCaller();
    std::thread::id ran;
    queue.run([&ran] { ran = std::this_thread::get_id(); });
    EXPECT_EQ(ran, std::this_thread::get_id());
    EXPECT_EQ(queue.statistics().nCommands, 1U);
    EXPECT_THROW(queue.run([] { throw std::runtime_error("broken"); }), std::runtime_error);
    queue.close();
    EXPECT_THROW(queue.run([] {}), RegulationOver);
}
