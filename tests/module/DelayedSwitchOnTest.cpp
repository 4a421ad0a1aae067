// The delayed switch-on and the clock behind it.
#include "tests/module/ScriptedClock.h"
#include "tests/support/ControllerTest.h"

namespace
{
class DelayedSwitchOnTest : public ControllerTest
{
protected:
    int step() { return controller().handleOPCStateMachine(); }

    ScriptedClock m_clock{{100, 999000000}};
};
} // namespace

TEST_F(DelayedSwitchOnTest, TakesATimeStampFirst)
{
    enter(eOPC_DELAYED_TX_ON_INITIATED);
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_DELAYED_TX_ON_IN_PROGRESS);
    EXPECT_EQ(controller().m_tsDelayedTxOnStart.tv_sec, 100);
    EXPECT_EQ(controller().m_tsDelayedTxOnStart.tv_nsec, 999000000);
    EXPECT_EQ(m_platform.traceTexts(5), (Texts{"handleOPCStateMachine(): OPC: state DELAYED_TX_ON_INITIATED (3)",
                                               "handleOPCStateMachine(): eOPC_DELAYED_TX_ON_INITIATED"}));
    EXPECT_EQ(m_platform.calls(), Texts{});
}

TEST_F(DelayedSwitchOnTest, Waits1100Milliseconds)
{
    enter(eOPC_DELAYED_TX_ON_INITIATED);
    EXPECT_EQ(step(), EAF_OK);
    for (const long nMilliseconds : {0L, 1L, 1098L}) {
        m_clock.advanceMs(nMilliseconds);
        EXPECT_EQ(step(), EAF_OK);
        EXPECT_EQ(controller().getOPCState(), eOPC_DELAYED_TX_ON_IN_PROGRESS) << nMilliseconds;
    }
    m_platform.clearRecords();
    m_clock.advanceMs(1);
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_INITIATED);
    EXPECT_EQ(m_platform.calls(), Texts{}) << "the handler's first step belongs to the next call";
    EXPECT_EQ(m_platform.traceTexts(7), Texts{"handleOPCStateMachine(): eOPC_DELAYED_TX_ON_IN_PROGRESS"});
    EXPECT_EQ(m_platform.traceTexts(5), Texts{"handleOPCStateMachine(): OPC: state DELAYED_TX_ON_IN_PROGRESS (4)"});
}

TEST_F(DelayedSwitchOnTest, CountsWholeMillisecondsOnly)
{
    enter(eOPC_DELAYED_TX_ON_IN_PROGRESS);
    controller().m_tsDelayedTxOnStart = {100, 1};
    m_clock.set({101, 100000000});
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_DELAYED_TX_ON_IN_PROGRESS);
    m_clock.set({101, 100000001});
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_INITIATED);
}

TEST_F(DelayedSwitchOnTest, ATimeBeforeTheStampComparesUnsignedAndGoesOn)
{
    enter(eOPC_DELAYED_TX_ON_IN_PROGRESS);
    controller().m_tsDelayedTxOnStart = {101, 0};
    m_clock.set({100, 0});
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_INITIATED);
}

TEST_F(DelayedSwitchOnTest, ElapsedTimeIsTruncatedMilliseconds)
{
    const struct
    {
        timespec start;
        timespec now;
        unsigned int nElapsedMs;
    } cases[] = {
        {{5, 0}, {5, 0}, 0U},
        {{5, 0}, {5, 999999}, 0U},
        {{5, 0}, {5, 1000000}, 1U},
        {{5, 500000000}, {7, 250000000}, 1750U},
        {{5, 999999999}, {6, 0}, 0U},
        {{5, 1}, {6, 0}, 999U},
        {{5, 700}, {6, 700}, 1000U},
        {{0, 0}, {4294967, 295999999}, 4294967295U},
        {{0, 0}, {4294967, 296000000}, 0U},
        {{6, 0}, {5, 0}, 4294966296U},
    };
    for (const auto& elapsed : cases) {
        timespec start = elapsed.start;
        m_clock.set(elapsed.now);
        EXPECT_EQ(controller().calculateElapsedTimeMillisec(&start), elapsed.nElapsedMs) << elapsed.nElapsedMs;
        EXPECT_EQ(start.tv_sec, elapsed.start.tv_sec);
        EXPECT_EQ(start.tv_nsec, elapsed.start.tv_nsec);
    }
}
