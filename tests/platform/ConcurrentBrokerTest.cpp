#include "Platform/Broker/BrokerDirectory.h"
#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/Broker/InterfaceBroker.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

namespace
{

constexpr int THREADS = 4;
constexpr int ROUNDS = 500;

class SharedInterface : public virtual IInterface
{
};

template <class TCall> void runInThreads(TCall call)
{
    std::vector<std::thread> threads;
    threads.reserve(THREADS);
    for (int nThread = 0; nThread < THREADS; ++nThread) {
        threads.emplace_back([call, nThread] { call(nThread); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(ConcurrentBroker, LetsOneThreadWinAName)
{
    std::array<std::atomic<int>, ROUNDS> winners{};
    SharedInterface interface;
    runInThreads([&](int) {
        for (std::size_t nRound = 0; nRound < ROUNDS; ++nRound) {
            if (InterfaceBroker::getInstance().registerInterface("Race" + std::to_string(nRound), &interface) == EAF_OK)
            {
                ++winners[nRound];
            }
        }
    });
    for (std::size_t nRound = 0; nRound < ROUNDS; ++nRound) {
        EXPECT_EQ(winners[nRound], 1);
        EXPECT_EQ(InterfaceBroker::getInstance().unregisterInterface("Race" + std::to_string(nRound), &interface),
                  EAF_OK);
    }
}

TEST(ConcurrentBroker, ServesThreadsWithNamesOfTheirOwn)
{
    std::atomic<int> nWrong{0};
    runInThreads([&nWrong](int nThread) {
        const std::string sName = "Own" + std::to_string(nThread);
        SharedInterface interface;
        int nRecord = 0;
        void* pBroker = nullptr;
        CInterfaceBroker_GetInstance(&pBroker);
        for (int nRound = 0; nRound < ROUNDS; ++nRound) {
            void* pFound = nullptr;
            nWrong += InterfaceBroker::getInstance().registerInterface(sName, &interface) != EAF_OK;
            nWrong += CInterfaceBroker_RegisterInterface(pBroker, sName.c_str(), &nRecord) != EAF_OK;
            nWrong += InterfaceBroker::getInstance().getInterface(sName) != &interface;
            nWrong += CInterfaceBroker_GetInterface(pBroker, sName.c_str(), &pFound) != EAF_OK || pFound != &nRecord;
            nWrong += BrokerDirectory::publishedNames().empty();
            nWrong += InterfaceBroker::getInstance().unregisterInterface(sName, &interface) != EAF_OK;
            nWrong += CInterfaceBroker_UnregisterInterface(pBroker, sName.c_str(), &nRecord) != EAF_OK;
        }
        CInterfaceBroker_DestroyInstance(pBroker);
    });
    EXPECT_EQ(nWrong, 0);
    EXPECT_TRUE(BrokerDirectory::publishedNames().empty());
}

TEST(ConcurrentBroker, NotesWhatEveryThreadMissed)
{
    BrokerDirectory::clearMissedLookups();
    runInThreads([](int nThread) {
        for (int nRound = 0; nRound < ROUNDS; ++nRound) {
            InterfaceBroker::getInstance().getInterface("Missed" + std::to_string(nThread));
            InterfaceBroker::getInstance().getInterface("MissedByAll");
        }
    });
    EXPECT_EQ(BrokerDirectory::missedLookups().size(), THREADS + 1U);
    BrokerDirectory::clearMissedLookups();
}

} // namespace
