// The ramp of the control power.
#include "tests/support/ControllerTest.h"

namespace
{
class RampTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
        controller().m_nTxPmin = -5000;
        controller().m_nPctrlMax = 5000;
        controller().m_nRampingCount = 15;
        enter(eOPC_TX_ON_RAMPING);
    }

    /** Takes a ramp step at this control power with this error. */
    int ramp(int nPctrl, int nPowerError)
    {
        controller().m_nPctrl = nPctrl;
        controller().m_nPmeasured = nPctrl;
        controller().m_nPtarget = nPctrl + nPowerError;
        return controller().handleOPCStateMachine();
    }

    RecordingObservers m_observers;
};
} // namespace

TEST_F(RampTest, TakesTheHandlersStepMovesThePowerAndTellsItToEveryList)
{
    controller().m_eRfDetectorLoopMode = eRF_DETECTOR_LOOP_MODE_OPEN;
    controller().m_nLastNotifiedPctrl = 1;
    controller().m_nLastNotifiedPtarget = 2;
    controller().m_nLastNotifiedPredictedPctrl = 3;
    EXPECT_EQ(ramp(100, 1000), EAF_OK);
    EXPECT_EQ(m_platform.calls(), (Texts{"setTxState(4)", "calculateDetectorUsage(100, 2)", "setOutputPower(300, 1100)",
                                         "pctrl(0, 300)", "ptarget(0, 300)", "predictedPctrl(0, 300)"}));
    EXPECT_EQ(m_platform.traceTexts(5), (Texts{"handleOPCStateMachine(): OPC: state TX_ON_RAMPING (7)",
                                               "handleOPCStateMachine(): eOPC_TX_ON_RAMPING"}));
    EXPECT_EQ(controller().m_nPowerError, 1000);
    EXPECT_EQ(controller().m_nRampingCount, 14);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_OFF);
    EXPECT_EQ(controller().m_nLastNotifiedPctrl, 1);
    EXPECT_EQ(controller().m_nLastNotifiedPtarget, 2);
    EXPECT_EQ(controller().m_nLastNotifiedPredictedPctrl, 3);
}

TEST_F(RampTest, TellsAnUnchangedPowerAsWell)
{
    controller().setGain(eOPH_DETECTOR_STATE_0, eOPC_TX_ON_RAMPING, 0);
    EXPECT_EQ(ramp(100, 1000), EAF_OK);
    m_platform.clearRecords();
    EXPECT_EQ(ramp(100, 1000), EAF_OK);
    EXPECT_EQ(m_platform.calls().size(), 6U);
}

TEST_F(RampTest, RoundsPositiveStepsToNearestAndNegativeOnesTowardsZero)
{
    const struct
    {
        int nPowerError;
        int nStep;
    } cases[] = {{149, 30},   {-149, -29}, {147, 29},   {148, 30},   {102, 20},   {103, 21},   {-103, -20},
                 {-150, -29}, {-151, -29}, {-152, -29}, {-153, -30}, {-155, -30}, {1000, 200}, {-1000, -199}};
    for (const auto& step : cases) {
        enter(eOPC_TX_ON_RAMPING);
        controller().m_nRampingCount = 15;
        EXPECT_EQ(ramp(0, step.nPowerError), EAF_OK);
        EXPECT_EQ(controller().m_nPctrl, step.nStep) << step.nPowerError;
    }
}

TEST_F(RampTest, EndsAtAnErrorOfAHundredOnEitherSide)
{
    const std::pair<int, bool> cases[] = {{100, true},  {-100, true},  {0, true},     {99, true},
                                          {101, false}, {-101, false}, {5000, false}, {-5000, false}};
    for (const auto& [nPowerError, bEnds] : cases) {
        enter(eOPC_TX_ON_RAMPING);
        controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_OFF;
        controller().m_nRampingCount = 15;
        EXPECT_EQ(ramp(0, nPowerError), EAF_OK);
        EXPECT_EQ(controller().getOPCState(), bEnds ? eOPC_TX_ON : eOPC_TX_ON_RAMPING) << nPowerError;
        EXPECT_EQ(controller().getTxPowerActualStatus(), bEnds ? eTX_POWER_ACTUAL_ON : eTX_POWER_ACTUAL_OFF);
    }
}

TEST_F(RampTest, TheEndEnablesTrafficAfterTheObserversAndTracesTheMilestone)
{
    EXPECT_EQ(ramp(0, 50), EAF_OK);
    EXPECT_EQ(m_platform.calls().back(), "setZembraMlmTrafTx(true)");
    EXPECT_EQ(m_platform.calls().size(), 7U);
    EXPECT_EQ(m_platform.traceTexts(4), Texts{"handleOPCStateMachine():   TX ON"});
    EXPECT_EQ(m_platform.traceTexts(5).back(), "handleOPCStateMachine(): OPC: state TX_ON (8)");
    const std::vector<RecordedTrace> traces = m_platform.traces();
    EXPECT_EQ(traces[traces.size() - 2].nCallsBefore, 6U);
    EXPECT_EQ(traces.back().nCallsBefore, 7U);
}

TEST_F(RampTest, AFailureToEnableTrafficIsTracedOnly)
{
    m_handler.setResult(EHandlerCall::SetZembraMlmTrafTx, EAF_FAILED);
    EXPECT_EQ(ramp(0, 50), EAF_OK);
    EXPECT_EQ(m_platform.traceTexts(1), Texts{"handleOPCStateMachine(): failed to enable Zembra Mlm Traf TX in OPH"});
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_ON);
    EXPECT_EQ(m_platform.traceTexts(5).back(), "handleOPCStateMachine(): OPC: state TX_ON (8)");
}

TEST_F(RampTest, TheSixteenthStepEndsItWhateverTheError)
{
    controller().m_nRampingCount = 15;
    for (int i = 1; i <= 15; ++i) {
        EXPECT_EQ(ramp(0, 3000), EAF_OK);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING) << i;
        EXPECT_EQ(controller().m_nRampingCount, 15 - i);
    }
    EXPECT_EQ(ramp(0, 3000), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_ON);
    EXPECT_EQ(m_platform.traceTexts(4), Texts{"handleOPCStateMachine():   TX ON"});
    EXPECT_EQ(m_platform.calls().back(), "setZembraMlmTrafTx(true)");
}

TEST_F(RampTest, TheLastStepOfARampOutOfTimeUsesTheGainOfTheClosedLoop)
{
    m_handler.m_eDetectorState = eOPH_DETECTOR_STATE_2;
    controller().setGain(eOPH_DETECTOR_STATE_2, eOPC_TX_ON_RAMPING, 10);
    controller().setGain(eOPH_DETECTOR_STATE_2, eOPC_TX_ON, 40);
    controller().m_nRampingCount = 1;
    EXPECT_EQ(ramp(0, 1000), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 100);
    EXPECT_EQ(ramp(0, 1000), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 400);
}

TEST_F(RampTest, AStepThatEndsByItsErrorUsesTheGainOfTheRamp)
{
    controller().setGain(eOPH_DETECTOR_STATE_0, eOPC_TX_ON_RAMPING, 10);
    controller().setGain(eOPH_DETECTOR_STATE_0, eOPC_TX_ON, 40);
    EXPECT_EQ(ramp(0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 10);
}

TEST_F(RampTest, AHandlerFailureInTheLastStepLeavesTheTransmitterOn)
{
    for (const EHandlerCall eCall : {EHandlerCall::CalculateDetectorUsage, EHandlerCall::SetOutputPower}) {
        enter(eOPC_TX_ON_RAMPING);
        controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_OFF;
        controller().m_nRampingCount = 0;
        m_platform.clearRecords();
        m_handler.setResultOfCall(eCall, 1, EAF_FAILED);
        EXPECT_EQ(ramp(0, 3000), EAF_FAILED);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);
        EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_ON);
        EXPECT_TRUE(m_platform.traceTexts(4).empty());
        EXPECT_EQ(m_platform.callsOf("setZembraMlmTrafTx"), Texts{});
    }
    m_platform.clearRecords();
    EXPECT_EQ(controller().regulate(0), EAF_OK);
    EXPECT_EQ(m_platform.calls().front(), "getPmeasured") << "the next call is a closed-loop step";
}

TEST_F(RampTest, AFailureOfTheFirstCallInTheLastStepKeepsTheRamp)
{
    controller().m_nRampingCount = 0;
    m_handler.setResult(EHandlerCall::SetTxState, EAF_FAILED);
    EXPECT_EQ(ramp(0, 3000), EAF_FAILED);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_OFF);
}

TEST_F(RampTest, StaysBetweenTheLowerPowerLimitAndTheUpperControlLimit)
{
    controller().m_nTxPmin = -300;
    controller().m_nPctrlMin = -2000; // the closed loop's lower limit, which the ramp does not use
    controller().m_nPctrlMax = 400;
    EXPECT_EQ(ramp(390, 1000), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 400);
    EXPECT_EQ(ramp(-290, -1000), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, -300);
    controller().m_nPctrlMin = 0;
    EXPECT_EQ(ramp(-100, -200), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, -139);
}

TEST_F(RampTest, CrossedLimitsGiveTheUpperOne)
{
    controller().m_nTxPmin = 500;
    controller().m_nPctrlMax = 400;
    EXPECT_EQ(ramp(450, 1000), EAF_OK); // above both
    EXPECT_EQ(controller().m_nPctrl, 400);
    EXPECT_EQ(ramp(450, 101), EAF_OK); // between them
    EXPECT_EQ(controller().m_nPctrl, 400);
}

TEST_F(RampTest, RoundsHalfAStepUp)
{
    controller().setGain(eOPH_DETECTOR_STATE_0, eOPC_TX_ON_RAMPING, 1);
    const std::pair<int, int> cases[] = {{149, 1}, {150, 2}, {-149, 0}, {-150, -1}, {-249, -1}, {-250, -2}};
    for (const auto& [nPowerError, nStep] : cases) {
        EXPECT_EQ(ramp(0, nPowerError), EAF_OK);
        EXPECT_EQ(controller().m_nPctrl, nStep) << nPowerError;
    }
}

TEST_F(RampTest, UsesTheRowOfTheDetectorState)
{
    for (int nDetector = 0; nDetector < 3; ++nDetector) {
        m_handler.m_eDetectorState = static_cast<EOPHDetectorState>(nDetector);
        controller().setGain(m_handler.m_eDetectorState, eOPC_TX_ON_RAMPING, 30 + nDetector);
        EXPECT_EQ(ramp(0, 1000), EAF_OK);
        EXPECT_EQ(controller().m_nPctrl, 300 + 10 * nDetector);
        EXPECT_EQ(controller().m_eOPHDetectorState, m_handler.m_eDetectorState);
    }
}

TEST_F(RampTest, ArithmeticWrapsIn32Bits)
{
    controller().m_nTxPmin = INT32_MIN;
    controller().m_nPctrlMax = INT32_MAX;
    controller().m_nPctrl = 0;
    controller().m_nPtarget = INT32_MAX;
    controller().m_nPmeasured = INT32_MIN;
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
    EXPECT_EQ(controller().m_nPowerError, -1);
    EXPECT_EQ(controller().m_nPctrl, 0); // (20 * -1 + 50) / 100
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);

    enter(eOPC_TX_ON_RAMPING);
    controller().m_nPctrl = INT32_MAX;
    controller().m_nPtarget = 1000;
    controller().m_nPmeasured = 0;
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, INT32_MIN + 199);

    enter(eOPC_TX_ON_RAMPING);
    controller().setGain(eOPH_DETECTOR_STATE_0, eOPC_TX_ON_RAMPING, 1 << 20);
    controller().m_nPctrl = 0;
    controller().m_nPtarget = 1 << 12; // the product is 2^32, which leaves the 50 only
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 0);
}
