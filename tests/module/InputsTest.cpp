// Frequency, temperature, limits, production test, gains, interval and the read-outs.
#include "tests/support/ControllerTest.h"

namespace
{
class InputsTest : public ControllerTest
{
protected:
    void expectTrace(int nLevel, const std::string& sText)
    {
        EXPECT_EQ(m_platform.traceTexts(nLevel), Texts{sText});
        EXPECT_EQ(m_platform.traces().size(), 1U);
        EXPECT_EQ(m_platform.traces().back().sSourcePath, CONTROLLER_SOURCE_PATH);
        EXPECT_EQ(m_platform.traces().back().sGroup, "RQX.OPC");
        m_platform.clearRecords();
    }
};
} // namespace

TEST_F(InputsTest, AFrequencyNotificationStoresTheHandlersFrequency)
{
    m_frequency.change(7000);
    EXPECT_EQ(controller().m_nTxFrequency, 7000);
    expectTrace(5, "onChange(): Tx frequency changed from 0 to 7000");
    m_frequency.change(-5);
    expectTrace(5, "onChange(): Tx frequency changed from 7000 to -5");
    EXPECT_EQ(m_platform.calls(), Texts{});
}

TEST_F(InputsTest, AnUnchangedFrequencyIsTracedAsWell)
{
    m_frequency.change(7000);
    m_platform.clearRecords();
    m_frequency.change(7000);
    expectTrace(5, "onChange(): Tx frequency changed from 7000 to 7000");
}

TEST_F(InputsTest, AFrequencyNotificationReadsTheHandlerOnce)
{
    m_frequency.m_nChangePerRead = 1;
    m_frequency.change(7000);
    EXPECT_EQ(m_frequency.m_nReads, 1);
    EXPECT_EQ(controller().m_nTxFrequency, 7000);
}

TEST_F(InputsTest, ATemperatureNotificationStoresAndTraces)
{
    build(3);
    for (const int nTemperature : {45, 45, -40, INT32_MIN}) {
        FakeTemperatureHandler::report(nTemperature);
        EXPECT_EQ(controller().m_nTemperature, nTemperature);
        expectTrace(5, "notifyTemperature(): New temperature = " + std::to_string(nTemperature) + " for channel 3");
    }
    EXPECT_EQ(m_platform.calls(), Texts{});
}

TEST_F(InputsTest, ATemperatureForNobodyIsIgnored)
{
    OutputPowerController::staticNotifyTemperature(nullptr, 45);
    EXPECT_TRUE(m_platform.traces().empty());
    EXPECT_EQ(controller().m_nTemperature, 0);
}

TEST_F(InputsTest, TheLowerLimitIsStoredTwiceTheUpperOneOnlyTraced)
{
    controller().m_nPctrlMax = 1234;
    controller().setTxPminPmax(-500, 3000);
    EXPECT_EQ(controller().m_nTxPmin, -500);
    EXPECT_EQ(controller().m_nPctrlMin, -500);
    EXPECT_EQ(controller().m_nPctrlMax, 1234);
    expectTrace(5, "setTxPminPmax(): txPmin= -500, txPmax = 3000");
    controller().setTxPminPmax(INT32_MIN, 4294966296U);
    expectTrace(5, "setTxPminPmax(): txPmin= -2147483648, txPmax = 4294966296");
}

TEST_F(InputsTest, AnUnknownLowerLimitStopsTheMachineUntilOneIsSet)
{
    (void)controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
    controller().setTxPminPmax(OPC_POWER_UNKNOWN, 0);
    EXPECT_EQ(controller().regulate(0), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_INITIATED);
    controller().setTxPminPmax(-500, 0);
    EXPECT_EQ(controller().regulate(0), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_IN_PROGRESS);
}

TEST_F(InputsTest, ProductionTestSettingsAreStoredAndTheModeIsHandedOn)
{
    for (const int nMode : {0, 1, 2, 77, -1}) {
        for (const bool bOn : {true, false}) {
            const auto eMode = static_cast<ERfDetectorLoopMode>(nMode);
            EXPECT_EQ(controller().setProductionTestSettings(bOn, eMode), EAF_OK);
            EXPECT_EQ(controller().m_bProductionTestMode, bOn);
            EXPECT_EQ(controller().m_eRfDetectorLoopMode, eMode);
            EXPECT_EQ(takeCalls(), Texts{"setProductionTestSettings(" + std::to_string(nMode) + ")"});
        }
    }
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_F(InputsTest, ProductionTestSettingsAreKeptWhenTheHandlerFails)
{
    for (const EOPHResult nResult : {EAF_FAILED, INT32_MAX}) {
        m_handler.setResult(EHandlerCall::SetProductionTestSettings, nResult);
        EXPECT_EQ(controller().setProductionTestSettings(true, eRF_DETECTOR_LOOP_MODE_OPEN), EAF_FAILED);
        expectTrace(1, "setProductionTestSettings(): failed to set production test settings in OPH");
    }
    EXPECT_TRUE(controller().m_bProductionTestMode);
    closeLoop(300, -200, 300);
    m_handler.m_nPmeasured = 0;
    EXPECT_EQ(controller().regulate(5000), EAF_OK);
    EXPECT_EQ(m_platform.callsOf("calculateDetectorUsage"), Texts{"calculateDetectorUsage(300, 2)"});
    EXPECT_EQ(controller().m_nPctrl, 1300) << "beyond the upper limit";
}

TEST_F(InputsTest, ProductionTestSettingsBelow0x8000AreSuccesses)
{
    for (const EOPHResult nResult : {0x7FFF, -1}) {
        m_handler.setResult(EHandlerCall::SetProductionTestSettings, nResult);
        EXPECT_EQ(controller().setProductionTestSettings(true, eRF_DETECTOR_LOOP_MODE_OPEN), EAF_OK);
    }
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_F(InputsTest, EveryGainIsStoredInItsOwnPlace)
{
    for (int nDetector = 0; nDetector < 3; ++nDetector) {
        for (int nState = 0; nState < 9; ++nState) {
            controller().setGain(static_cast<EOPHDetectorState>(nDetector), static_cast<EOPCState>(nState),
                                 100 * nDetector + nState - 150);
        }
    }
    for (int nDetector = 0; nDetector < 3; ++nDetector) {
        for (int nState = 0; nState < 9; ++nState) {
            const int nGain = 100 * nDetector + nState - 150;
            EXPECT_EQ(controller().getGain(static_cast<EOPHDetectorState>(nDetector), static_cast<EOPCState>(nState)),
                      nGain);
            EXPECT_EQ(controller().m_anGain[nDetector][nState], nGain);
        }
    }
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_F(InputsTest, TheControlPowerReadsAsOffUnlessTheStatusIsOn)
{
    controller().m_nPctrl = 444;
    for (int nState = 0; nState <= 9; ++nState) {
        controller().m_eOPCState = static_cast<EOPCState>(nState);
        controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_OFF;
        EXPECT_EQ(controller().getPctrl(), OPC_POWER_OFF);
        controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
        EXPECT_EQ(controller().getPctrl(), 444);
    }
}

TEST_F(InputsTest, ReadOutsGiveTheirMembers)
{
    controller().m_eOPCState = eOPC_TX_ON_RAMPING;
    controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
    controller().m_nPmeasured = 55;
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_ON);
    EXPECT_EQ(controller().getPmeasured(), 55);
}

TEST_F(InputsTest, LogDataGivesEightMembersInOrder)
{
    controller().m_nPtarget = 1;
    controller().m_nPctrl = 2;
    controller().m_nPowerError = 3;
    controller().m_nPmeasured = 4;
    controller().m_nTxPmin = 5;
    controller().m_nPctrlMax = 6;
    controller().m_eOPCState = eOPC_TX_ON_RAMPING;
    controller().m_eOPHDetectorState = eOPH_DETECTOR_STATE_2;
    int values[6] = {};
    EOPCState eState = eOPC_UNDEFINED;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    controller().getLogData(&values[0], &values[1], &values[2], &values[3], &values[4], &values[5], &eState,
                            &eDetectorState);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(values[i], i + 1);
    }
    EXPECT_EQ(eState, eOPC_TX_ON_RAMPING);
    EXPECT_EQ(eDetectorState, eOPH_DETECTOR_STATE_2);
}

TEST_F(InputsTest, TheIntervalDecidesCountsAndStepLimit)
{
    const struct
    {
        int nInterval;
        unsigned int nTxOnInProgressCycles;
        unsigned int nRampingCycles;
        int nMaxPctrlStep;
    } cases[] = {
        {6, 3, 15, 10},
        {5, 3, 19, 20},
        {1, 23, 99, 20},
        {24, 0, 3, 20},
        {25, 171798691, 3, 20}, // 2^32 - 1 over 25
        {100, 42949672, 0, 20},
        {101, 42524427, 42524428, 20},
        {200, 21474835, 21474835, 20},
        {-1, 0, 0, 20}, // 25 and 101 over 2^32 - 1
        {-6, 0, 0, 20},
        {INT32_MIN, 1, 1, 20}, // 2^31 + 24 over 2^31
    };
    for (const auto& interval : cases) {
        controller().setRegulatorInterval(interval.nInterval);
        EXPECT_EQ(controller().m_nRegulatorInterval, interval.nInterval);
        EXPECT_EQ(controller().m_nTxOnInProgressCycles, interval.nTxOnInProgressCycles) << interval.nInterval;
        EXPECT_EQ(controller().m_nRampingCycles, interval.nRampingCycles) << interval.nInterval;
        EXPECT_EQ(controller().m_nMaxPctrlStep, interval.nMaxPctrlStep);
    }
    EXPECT_TRUE(m_platform.traces().empty());
    EXPECT_EQ(m_platform.calls(), Texts{});
}
