#include "Unit/SafetyMonitor/MonitoredHandler.h"

#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "Unit/SafetyMonitor/ViolationStore.h"
#include "tests/support/AllocationCount.h"
#include "tests/support/RecordingOutputPowerHandler.h"
#include "tests/support/RecordingPlatform.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;

namespace
{
class MonitoredHandlerTest : public ::testing::Test
{
protected:
    void SetUp() override { RecordingPlatform::get().reset(); }
    void TearDown() override { RecordingPlatform::get().reset(); }

    static IOutputPowerHandlerCStruct& tableOf(IOutputPowerHandler& handler)
    {
        return *static_cast<IOutputPowerHandlerCStruct*>(handler.getCStruct());
    }

    RecordingOutputPowerHandler m_real;
    ViolationStore m_store;
    TransmitterRules m_rules{0, EHeardSides::HandlerOnly, m_store};
    MonitoredHandler m_monitored{tableOf(m_real), m_rules};
    IOutputPowerHandlerCStruct& m_table = tableOf(m_monitored);
};

int s_nReservedCalls = 0; // NOLINT: a reserved entry takes nothing to find a counter by

void reserved()
{
    ++s_nReservedCalls;
}

TEST_F(MonitoredHandlerTest, PassesArgumentsOn)
{
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    int32_t nA = 0;
    int32_t nB = 0;
    int32_t nC = 0;
    m_table.getPctrlLimits(m_table.vpThis, &nA, &nB);
    m_table.setTxState(m_table.vpThis, 2);
    m_table.setOutputPower(m_table.vpThis, -500, 300);
    m_table.setProductionTestSettings(m_table.vpThis, eRF_DETECTOR_LOOP_MODE_CLOSED);
    m_table.getReducedGainFromAmplifier(m_table.vpThis, 4, &nA);
    m_table.getTxPowerReadings(m_table.vpThis, &nA, &nB, &nC);
    m_table.calculateDetectorUsage(m_table.vpThis, 7, eRF_DETECTOR_LOOP_MODE_OPEN, &eDetectorState);
    m_table.getPmeasured(m_table.vpThis, &nA);
    m_table.setZembraMlmTrafTx(m_table.vpThis, true);
    m_table.setZembraMlmTrafTx(m_table.vpThis, false);
    EXPECT_THAT(RecordingPlatform::get().calls(),
                ElementsAre("getPctrlLimits", "setTxState(2)", "setOutputPower(-500, 300)",
                            "setProductionTestSettings(1)", "getReducedGainFromAmplifier(4)", "getTxPowerReadings",
                            "calculateDetectorUsage(7, 2)", "getPmeasured", "setZembraMlmTrafTx(true)",
                            "setZembraMlmTrafTx(false)"));
}

TEST_F(MonitoredHandlerTest, PassesOutputsBack)
{
    m_real.m_nPmeasured = 123;
    m_real.m_eDetectorState = eOPH_DETECTOR_STATE_2;
    int32_t nLower = 0;
    int32_t nUpper = 0;
    m_table.getPctrlLimits(m_table.vpThis, &nLower, &nUpper);
    EXPECT_EQ(nLower, -2000);
    EXPECT_EQ(nUpper, 2000);
    int32_t nReading = 0;
    int32_t nIfPower = 0;
    int32_t nRfGain = 0;
    m_table.getTxPowerReadings(m_table.vpThis, &nReading, &nIfPower, &nRfGain);
    EXPECT_THAT((std::array{nReading, nIfPower, nRfGain}), ElementsAre(11, 22, 33));
    int32_t nReducedGain = 0;
    m_table.getReducedGainFromAmplifier(m_table.vpThis, 5, &nReducedGain);
    EXPECT_EQ(nReducedGain, 5);
    int32_t nPmeasured = 0;
    m_table.getPmeasured(m_table.vpThis, &nPmeasured);
    EXPECT_EQ(nPmeasured, 123);
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    m_table.calculateDetectorUsage(m_table.vpThis, 0, eRF_DETECTOR_LOOP_MODE_NORMAL, &eDetectorState);
    EXPECT_EQ(eDetectorState, eOPH_DETECTOR_STATE_2);
}

TEST_F(MonitoredHandlerTest, LeavesOutputsAloneThatTheHandlerDoesNotWrite)
{
    m_real.setWritesOutputs(EHandlerCall::GetPctrlLimits, false);
    int32_t nLower = 41;
    int32_t nUpper = 42;
    m_table.getPctrlLimits(m_table.vpThis, &nLower, &nUpper);
    EXPECT_EQ(nLower, 41);
    EXPECT_EQ(nUpper, 42);
}

TEST_F(MonitoredHandlerTest, PassesResultsBack)
{
    for (int nCall = 0; nCall < static_cast<int>(EHandlerCall::Count); ++nCall) {
        m_real.setResult(static_cast<EHandlerCall>(nCall), 0x9000 + nCall);
    }
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    int32_t nA = 0;
    EXPECT_EQ(m_table.setOutputPower(m_table.vpThis, 0, 0), 0x9000);
    EXPECT_EQ(m_table.setTxState(m_table.vpThis, 1), 0x9001);
    EXPECT_EQ(m_table.setProductionTestSettings(m_table.vpThis, eRF_DETECTOR_LOOP_MODE_NORMAL), 0x9002);
    EXPECT_EQ(m_table.getReducedGainFromAmplifier(m_table.vpThis, 1, &nA), 0x9003);
    EXPECT_EQ(m_table.getTxPowerReadings(m_table.vpThis, &nA, &nA, &nA), 0x9004);
    EXPECT_EQ(m_table.calculateDetectorUsage(m_table.vpThis, 0, eRF_DETECTOR_LOOP_MODE_NORMAL, &eDetectorState),
              0x9005);
    EXPECT_EQ(m_table.getPmeasured(m_table.vpThis, &nA), 0x9006);
    EXPECT_EQ(m_table.setZembraMlmTrafTx(m_table.vpThis, true), 0x9007);
    EXPECT_EQ(m_table.getPctrlLimits(m_table.vpThis, &nA, &nA), 0x9008);
}

TEST_F(MonitoredHandlerTest, RefusesANullHandlerAsOthersDo)
{
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    int32_t nA = 0;
    EXPECT_EQ(m_table.setOutputPower(nullptr, 0, 0), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.setTxState(nullptr, 1), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.setProductionTestSettings(nullptr, eRF_DETECTOR_LOOP_MODE_NORMAL), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.getReducedGainFromAmplifier(nullptr, 1, &nA), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.getTxPowerReadings(nullptr, &nA, &nA, &nA), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.calculateDetectorUsage(nullptr, 0, eRF_DETECTOR_LOOP_MODE_NORMAL, &eDetectorState),
              EAF_NULL_POINTER);
    EXPECT_EQ(m_table.getPmeasured(nullptr, &nA), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.setZembraMlmTrafTx(nullptr, true), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.getPctrlLimits(nullptr, &nA, &nA), EAF_NULL_POINTER);
    EXPECT_TRUE(RecordingPlatform::get().calls().empty());
    EXPECT_EQ(m_store.total(), 0U);
}

TEST_F(MonitoredHandlerTest, PassesNullOutputsOnToTheHandler)
{
    m_real.setWritesOutputs(EHandlerCall::GetPmeasured, false);
    m_real.setResult(EHandlerCall::GetPmeasured, EAF_NULL_POINTER);
    EXPECT_EQ(m_table.getPmeasured(m_table.vpThis, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_real.callCount(EHandlerCall::GetPmeasured), 1U);
}

TEST_F(MonitoredHandlerTest, HasTheReservedEntriesOfTheOtherTable)
{
    IOutputPowerHandlerCStruct real = tableOf(m_real);
    real.reserved2 = &reserved;
    real.reserved6 = &reserved;
    real.reserved12 = &reserved;
    real.reserved3 = nullptr;
    MonitoredHandler monitored(real, m_rules);
    const IOutputPowerHandlerCStruct& table = tableOf(monitored);
    s_nReservedCalls = 0;
    table.reserved2();
    table.reserved6();
    table.reserved12();
    EXPECT_EQ(s_nReservedCalls, 3);
    EXPECT_EQ(table.reserved3, nullptr);
}

TEST_F(MonitoredHandlerTest, HasNoEntryThatTheOtherTableLacks)
{
    IOutputPowerHandlerCStruct real{};
    MonitoredHandler monitored(real, m_rules);
    const IOutputPowerHandlerCStruct& table = tableOf(monitored);
    EXPECT_EQ(table.setOutputPower, nullptr);
    EXPECT_EQ(table.setTxState, nullptr);
    EXPECT_EQ(table.getPctrlLimits, nullptr);
    EXPECT_EQ(table.vpThis, &monitored);
}

TEST_F(MonitoredHandlerTest, LetsTheRulesHear)
{
    m_table.setOutputPower(m_table.vpThis, -500, 300);
    ASSERT_EQ(m_store.kept(), 1U);
    EXPECT_EQ(m_store.at(0).eRule, ESafetyRule::PowerWhileOff);
    EXPECT_EQ(callText(m_store.at(0).calls[0]), "step 0: setOutputPower(-500, 300)");
}

TEST_F(MonitoredHandlerTest, AllocatesNothing)
{
    RecordingPlatform::get().setQuiet(true);
    int32_t nA = 0;
    const std::size_t nBefore = allocationCount();
    for (int nTime = 0; nTime < 100; ++nTime) {
        m_table.setOutputPower(m_table.vpThis, 0, 0);
        m_table.getPmeasured(m_table.vpThis, &nA);
        m_table.setTxState(m_table.vpThis, 4);
    }
    EXPECT_EQ(allocationCount(), nBefore);
}
} // namespace
