// The whole way on, regulated and off again, with every call in order.
#include "tests/support/ControllerTest.h"

namespace
{
class SwitchSequenceTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
        controller().setTxPminPmax(-500, 1000);
        m_handler.m_nPctrlLower = -600;
        m_handler.m_nPctrlUpper = 1000;
        m_platform.clearRecords();
    }

    /** Calls the regulator and gives what it did. */
    Texts regulate(int nPtarget)
    {
        m_platform.clearRecords();
        EXPECT_EQ(controller().regulate(nPtarget), EAF_OK);
        return takeCalls();
    }

    void regulateTimes(int nPtarget, int nTimes)
    {
        for (int i = 0; i < nTimes; ++i) {
            EXPECT_EQ(controller().regulate(nPtarget), EAF_OK);
        }
    }

    RecordingObservers m_observers;
};

Texts rampStep(int nPctrlBefore, int nPctrl, int nPtarget)
{
    const std::string sPctrl = std::to_string(nPctrl);
    return {"setTxState(4)",
            "calculateDetectorUsage(" + std::to_string(nPctrlBefore) + ", 0)",
            "setOutputPower(" + sPctrl + ", " + std::to_string(nPtarget) + ")",
            "pctrl(0, " + sPctrl + ")",
            "ptarget(0, " + sPctrl + ")",
            "predictedPctrl(0, " + sPctrl + ")"};
}
} // namespace

TEST_F(SwitchSequenceTest, OnRegulatedAndOffInEveryCall)
{
    m_handler.m_eDetectorState = eOPH_DETECTOR_STATE_1;
    controller().setGain(eOPH_DETECTOR_STATE_1, eOPC_TX_ON_RAMPING, 60);
    controller().setGain(eOPH_DETECTOR_STATE_1, eOPC_TX_ON, 50);

    EXPECT_EQ(regulate(200), Texts{});
    EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE), EAF_OK);
    EXPECT_EQ(takeCalls(), Texts{"powerMode(0, 1)"});

    EXPECT_EQ(regulate(200), (Texts{"getPctrlLimits", "setTxState(2)", "setOutputPower(-500, 200)"}));
    EXPECT_EQ(regulate(200), Texts{});
    EXPECT_EQ(regulate(200), Texts{});
    EXPECT_EQ(regulate(200), Texts{});
    EXPECT_EQ(regulate(200), (Texts{"setTxState(3)", "setOutputPower(-500, 200)"}));

    EXPECT_EQ(regulate(200), rampStep(-500, -80, 200)); // error 700, step 420
    EXPECT_EQ(regulate(200), rampStep(-80, 88, 200));   // error 280, step 168
    EXPECT_EQ(regulate(200), rampStep(88, 155, 200));   // error 112, step 67
    Texts last = rampStep(155, 182, 200);               // error 45, step 27
    last.emplace_back("setZembraMlmTrafTx(true)");
    EXPECT_EQ(regulate(200), last);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);

    m_handler.m_nPmeasured = 150; // error 50, step 25
    EXPECT_EQ(regulate(200), (Texts{"getPmeasured", "calculateDetectorUsage(182, 0)", "predictedPctrl(0, 175)",
                                    "setOutputPower(207, 200)", "ptarget(0, 200)", "pctrl(0, 207)"}));
    m_handler.m_nPmeasured = 200;
    EXPECT_EQ(regulate(200), (Texts{"getPmeasured", "calculateDetectorUsage(207, 0)", "predictedPctrl(0, 200)",
                                    "setOutputPower(207, 200)"}));
    EXPECT_EQ(regulate(200), (Texts{"getPmeasured", "calculateDetectorUsage(207, 0)", "setOutputPower(207, 200)"}));

    EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE), EAF_OK);
    EXPECT_EQ(regulate(200), (Texts{"setZembraMlmTrafTx(false)", "setTxState(0)"}));
    EXPECT_EQ(regulate(200),
              (Texts{"setTxState(1)", "ptarget(0, -9900)", "pctrl(0, -9900)", "predictedPctrl(0, -9900)"}));
    EXPECT_EQ(regulate(200), Texts{});
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_OFF);
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

TEST_F(SwitchSequenceTest, TheTracesOfAWholeSwitchOnAndOff)
{
    controller().setRegulatorInterval(24); // no wait, three steps of the ramp at most
    EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE), EAF_OK);
    controller().m_ePreviousOPCState = eOPC_TX_OFF;
    m_platform.clearRecords();
    regulateTimes(-500, 3);
    EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE), EAF_OK);
    regulateTimes(-500, 3);
    const std::string sName = "handleOPCStateMachine(): ";
    Texts texts;
    for (const RecordedTrace& trace : m_platform.traces()) {
        texts.push_back(std::to_string(trace.nLevel) + ' ' + trace.sText);
    }
    EXPECT_EQ(texts, (Texts{"5 " + sName + "OPC state changed. New state 5, Old state 2",
                            "5 " + sName + "OPC: state TX_ON_INITIATED (5)",
                            "5 " + sName + "eOPC_TX_ON_INITIATED",
                            "5 " + sName + "OPC state changed. New state 6, Old state 5",
                            "5 " + sName + "OPC: state TX_ON_IN_PROGRESS (6)",
                            "5 " + sName + "eOPC_TX_ON_IN_PROGRESS",
                            "5 " + sName + "OPC state changed. New state 7, Old state 6",
                            "5 " + sName + "OPC: state TX_ON_RAMPING (7)",
                            "5 " + sName + "eOPC_TX_ON_RAMPING",
                            "4 " + sName + "  TX ON",
                            "5 " + sName + "OPC: state TX_ON (8)",
                            "5 setRequestedTxPowerState(): Turn transmitter OFF",
                            "5 " + sName + "OPC state changed. New state 0, Old state 7",
                            "5 " + sName + "OPC: state TX_OFF_INITIATED (0)",
                            "5 " + sName + "eOPC_TX_OFF_INITIATED",
                            "5 " + sName + "OPC state changed. New state 1, Old state 0",
                            "5 " + sName + "OPC: state TX_OFF_IN_PROGRESS (1)",
                            "5 " + sName + "eOPC_TX_OFF_IN_PROGRESS",
                            "4 " + sName + "  TX OFF",
                            "5 " + sName + "OPC state changed. New state 2, Old state 1"}));
    EXPECT_TRUE(m_platform.areTracesWellFormed());
}

TEST_F(SwitchSequenceTest, IntervalsDecideHowManyCallsItTakes)
{
    const struct
    {
        int nInterval;
        int nWaits;
        int nRampSteps;
    } cases[] = {{6, 3, 16}, {5, 3, 20}, {24, 0, 4}, {12, 1, 8}, {8, 2, 12}};
    for (const auto& timing : cases) {
        build(0);
        controller().setTxPminPmax(-500, 0);
        controller().setRegulatorInterval(timing.nInterval);
        (void)controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
        regulateTimes(30000, 1 + timing.nWaits);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_IN_PROGRESS) << timing.nInterval;
        regulateTimes(30000, 1);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING) << timing.nInterval;
        regulateTimes(30000, timing.nRampSteps - 1);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING) << timing.nInterval;
        regulateTimes(30000, 1);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON) << timing.nInterval;
    }
}

TEST_F(SwitchSequenceTest, AnOffRequestDuringTheSwitchOnIsIgnored)
{
    (void)controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
    regulateTimes(30000, 6);
    ASSERT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING);
    EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_RAMPING);
    regulateTimes(30000, 15);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);
}

TEST_F(SwitchSequenceTest, AnOnRequestDuringTheSwitchOffIsIgnored)
{
    closeLoop(0, -600, 1000);
    (void)controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE);
    regulateTimes(0, 1);
    (void)controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_OFF_IN_PROGRESS);
    regulateTimes(0, 1);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_OFF);
}

TEST_F(SwitchSequenceTest, ObserversSeeTheStatusFromBeforeTheStep)
{
    Texts seen;
    struct Context
    {
        ExposedController* pController;
        Texts* pSeen;
    } context{&controller(), &seen};
    IOpcPctrlObserver observer{&context, [](void* vpThis, unsigned int, int) {
                                   const auto* pContext = static_cast<Context*>(vpThis);
                                   pContext->pSeen->push_back(
                                       std::to_string(pContext->pController->getOPCState()) + ' ' +
                                       std::to_string(pContext->pController->getTxPowerActualStatus()) + ' ' +
                                       std::to_string(pContext->pController->getPctrl()));
                               }};
    controller().registerPctrlObserver(&observer);
    controller().m_nPctrlMax = 1000;
    controller().m_nRampingCount = 5;
    controller().m_nPctrl = 0;
    enter(eOPC_TX_ON_RAMPING);
    regulateTimes(50, 1);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);
    (void)controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE);
    regulateTimes(50, 2);
    EXPECT_EQ(seen, (Texts{"7 0 -9900", "1 1 -9900"}));
}
