// One regulator step: the target, the closed loop, its limits and failures.
#include "tests/support/ControllerTest.h"

namespace
{
class RegulateTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
        closeLoop(0, -5000, 5000);
        controller().m_eTxPowerMode = eTX_POWER_MODE_FREE;
    }

    /** Takes a closed-loop step with this gain at this measured power. */
    int regulate(int nPtarget, int nPmeasured, int nGain)
    {
        controller().setGain(m_handler.m_eDetectorState, eOPC_TX_ON, nGain);
        m_handler.m_nPmeasured = nPmeasured;
        return controller().regulate(nPtarget);
    }

    RecordingObservers m_observers;
};
} // namespace

TEST_F(RegulateTest, OutsideTheClosedLoopTheMeasuredPowerIsTheControlPower)
{
    for (const EOPCState eState :
         {eOPC_TX_OFF, eOPC_TX_ON_INITIATED, eOPC_TX_ON_IN_PROGRESS, eOPC_TX_ON_RAMPING, eOPC_TX_OFF_INITIATED})
    {
        enter(eState);
        controller().m_nPctrl = 77;
        EXPECT_EQ(controller().regulate(300), EAF_OK);
        EXPECT_EQ(controller().getPmeasured(), 77);
        EXPECT_EQ(controller().m_nPtarget, 300);
    }
    EXPECT_EQ(m_platform.callsOf("getPmeasured"), Texts{});
}

TEST_F(RegulateTest, OutsideTheClosedLoopTheMachinesResultIsReturned)
{
    enter(eOPC_TX_ON_INITIATED);
    m_handler.setResult(EHandlerCall::SetTxState, EAF_FAILED);
    EXPECT_EQ(controller().regulate(300), EAF_FAILED);
    enter(eOPC_UNDEFINED);
    EXPECT_EQ(controller().regulate(300), EAF_FAILED);
    enter(eOPC_TX_OFF);
    EXPECT_EQ(controller().regulate(300), EAF_OK);
}

TEST_F(RegulateTest, AStepMovesThePowerFromItselfAndThePredictionFromTheMeasuredPower)
{
    controller().m_nPctrl = 700;
    EXPECT_EQ(regulate(1000, 400, 50), EAF_OK);
    EXPECT_EQ(controller().m_nPowerError, 600);
    EXPECT_EQ(controller().m_nPctrl, 1000);
    EXPECT_EQ(controller().m_nPredictedPctrl, 700);
    EXPECT_EQ(controller().getPmeasured(), 400);
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_F(RegulateTest, NoErrorLeavesThePowerAndStillSendsIt)
{
    controller().m_nPctrl = 700;
    EXPECT_EQ(regulate(1000, 1000, 20), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 700);
    EXPECT_EQ(m_platform.callsOf("setOutputPower"), Texts{"setOutputPower(700, 1000)"});
}

TEST_F(RegulateTest, RoundsPositiveStepsToNearestAndNegativeOnesTowardsZero)
{
    const struct
    {
        int nGain;
        int nPowerError;
        int nStep;
    } cases[] = {{20, 149, 30}, {20, -149, -29}, {20, 3, 1},    {20, -8, -1},  {1, 49, 0},
                 {1, 50, 1},    {1, 149, 1},     {1, 150, 2},   {1, -50, 0},   {1, -149, 0},
                 {1, -150, -1}, {1, -249, -1},   {1, -250, -2}, {-1, 150, -1}, {-1, -150, 2}};
    for (const auto& step : cases) {
        controller().m_nPctrl = 0;
        EXPECT_EQ(regulate(step.nPowerError, 0, step.nGain), EAF_OK);
        EXPECT_EQ(controller().m_nPctrl, step.nStep) << step.nGain << ' ' << step.nPowerError;
    }
}

TEST_F(RegulateTest, ModeZeroLimitsTheStepToBothSides)
{
    controller().m_eTxPowerMode = eTX_POWER_MODE_STEP_LIMITED;
    const struct
    {
        int nInterval;
        int nLimit;
    } cases[] = {{6, 10}, {5, 20}, {24, 20}};
    for (const auto& limited : cases) {
        controller().setRegulatorInterval(limited.nInterval);
        for (const int nSign : {1, -1}) {
            controller().m_nPctrl = 0;
            EXPECT_EQ(regulate(500 * nSign, 0, 100), EAF_OK);
            EXPECT_EQ(controller().m_nPctrl, nSign * limited.nLimit);
            EXPECT_EQ(controller().m_nPredictedPctrl, nSign * limited.nLimit);
            EXPECT_EQ(controller().m_nPowerError, nSign * 500);
        }
    }
}

TEST_F(RegulateTest, OtherModesDoNotLimitTheStep)
{
    controller().setRegulatorInterval(6);
    for (const int nMode : {1, 2, 3, -1}) {
        controller().m_eTxPowerMode = static_cast<ETxPowerMode>(nMode);
        controller().m_nPctrl = 0;
        EXPECT_EQ(regulate(500, 0, 100), EAF_OK);
        EXPECT_EQ(controller().m_nPctrl, 500) << nMode;
    }
}

TEST_F(RegulateTest, ANewControllersModeZeroHasNoEffectiveLimit)
{
    controller().m_eTxPowerMode = eTX_POWER_MODE_STEP_LIMITED;
    EXPECT_EQ(regulate(4000, 0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 4000);
}

TEST_F(RegulateTest, ThePowerAndThePredictionStayWithinTheLimits)
{
    closeLoop(100, -200, 300);
    EXPECT_EQ(regulate(1000, 290, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 300);
    EXPECT_EQ(controller().m_nPredictedPctrl, 300);
    EXPECT_EQ(regulate(-1000, 290, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, -200);
    EXPECT_EQ(controller().m_nPredictedPctrl, -200);
    controller().m_nTxPmin = 0; // the ramp's lower limit, which the closed loop does not use
    EXPECT_EQ(regulate(-1000, 0, 1), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, -200);
}

TEST_F(RegulateTest, CrossedLimitsGiveTheUpperOne)
{
    for (const int nPower : {600, 400}) { // above both, and between them
        closeLoop(nPower, 500, 300);
        EXPECT_EQ(regulate(nPower, nPower, 100), EAF_OK);
        EXPECT_EQ(controller().m_nPctrl, 300);
        EXPECT_EQ(controller().m_nPredictedPctrl, 300);
    }
}

TEST_F(RegulateTest, AStepIsNeverLargerThanAHundredThousand)
{
    closeLoop(0, -500000, 500000);
    EXPECT_EQ(regulate(300000, 0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 100000);
    EXPECT_EQ(regulate(-300000, 0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 0);
    EXPECT_EQ(controller().m_nPredictedPctrl, -100000);
}

TEST_F(RegulateTest, ProductsSumsAndDifferencesWrapIn32Bits)
{
    closeLoop(0, INT32_MIN, INT32_MAX);
    EXPECT_EQ(regulate(1 << 12, 0, (1 << 20) + 1), EAF_OK); // 2^32 + 4096 wraps to 4096
    EXPECT_EQ(controller().m_nPctrl, 41);
    EXPECT_EQ(regulate(1 << 11, 0, 1 << 20), EAF_OK); // 2^31 wraps to the smallest number
    EXPECT_EQ(controller().m_nPctrl, 41 - 100000);
    EXPECT_EQ(regulate(INT32_MAX, INT32_MIN, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPowerError, -1);
    EXPECT_EQ(controller().m_nPredictedPctrl, INT32_MIN) << "(-100 + 50) / 100 is no step";
    controller().m_nPctrl = INT32_MAX;
    EXPECT_EQ(regulate(100, 0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, INT32_MIN + 99);
    EXPECT_EQ(regulate(INT32_MAX, INT32_MAX - 100, INT32_MAX), EAF_OK);
    EXPECT_EQ(regulate(INT32_MIN, INT32_MAX, INT32_MIN), EAF_OK);
}

TEST_F(RegulateTest, ProductionTestWidensTheLimitsAndIgnoresTheModesLimit)
{
    closeLoop(300, -200, 300);
    controller().setRegulatorInterval(6);
    controller().m_eTxPowerMode = eTX_POWER_MODE_STEP_LIMITED;
    controller().m_bProductionTestMode = true;
    EXPECT_EQ(regulate(5000, 0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 2300);
    EXPECT_EQ(controller().m_nPredictedPctrl, 5000) << "not limited";
    EXPECT_EQ(regulate(-9000, 0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, -2200);
    EXPECT_EQ(controller().m_nPredictedPctrl, -8999);
    EXPECT_EQ(regulate(500, 0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, -1700);
}

TEST_F(RegulateTest, ProductionTestKeepsTheLargestStep)
{
    closeLoop(0, -500000, 500000);
    controller().m_bProductionTestMode = true;
    EXPECT_EQ(regulate(300000, 0, 100), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 100000);
    EXPECT_EQ(controller().m_nPredictedPctrl, 100000);
}

TEST_F(RegulateTest, UsesTheGainOfTheDetectorStateThatTheHandlerGives)
{
    controller().m_eRfDetectorLoopMode = eRF_DETECTOR_LOOP_MODE_CLOSED;
    m_handler.m_eDetectorState = eOPH_DETECTOR_STATE_1;
    EXPECT_EQ(regulate(1000, 0, 35), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 350);
    EXPECT_EQ(m_platform.callsOf("calculateDetectorUsage"), Texts{"calculateDetectorUsage(0, 1)"});
    m_handler.m_eDetectorState = eOPH_DETECTOR_STATE_2;
    EXPECT_EQ(regulate(1000, 0, 10), EAF_OK);
    EXPECT_EQ(controller().m_nPctrl, 450);
}

TEST_F(RegulateTest, AHandlerThatWritesNoMeasuredPowerGivesZero)
{
    m_handler.setWritesOutputs(EHandlerCall::GetPmeasured, false);
    controller().m_nPmeasured = 55;
    EXPECT_EQ(regulate(0, 77, 100), EAF_OK);
    EXPECT_EQ(controller().getPmeasured(), 0);
}

TEST_F(RegulateTest, AFailureToReadTheMeasuredPowerKeepsEverythingButTheTarget)
{
    controller().m_nPmeasured = 55;
    m_handler.setResult(EHandlerCall::GetPmeasured, EAF_FAILED);
    EXPECT_EQ(regulate(1000, 400, 50), EAF_FAILED);
    EXPECT_EQ(m_platform.traceTexts(1), Texts{"regulate(): failed to get P measured"});
    EXPECT_EQ(m_platform.traces().back().sSourcePath, CONTROLLER_SOURCE_PATH);
    EXPECT_EQ(m_platform.calls(), Texts{"getPmeasured"});
    EXPECT_EQ(controller().m_nPtarget, 1000);
    EXPECT_EQ(controller().getPmeasured(), 55);
    EXPECT_EQ(controller().m_nPctrl, 0);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);
}

TEST_F(RegulateTest, AFailureOfTheDetectorUsageKeepsThePower)
{
    m_handler.setResult(EHandlerCall::CalculateDetectorUsage, EAF_FAILED);
    EXPECT_EQ(regulate(1000, 400, 50), EAF_FAILED);
    EXPECT_EQ(m_platform.traceTexts(1), Texts{"regulate(): failed to calculate usage of detector"});
    EXPECT_EQ(m_platform.calls(), (Texts{"getPmeasured", "calculateDetectorUsage(0, 0)"}));
    EXPECT_EQ(controller().m_nPtarget, 1000);
    EXPECT_EQ(controller().getPmeasured(), 400);
    EXPECT_EQ(controller().m_nPctrl, 0);
    EXPECT_EQ(controller().m_nPowerError, 0);
}

TEST_F(RegulateTest, AFailureToSendThePowerKeepsItAndThePredictionAndTellsNobodyElse)
{
    m_handler.setResult(EHandlerCall::SetOutputPower, 0x8123);
    EXPECT_EQ(regulate(1000, 400, 50), EAF_FAILED);
    EXPECT_EQ(m_platform.traceTexts(1), (Texts{"setPctrl(): Failed to set output power in OPH (eOPHResult = 8123",
                                               "regulate(): failed to set Pctrl"}));
    EXPECT_EQ(m_platform.calls(), (Texts{"getPmeasured", "calculateDetectorUsage(0, 0)", "predictedPctrl(0, 700)",
                                         "setOutputPower(300, 1000)"}));
    EXPECT_EQ(controller().m_nPctrl, 300);
    EXPECT_EQ(controller().m_nPowerError, 600);
    EXPECT_EQ(controller().m_nPredictedPctrl, 700);
    EXPECT_EQ(controller().m_nLastNotifiedPredictedPctrl, 700);
    EXPECT_EQ(controller().m_nLastNotifiedPctrl, 0);
    m_handler.succeed(EHandlerCall::SetOutputPower);
    m_platform.clearRecords();
    EXPECT_EQ(regulate(1000, 400, 50), EAF_OK);
    EXPECT_EQ(m_platform.calls().back(), "pctrl(0, 600)");
}

TEST_F(RegulateTest, HandlerResultsBelow0x8000AreSuccesses)
{
    for (const EOPHResult nResult : {0x7FFF, -1, INT32_MIN}) {
        for (const EHandlerCall eCall :
             {EHandlerCall::GetPmeasured, EHandlerCall::CalculateDetectorUsage, EHandlerCall::SetOutputPower})
        {
            m_handler.setResultOfCall(eCall, 1, nResult);
        }
        EXPECT_EQ(regulate(1000, 400, 50), EAF_OK);
    }
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_F(RegulateTest, APredictionThatWasToldLastIsNotToldAgain)
{
    EXPECT_EQ(regulate(1000, 400, 50), EAF_OK);
    m_platform.clearRecords();
    EXPECT_EQ(regulate(1000, 400, 50), EAF_OK);
    EXPECT_EQ(m_platform.callsOf("predictedPctrl"), Texts{});
}

TEST_F(RegulateTest, APredictionIsToldBeforeThePowerIsSentWhicheverWayItMoves)
{
    EXPECT_EQ(regulate(1000, 400, 50), EAF_OK);
    m_platform.clearRecords();
    EXPECT_EQ(regulate(1000, 100, 50), EAF_OK);
    EXPECT_EQ(m_platform.calls(), (Texts{"getPmeasured", "calculateDetectorUsage(300, 0)", "predictedPctrl(0, 550)",
                                         "setOutputPower(750, 1000)", "pctrl(0, 750)"}));
}

TEST_F(RegulateTest, ADetectorStateThatIsNoRowOfTheTableMovesNothing)
{
    controller().m_nPctrl = 700;
    m_handler.setWritesOutputs(EHandlerCall::CalculateDetectorUsage, false);
    for (const int nDetectorState : {3, -1, INT32_MAX, INT32_MIN}) {
        controller().m_eOPHDetectorState = static_cast<EOPHDetectorState>(nDetectorState);
        EXPECT_EQ(controller().regulate(1000), EAF_OK);
        EXPECT_EQ(controller().m_nPctrl, 700);
        EXPECT_EQ(controller().m_nPowerError, 1000);
    }
}
