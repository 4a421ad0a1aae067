#include "Unit/Metrics/private/TransientLogFill.h"

#include "Platform/Broker/CInterfaceBroker.h"
#include "Platform/TestInterface/TestInterface.h"
#include "Unit/Clock/MonotonicTime.h"
#include "Unit/XmlRpc/XmlRpcValue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

namespace
{
constexpr unsigned int CHANNEL = 7;
constexpr const char* NAME = "TIManageOPCTransientLogCh7";
constexpr std::size_t MOST_SAMPLES = 5;

/** A transient log that answers every request as "Read", and a thread that carries commands out. */
class TransientLogFillTest : public testing::Test
{
protected:
    TransientLogFillTest()
    {
        m_record.vpThis = this;
        m_record.handle = [](void* vpThis, _xmlrpc_server*, _xmlrpc_request*, void*) -> XMLRPC_VALUE {
            return static_cast<TransientLogFillTest*>(vpThis)->answer();
        };
        CInterfaceBroker_RegisterInterface(this, NAME, &m_record);
        m_thread = std::jthread([this](const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                const std::int64_t nEndNs = monotonicNs() + 1'000'000;
                m_commands.serveUntil(nEndNs, nEndNs);
            }
        });
    }
    ~TransientLogFillTest() override { CInterfaceBroker_UnregisterInterface(this, NAME, nullptr); }
    TransientLogFillTest(const TransientLogFillTest&) = delete;
    TransientLogFillTest& operator=(const TransientLogFillTest&) = delete;

    XMLRPC_VALUE answer()
    {
        ++m_nReads;
        XmlRpcValue samples = makeXmlRpcArray("OPCLog");
        for (std::size_t n = 0; n < std::min<std::size_t>(m_logs.nTransientSteps, MOST_SAMPLES); ++n) {
            addXmlRpcValue(samples.get(), makeXmlRpcInt(nullptr, 1));
        }
        XmlRpcValue result = makeXmlRpcStruct(nullptr);
        addXmlRpcValue(result.get(), std::move(samples));
        return result.release();
    }

    void step(int nSteps)
    {
        for (int n = 0; n < nSteps; ++n) {
            m_logs.onRegulated();
        }
    }

    std::optional<std::size_t> fill() { return m_fill.read(m_commands, CHANNEL, m_logs); }

    LogActivity m_logs;
    int m_nReads = 0;
    TIMethodCStruct m_record{};
    CommandQueue m_commands;
    TransientLogFill m_fill;
    std::jthread m_thread;
};
} // namespace

TEST_F(TransientLogFillTest, AsksNothingOfALogThatIsEmpty)
{
    step(3); // while it does not run
    EXPECT_EQ(fill(), 0U);
    m_logs.onTransientLog("Enable");
    EXPECT_EQ(fill(), 0U);
    EXPECT_EQ(m_nReads, 0);
}

TEST_F(TransientLogFillTest, FollowsALogUntilItIsFull)
{
    m_logs.onTransientLog("Enable");
    step(3);
    EXPECT_EQ(fill(), 3U);
    EXPECT_EQ(fill(), 3U);
    EXPECT_EQ(m_nReads, 1) << "nothing was added";
    step(3);
    EXPECT_EQ(fill(), 5U);
    EXPECT_EQ(m_nReads, 2);
    step(10);
    EXPECT_EQ(fill(), 5U);
    EXPECT_EQ(fill(), 5U);
    EXPECT_EQ(m_nReads, 2) << "it is full";
}

TEST_F(TransientLogFillTest, BeginsAnewWithTheLog)
{
    m_logs.onTransientLog("Enable");
    step(20);
    EXPECT_EQ(fill(), 5U);
    m_logs.onTransientLog("Enable");
    EXPECT_EQ(fill(), 0U);
    step(1);
    EXPECT_EQ(fill(), 1U);
}

TEST_F(TransientLogFillTest, KeepsWhatAStoppedLogHolds)
{
    m_logs.onTransientLog("Enable");
    step(2);
    m_logs.onTransientLog("Disable");
    step(2);
    EXPECT_EQ(fill(), 2U);
    EXPECT_EQ(fill(), 2U);
    EXPECT_EQ(m_nReads, 1);
}

TEST_F(TransientLogFillTest, KnowsNothingOfALogThatNobodyPublished)
{
    CInterfaceBroker_UnregisterInterface(this, NAME, nullptr);
    m_logs.onTransientLog("Enable");
    step(1);
    EXPECT_FALSE(fill().has_value());
}

TEST_F(TransientLogFillTest, EndsWithTheRegulation)
{
    m_logs.onTransientLog("Enable");
    step(1);
    m_thread.request_stop();
    m_thread.join();
    m_commands.close();
    EXPECT_THROW(fill(), RegulationOver);
}
