// Requests for the transmitter.
#include "tests/support/ControllerTest.h"

namespace
{
constexpr EOPCState ALL_STATES[] = {eOPC_TX_OFF_INITIATED,
                                    eOPC_TX_OFF_IN_PROGRESS,
                                    eOPC_TX_OFF,
                                    eOPC_DELAYED_TX_ON_INITIATED,
                                    eOPC_DELAYED_TX_ON_IN_PROGRESS,
                                    eOPC_TX_ON_INITIATED,
                                    eOPC_TX_ON_IN_PROGRESS,
                                    eOPC_TX_ON_RAMPING,
                                    eOPC_TX_ON,
                                    eOPC_UNDEFINED};

class RequestTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
    }

    /** Requests with the mode that the controller holds. */
    int request(int nState)
    {
        return controller().setRequestedTxPowerState(static_cast<ERequestedTxPowerState>(nState),
                                                     controller().m_eTxPowerMode);
    }

    RecordingObservers m_observers;
};
} // namespace

TEST_F(RequestTest, OnWhileTheStatusIsOffInitiatesTheSwitchOnFromEveryState)
{
    for (const EOPCState eState : ALL_STATES) {
        controller().m_eOPCState = eState;
        EXPECT_EQ(request(1), EAF_OK);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_INITIATED);
        EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_OFF);
    }
    EXPECT_EQ(m_platform.calls(), Texts{});
}

TEST_F(RequestTest, OffWhileTheStatusIsOffIsIgnoredInEveryState)
{
    for (const EOPCState eState : ALL_STATES) {
        controller().m_eOPCState = eState;
        EXPECT_EQ(request(0), EAF_OK);
        EXPECT_EQ(controller().getOPCState(), eState);
    }
}

TEST_F(RequestTest, OffWhileTheStatusIsOnInitiatesTheSwitchOffFromEveryState)
{
    controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
    for (const EOPCState eState : ALL_STATES) {
        controller().m_eOPCState = eState;
        EXPECT_EQ(request(0), EAF_OK);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_OFF_INITIATED);
        EXPECT_EQ(controller().getTxPowerActualStatus(), eTX_POWER_ACTUAL_ON);
    }
}

TEST_F(RequestTest, OnWhileTheStatusIsOnIsIgnoredInEveryState)
{
    controller().m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
    for (const EOPCState eState : ALL_STATES) {
        controller().m_eOPCState = eState;
        EXPECT_EQ(request(1), EAF_OK);
        EXPECT_EQ(controller().getOPCState(), eState);
    }
}

TEST_F(RequestTest, TracesWhatIsAskedFor)
{
    const std::pair<int, const char*> cases[] = {{0, "OFF"}, {1, "ON"}, {2, "ON"}, {-1, "ON"}};
    for (const auto& [nState, pText] : cases) {
        m_platform.clearRecords();
        (void)request(nState);
        const RecordedTrace trace = m_platform.traces().at(0);
        EXPECT_EQ(trace.sText, std::string("setRequestedTxPowerState(): Turn transmitter ") + pText);
        EXPECT_EQ(trace.nLevel, 5);
        EXPECT_EQ(trace.sSourcePath, CONTROLLER_SOURCE_PATH);
    }
}

TEST_F(RequestTest, AnUnknownStateIsRefusedAndLeavesTheStateAlone)
{
    for (const int nState : {2, -1, 100, INT32_MIN}) {
        for (const ETxPowerActualStatus eStatus : {eTX_POWER_ACTUAL_OFF, eTX_POWER_ACTUAL_ON}) {
            m_platform.clearRecords();
            controller().m_eTxPowerActualStatus = eStatus;
            EXPECT_EQ(request(nState), EAF_NULL_POINTER);
            EXPECT_EQ(controller().getOPCState(), eOPC_TX_OFF);
            EXPECT_EQ(m_platform.traceTexts(1),
                      Texts{"setRequestedTxPowerState(): called with unknown power state " + std::to_string(nState)});
        }
    }
}

TEST_F(RequestTest, AnUnknownStateStillTakesAndReportsAChangedMode)
{
    EXPECT_EQ(controller().setRequestedTxPowerState(static_cast<ERequestedTxPowerState>(2), eTX_POWER_MODE_FREE),
              EAF_NULL_POINTER);
    EXPECT_EQ(m_platform.calls(), Texts{"powerMode(0, 1)"});
    EXPECT_EQ(controller().m_eTxPowerMode, eTX_POWER_MODE_FREE);
}

TEST_F(RequestTest, AChangedModeIsReportedAndKept)
{
    for (const int nMode : {0, 1, 3, 4, -1, INT32_MAX}) {
        m_platform.clearRecords();
        const auto eMode = static_cast<ETxPowerMode>(nMode);
        EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eMode), EAF_OK);
        EXPECT_EQ(m_platform.calls(), Texts{"powerMode(0, " + std::to_string(nMode) + ")"});
        EXPECT_EQ(controller().m_eTxPowerMode, eMode);
        EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eMode), EAF_OK);
        EXPECT_EQ(m_platform.calls().size(), 1U) << "the current mode is not reported";
    }
}

TEST_F(RequestTest, TheModeThatANewControllerHoldsIsNotReported)
{
    EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_INITIAL), EAF_OK);
    EXPECT_EQ(m_platform.calls(), Texts{});
}

TEST_F(RequestTest, ModeTwoIsReportedEveryTimeAndKeptAsZero)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_REPORT_THEN_LIMIT),
                  EAF_OK);
        EXPECT_EQ(controller().m_eTxPowerMode, eTX_POWER_MODE_STEP_LIMITED);
    }
    EXPECT_EQ(m_platform.calls(), Texts(3, "powerMode(0, 2)"));
    EXPECT_EQ(controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_STEP_LIMITED), EAF_OK);
    EXPECT_EQ(m_platform.calls().size(), 3U) << "mode 0 is the current one after mode 2";
}

TEST_F(RequestTest, ModeTwoIsStillTwoWhileItIsReported)
{
    struct Seen
    {
        ExposedController* pController;
        ETxPowerMode eMode;
    } seen{&controller(), eTX_POWER_MODE_INITIAL};
    IOpcPowerModeObserver observer{&seen, [](void* vpThis, unsigned int, ETxPowerMode) {
                                       auto* pSeen = static_cast<Seen*>(vpThis);
                                       pSeen->eMode = pSeen->pController->m_eTxPowerMode;
                                   }};
    controller().registerPowerModeObserver(&observer);
    (void)controller().setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_REPORT_THEN_LIMIT);
    EXPECT_EQ(seen.eMode, eTX_POWER_MODE_REPORT_THEN_LIMIT);
}

TEST_F(RequestTest, ARepeatedOnRequestWhileSwitchingOnRestartsTheSequence)
{
    controller().m_nPctrl = 400;
    enter(eOPC_TX_ON_RAMPING);
    EXPECT_EQ(request(1), EAF_OK);
    EXPECT_EQ(controller().regulate(0), EAF_OK);
    EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON_IN_PROGRESS);
    EXPECT_EQ(controller().m_nPctrl, controller().m_nTxPmin);
}
