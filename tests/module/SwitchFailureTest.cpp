// Every handler call of the machine failing at each of its places: result, state, members, trace, and the next call.
#include "tests/support/ControllerTest.h"

#include <vector>

namespace
{
struct FailureCase
{
    const char* pName;
    EOPCState eState;
    EHandlerCall eCall;
    Texts callsUpToFailure;
    const char* pTrace; /**< after "handleOPCStateMachine" */
    EOPCState eNext;    /**< state after the call that succeeds */
};

const FailureCase FAILURE_CASES[] = {
    {"OffInitiatedTraffic",
     eOPC_TX_OFF_INITIATED,
     EHandlerCall::SetZembraMlmTrafTx,
     {"setZembraMlmTrafTx(false)"},
     "(): failed to disable Zembra Mlm Traf TX in OPH",
     eOPC_TX_OFF_IN_PROGRESS},
    {"OffInitiatedStep",
     eOPC_TX_OFF_INITIATED,
     EHandlerCall::SetTxState,
     {"setZembraMlmTrafTx(false)", "setTxState(0)"},
     "(): failed to set TX state in OPH",
     eOPC_TX_OFF_IN_PROGRESS},
    {"OffInProgressStep",
     eOPC_TX_OFF_IN_PROGRESS,
     EHandlerCall::SetTxState,
     {"setTxState(1)"},
     "(): failed to set TX state in OPH",
     eOPC_TX_OFF},
    {"OnInitiatedStep",
     eOPC_TX_ON_INITIATED,
     EHandlerCall::SetTxState,
     {"getPctrlLimits", "setTxState(2)"},
     "(): failed to set TX state ON initiated in OPH",
     eOPC_TX_ON_IN_PROGRESS},
    {"OnInitiatedPower",
     eOPC_TX_ON_INITIATED,
     EHandlerCall::SetOutputPower,
     {"getPctrlLimits", "setTxState(2)", "setOutputPower(-500, 300)"},
     "(): failed to set Pctrl in OPH",
     eOPC_TX_ON_IN_PROGRESS},
    {"OnInProgressStep",
     eOPC_TX_ON_IN_PROGRESS,
     EHandlerCall::SetTxState,
     {"setTxState(3)"},
     "(): failed to set TX state ON in progress in OPH",
     eOPC_TX_ON_RAMPING},
    {"OnInProgressPower",
     eOPC_TX_ON_IN_PROGRESS,
     EHandlerCall::SetOutputPower,
     {"setTxState(3)", "setOutputPower(-400, 300)"},
     "(): failed to set Pctrl in OPH",
     eOPC_TX_ON_RAMPING},
    {"RampingStep",
     eOPC_TX_ON_RAMPING,
     EHandlerCall::SetTxState,
     {"setTxState(4)"},
     "(): failed to set TX state ON in OPH",
     eOPC_TX_ON_RAMPING},
    {"RampingDetector",
     eOPC_TX_ON_RAMPING,
     EHandlerCall::CalculateDetectorUsage,
     {"setTxState(4)", "calculateDetectorUsage(-400, 0)"},
     "(): failed to calculate usage of detector",
     eOPC_TX_ON_RAMPING},
    {"RampingPower",
     eOPC_TX_ON_RAMPING,
     EHandlerCall::SetOutputPower,
     {"setTxState(4)", "calculateDetectorUsage(-400, 0)", "setOutputPower(-260, 300)"},
     "(): failed to set Pctrl",
     eOPC_TX_ON_RAMPING},
};

class SwitchFailureTest : public ControllerTest, public ::testing::WithParamInterface<FailureCase>
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
        controller().m_nTxPmin = -500;
        controller().m_nPctrlMax = 900;
        controller().m_nPctrl = -400;
        controller().m_nPtarget = 300;
        controller().m_nPmeasured = -400; // error 700 and gain 20 give a step of 140
        controller().m_nRampingCount = 9;
        enter(GetParam().eState);
    }

    RecordingObservers m_observers;
};
} // namespace

TEST_P(SwitchFailureTest, StopsAtTheCallKeepsTheStateAndIsTriedAgain)
{
    const ETxPowerActualStatus eStatus = controller().getTxPowerActualStatus();
    for (const EOPHResult nResult : {EAF_FAILED, EAF_NULL_POINTER, INT32_MAX}) {
        controller().m_nPctrl = -400;
        m_platform.clearRecords();
        m_handler.setResultOfCall(GetParam().eCall, 1, nResult);
        EXPECT_EQ(controller().handleOPCStateMachine(), EAF_FAILED);
        EXPECT_EQ(m_platform.calls(), GetParam().callsUpToFailure);
        EXPECT_EQ(controller().getOPCState(), GetParam().eState);
        EXPECT_EQ(controller().getTxPowerActualStatus(), eStatus);
        const Texts failures = m_platform.traceTexts(1);
        ASSERT_FALSE(failures.empty());
        EXPECT_EQ(failures.back(), std::string("handleOPCStateMachine") + GetParam().pTrace);
        EXPECT_EQ(m_platform.traces().back().sSourcePath, CONTROLLER_SOURCE_PATH);
    }
    m_platform.clearRecords();
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), GetParam().eNext);
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
    EXPECT_EQ(m_platform.calls().front(), GetParam().callsUpToFailure.front()) << "the state begins anew";
}

TEST_P(SwitchFailureTest, ResultsBelow0x8000AreSuccesses)
{
    for (const EOPHResult nResult : {0x7FFF, 1, -1, INT32_MIN}) {
        enter(GetParam().eState);
        m_handler.setResult(GetParam().eCall, nResult);
        EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
        EXPECT_EQ(controller().getOPCState(), GetParam().eNext);
    }
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

INSTANTIATE_TEST_SUITE_P(Machine, SwitchFailureTest, ::testing::ValuesIn(FAILURE_CASES),
                         [](const auto& failure) { return std::string(failure.param.pName); });

namespace
{
class RetainedMembersTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
        controller().m_nTxPmin = -500;
        controller().m_nPctrlMax = 900;
        controller().m_nPctrl = -400;
        controller().m_nPtarget = 300;
        controller().m_nPmeasured = -400;
        controller().m_nRampingCount = 9;
    }

    RecordingObservers m_observers;
};
} // namespace

TEST_F(RetainedMembersTest, SwitchOnInitiatedKeepsThePowerAndTheLimits)
{
    enter(eOPC_TX_ON_INITIATED);
    m_handler.setResult(EHandlerCall::SetTxState, EAF_FAILED);
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_FAILED);
    EXPECT_EQ(controller().m_nPctrl, -500);
    EXPECT_EQ(controller().m_nPctrlMin, m_handler.m_nPctrlLower);
    EXPECT_EQ(controller().m_nPctrlMax, m_handler.m_nPctrlUpper);
    EXPECT_EQ(controller().m_nTxOnInProgressCount, 0) << "loaded on success only";
}

TEST_F(RetainedMembersTest, SwitchOnInProgressLoadsTheRampCountOnSuccessOnly)
{
    enter(eOPC_TX_ON_IN_PROGRESS);
    m_handler.setResult(EHandlerCall::SetOutputPower, EAF_FAILED);
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_FAILED);
    EXPECT_EQ(controller().m_nRampingCount, 9);
}

TEST_F(RetainedMembersTest, SwitchOffInProgressKeepsThePowersUntilItSucceeds)
{
    enter(eOPC_TX_OFF_IN_PROGRESS);
    controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
    m_handler.setResult(EHandlerCall::SetTxState, EAF_FAILED);
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_FAILED);
    EXPECT_EQ(controller().m_nPctrl, -400);
    EXPECT_EQ(controller().m_nPtarget, 300);
    EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_ON);
    EXPECT_TRUE(m_platform.traceTexts(4).empty());
}

TEST_F(RetainedMembersTest, TheRampKeepsWhatItHadDoneBeforeTheFailure)
{
    enter(eOPC_TX_ON_RAMPING);
    m_handler.setResultOfCall(EHandlerCall::SetTxState, 1, EAF_FAILED);
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_FAILED);
    EXPECT_EQ(controller().m_nRampingCount, 9) << "counted after the step was taken";

    m_handler.setResultOfCall(EHandlerCall::CalculateDetectorUsage, 1, EAF_FAILED);
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_FAILED);
    EXPECT_EQ(controller().m_nRampingCount, 8);
    EXPECT_EQ(controller().m_nPctrl, -400);
    EXPECT_EQ(controller().m_nPowerError, 0);

    m_handler.setResultOfCall(EHandlerCall::SetOutputPower, 1, EAF_FAILED);
    m_platform.clearRecords();
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_FAILED);
    EXPECT_EQ(controller().m_nRampingCount, 7);
    EXPECT_EQ(controller().m_nPctrl, -260);
    EXPECT_EQ(controller().m_nPowerError, 700);
    EXPECT_EQ(m_platform.callsOf("pctrl"), Texts{});
    EXPECT_EQ(m_platform.traceTexts(1), (Texts{"setPctrl(): Failed to set output power in OPH (eOPHResult = 8000",
                                               "handleOPCStateMachine(): failed to set Pctrl"}));
}
