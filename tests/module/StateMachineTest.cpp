// The steps between off and on, without the ramp.
#include "tests/support/ControllerTest.h"

namespace
{
class StateMachineTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
        controller().m_nTxPmin = -500;
        controller().m_nPctrlMax = 900;
        controller().m_nPtarget = 300;
    }

    int step() { return controller().handleOPCStateMachine(); }

    RecordingObservers m_observers;
};
} // namespace

TEST_F(StateMachineTest, EveryStateHasItsName)
{
    const char* const names[] = {"TX_OFF_INITIATED",
                                 "TX_OFF_IN_PROGRESS",
                                 "TX_OFF",
                                 "DELAYED_TX_ON_INITIATED",
                                 "DELAYED_TX_ON_IN_PROGRESS",
                                 "TX_ON_INITIATED",
                                 "TX_ON_IN_PROGRESS",
                                 "TX_ON_RAMPING",
                                 "TX_ON",
                                 "UNDEFINED"};
    for (int i = 0; i < 10; ++i) {
        EXPECT_STREQ(controller().getOPCStateName(static_cast<EOPCState>(i)), names[i]);
    }
}

TEST_F(StateMachineTest, OffDoesNothing)
{
    enter(eOPC_TX_OFF);
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), Texts{});
    EXPECT_TRUE(m_platform.traces().empty());
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_OFF);
}

TEST_F(StateMachineTest, AChangeOfStateIsTracedOnceAndRemembered)
{
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.traceTexts(5), Texts{"handleOPCStateMachine(): OPC state changed. New state 2, Old state 9"});
    EXPECT_EQ(controller().m_ePreviousOPCState, eOPC_TX_OFF);
    EXPECT_EQ(m_platform.traces().at(0).sSourcePath, CONTROLLER_SOURCE_PATH);
    m_platform.clearRecords();
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_F(StateMachineTest, SwitchOnInitiatedTracesStateAndEntry)
{
    controller().m_ePreviousOPCState = eOPC_TX_OFF;
    controller().m_eOPCState = eOPC_TX_ON_INITIATED;
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.traceTexts(5), (Texts{"handleOPCStateMachine(): OPC state changed. New state 5, Old state 2",
                                               "handleOPCStateMachine(): OPC: state TX_ON_INITIATED (5)",
                                               "handleOPCStateMachine(): eOPC_TX_ON_INITIATED"}));
    EXPECT_EQ(m_platform.traces().size(), 3U);
}

TEST_F(StateMachineTest, UnknownLimitsHoldTheMachineInEveryState)
{
    for (const bool bLower : {true, false}) {
        for (int i = 0; i <= 10; ++i) {
            controller().m_nTxPmin = bLower ? OPC_POWER_UNKNOWN : -500;
            controller().m_nPctrlMax = bLower ? 900 : OPC_POWER_UNKNOWN;
            enter(i == 10 ? eOPC_TX_ON : static_cast<EOPCState>(i));
            const int nPctrl = controller().m_nPctrl;
            EXPECT_EQ(step(), EAF_OK) << i;
            EXPECT_EQ(controller().m_eOPCState, i == 10 ? 8 : i);
            EXPECT_EQ(controller().m_nPctrl, nPctrl);
        }
    }
    EXPECT_EQ(m_platform.calls(), Texts{});
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

TEST_F(StateMachineTest, UnknownLimitsLeaveTheTracesOfTheStateAlone)
{
    controller().m_nTxPmin = OPC_POWER_UNKNOWN;
    controller().m_ePreviousOPCState = eOPC_TX_OFF;
    controller().m_eOPCState = eOPC_TX_ON_INITIATED;
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.traceTexts(5), (Texts{"handleOPCStateMachine(): OPC state changed. New state 5, Old state 2",
                                               "handleOPCStateMachine(): OPC: state TX_ON_INITIATED (5)"}));
    EXPECT_EQ(controller().m_ePreviousOPCState, eOPC_TX_ON_INITIATED);
}

TEST_F(StateMachineTest, SwitchOnBeginsAtTheLowerLimitWithFreshLimits)
{
    enter(eOPC_TX_ON_INITIATED);
    m_handler.m_nPctrlLower = -700;
    m_handler.m_nPctrlUpper = 1234;
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), (Texts{"getPctrlLimits", "setTxState(2)", "setOutputPower(-500, 300)"}));
    EXPECT_EQ(controller().m_nPctrl, -500);
    EXPECT_EQ(controller().m_nPctrlMin, -700);
    EXPECT_EQ(controller().m_nPctrlMax, 1234);
    EXPECT_EQ(controller().m_nTxPmin, -500);
    EXPECT_EQ(controller().m_nTxOnInProgressCount, 3);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_IN_PROGRESS);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_OFF);
}

// The unknown limit is one value, not all that lie beyond it.
TEST_F(StateMachineTest, ALimitBesideTheUnknownOneIsALimit)
{
    for (const int nLimit : {OPC_POWER_UNKNOWN - 1, OPC_POWER_UNKNOWN + 1}) {
        for (const bool bLower : {true, false}) {
            controller().m_nTxPmin = bLower ? nLimit : -500;
            controller().m_nPctrlMax = bLower ? 900 : nLimit;
            enter(eOPC_TX_ON_INITIATED);
            EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
            EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_IN_PROGRESS) << nLimit << bLower;
        }
    }
}

TEST_F(StateMachineTest, ALowerLimitOfTheHandlerBesideTheUnknownOneIsTaken)
{
    for (const int nLimit : {OPC_POWER_UNKNOWN - 1, OPC_POWER_UNKNOWN + 1}) {
        controller().m_nTxPmin = -500;
        controller().m_nPctrlMax = 900;
        m_handler.m_nPctrlLower = nLimit;
        m_handler.m_nPctrlUpper = 900;
        enter(eOPC_TX_ON_INITIATED);
        EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
        EXPECT_EQ(controller().m_nPctrlMin, nLimit);
    }
}

TEST_F(StateMachineTest, AnUnknownLowerLimitOfTheHandlerIsNotTakenAnUnknownUpperOneIs)
{
    enter(eOPC_TX_ON_INITIATED);
    controller().m_nPctrlMin = -600;
    m_handler.m_nPctrlLower = OPC_POWER_UNKNOWN;
    m_handler.m_nPctrlUpper = OPC_POWER_UNKNOWN;
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().m_nPctrlMin, -600);
    EXPECT_EQ(controller().m_nPctrlMax, OPC_POWER_UNKNOWN);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_IN_PROGRESS);
    m_platform.clearRecords();
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().m_nTxOnInProgressCount, 3) << "the next step waits for a limit";
}

TEST_F(StateMachineTest, TheResultOfTheLimitsIsNotLookedAt)
{
    enter(eOPC_TX_ON_INITIATED);
    m_handler.setResult(EHandlerCall::GetPctrlLimits, EAF_FAILED);
    m_handler.setWritesOutputs(EHandlerCall::GetPctrlLimits, false);
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().m_nPctrlMin, 0);
    EXPECT_EQ(controller().m_nPctrlMax, 0);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_IN_PROGRESS);
}

TEST_F(StateMachineTest, InProgressCountsDownWithoutTheHandlerThenGoesOn)
{
    enter(eOPC_TX_ON_IN_PROGRESS);
    controller().m_nPctrl = -500;
    controller().m_nTxOnInProgressCount = 3;
    for (const int nLeft : {2, 1, 0}) {
        EXPECT_EQ(step(), EAF_OK);
        EXPECT_EQ(controller().m_nTxOnInProgressCount, nLeft);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_IN_PROGRESS);
    }
    EXPECT_EQ(m_platform.calls(), Texts{});
    EXPECT_EQ(m_platform.traceTexts(5).back(), "handleOPCStateMachine(): eOPC_TX_ON_IN_PROGRESS");
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), (Texts{"setTxState(3)", "setOutputPower(-500, 300)"}));
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING);
    EXPECT_EQ(controller().m_nRampingCount, 15);
}

TEST_F(StateMachineTest, ANegativeCountDoesNotWait)
{
    enter(eOPC_TX_ON_IN_PROGRESS);
    controller().m_nTxOnInProgressCount = -1;
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING);
}

TEST_F(StateMachineTest, SwitchOffInitiatedDisablesTrafficThenTakesTheFirstStep)
{
    enter(eOPC_TX_OFF_INITIATED);
    controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), (Texts{"setZembraMlmTrafTx(false)", "setTxState(0)"}));
    EXPECT_EQ(m_platform.traceTexts(5).back(), "handleOPCStateMachine(): eOPC_TX_OFF_INITIATED");
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_OFF_IN_PROGRESS);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_ON);
}

TEST_F(StateMachineTest, SwitchOffInProgressEndsInOffWithThePowersOff)
{
    enter(eOPC_TX_OFF_IN_PROGRESS);
    controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.calls(),
              (Texts{"setTxState(1)", "ptarget(0, -9900)", "pctrl(0, -9900)", "predictedPctrl(0, -9900)"}));
    EXPECT_EQ(controller().m_nPctrl, OPC_POWER_OFF);
    EXPECT_EQ(controller().m_nPtarget, OPC_POWER_OFF);
    EXPECT_EQ(controller().m_nPredictedPctrl, OPC_POWER_OFF);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_OFF);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_OFF);
    EXPECT_EQ(m_platform.traceTexts(5).back(), "handleOPCStateMachine(): eOPC_TX_OFF_IN_PROGRESS");
    EXPECT_EQ(m_platform.traceTexts(4), Texts{"handleOPCStateMachine():   TX OFF"});
    EXPECT_EQ(m_platform.traces().back().nCallsBefore, 4U) << "traced after the observers were told";
}

TEST_F(StateMachineTest, SwitchOffTellsOnlyObserversWhoseLastValueDiffers)
{
    enter(eOPC_TX_OFF_IN_PROGRESS);
    controller().m_nLastNotifiedPtarget = OPC_POWER_OFF;
    controller().m_nLastNotifiedPctrl = 5;
    controller().m_nLastNotifiedPredictedPctrl = OPC_POWER_OFF;
    EXPECT_EQ(step(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), (Texts{"setTxState(1)", "pctrl(0, -9900)"}));
}

TEST_F(StateMachineTest, AStateThatIsNotForTheMachineIsRefused)
{
    for (const EOPCState eState : {eOPC_TX_ON, eOPC_UNDEFINED}) {
        m_platform.clearRecords();
        enter(eState);
        EXPECT_EQ(step(), EAF_FAILED);
        EXPECT_EQ(m_platform.traceTexts(1),
                  Texts{"handleOPCStateMachine(): unhandled state " + std::to_string(eState)});
        EXPECT_EQ(controller().getOPCState(), eState);
        EXPECT_EQ(m_platform.calls(), Texts{});
    }
}
