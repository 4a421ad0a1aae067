#include "tests/support/AllocationCount.h"
#include "tests/unit/safety/MonitoredLife.h"

#include <functional>
#include <string>

namespace
{
TEST_F(MonitoredLife, OfOrdinaryWorkIsClean)
{
    m_pMonitored->setRegulatorInterval(6);
    m_pMonitored->setTxPminPmax(-1000, 2000);
    for (int nTime = 0; nTime < 3; ++nTime) {
        m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_STEP_LIMITED);
        steps(300, 1200);
        EXPECT_EQ(m_pMonitored->getOPCState(), eOPC_TX_ON);
        m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_STEP_LIMITED);
        steps(5, 1200);
        EXPECT_EQ(m_pMonitored->getOPCState(), eOPC_TX_OFF);
    }
    m_rules.onStop();
    EXPECT_EQ(m_store.total(), 0U) << reported();
}

TEST_F(MonitoredLife, SwitchOnAboveTheUpperLimitIsReported)
{
    m_pMonitored->setTxPminPmax(2001, 3000);
    m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
    steps(1, 3000);
    EXPECT_EQ(m_store.count(ESafetyRule::CrossedLimits), 1U);
    EXPECT_EQ(m_store.total(), 1U) << reported();
}

TEST_F(MonitoredLife, LoopSwingsBetweenCrossedLimitsAndThatIsReported)
{
    m_pMonitored->setTxPminPmax(0, 3000);
    m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
    steps(50, 2000);
    ASSERT_EQ(m_store.total(), 0U) << reported();
    m_pMonitored->setTxPminPmax(2500, 3000);
    steps(10, 1000);
    EXPECT_EQ(m_store.count(ESafetyRule::CrossedLimits), 5U);
    EXPECT_EQ(m_store.total(), 5U) << reported();
}

TEST_F(MonitoredLife, HeldSwitchOffIsReported)
{
    m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
    steps(50, 100);
    m_pMonitored->setTxPminPmax(OPC_POWER_UNKNOWN, 0);
    m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE);
    steps(50, 100);
    EXPECT_EQ(m_store.count(ESafetyRule::SwitchOffHeld), 1U);
    m_pMonitored->setTxPminPmax(0, 0);
    steps(2, 100);
    EXPECT_EQ(m_pMonitored->getOPCState(), eOPC_TX_OFF);
    EXPECT_EQ(m_store.total(), 1U) << reported();
}

TEST_F(MonitoredLife, StepAllocatesNothing)
{
    m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
    steps(50, 1000);
    const std::size_t nBefore = allocationCount();
    steps(100, 1500);
    EXPECT_EQ(allocationCount(), nBefore);
}

/** A controller that is tampered with while it is on, and the rule that it then breaks. */
struct Tampering
{
    const char* pName;
    std::function<void(ExposedController&, IOutputPowerController&)> tamper;
    ESafetyRule eBroken;
};

class TamperedLife : public MonitoredLife, public ::testing::WithParamInterface<Tampering>
{
};

TEST_P(TamperedLife, IsReported)
{
    m_pMonitored->setRegulatorInterval(6);
    m_pMonitored->setTxPminPmax(-1000, 2000);
    m_pMonitored->setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_STEP_LIMITED);
    steps(300, 1200);
    ASSERT_EQ(m_store.total(), 0U) << reported();
    GetParam().tamper(*m_pController, *m_pMonitored);
    steps(200, 4000);
    EXPECT_GT(m_store.count(GetParam().eBroken), 0U) << reported();
}

void switchOff(IOutputPowerController& monitored)
{
    monitored.setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE);
    for (int nStep = 0; nStep < 3; ++nStep) {
        monitored.regulate(0);
    }
}

const Tampering TAMPERINGS[] = {
    {"ItsUpperLimitMoves", [](auto& controller, auto&) { controller.m_nPctrlMax = 2500; }, ESafetyRule::UpperLimit},
    {"ItsLowerLimitMoves",
     [](auto& controller, auto&) {
         controller.m_nPctrlMin = -5000;
         controller.m_nPctrl = -3000;
     },
     ESafetyRule::LowerLimit},
    {"ItsStepGrows", [](auto& controller, auto&) { controller.m_nMaxPctrlStep = 11; }, ESafetyRule::StepSize},
    {"ItForgetsThePowerMode", [](auto& controller, auto&) { controller.m_eTxPowerMode = eTX_POWER_MODE_FREE; },
     ESafetyRule::StepSize},
    {"ItGoesOnByItself",
     [](auto& controller, auto& monitored) {
         switchOff(monitored);
         controller.m_eOPCState = eOPC_TX_ON_INITIATED;
     },
     ESafetyRule::SwitchOnUnasked},
    {"ItDoesNotGoOff",
     [](auto& controller, auto& monitored) {
         monitored.setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE);
         controller.m_eOPCState = eOPC_TX_ON;
     },
     ESafetyRule::SwitchOffMissed},
    {"ItGoesOnRegulatingWhenOff",
     [](auto& controller, auto& monitored) {
         switchOff(monitored);
         controller.m_eOPCState = eOPC_TX_ON;
     },
     ESafetyRule::PowerWhileOff},
    {"ItDoesNotWaitForTheTransmitter",
     [](auto& controller, auto& monitored) {
         switchOff(monitored);
         monitored.setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
         controller.m_nTxOnInProgressCycles = 2;
     },
     ESafetyRule::SettlingTime},
    {"ItBeginsWithAnotherPower",
     [](auto& controller, auto& monitored) {
         switchOff(monitored);
         monitored.setRequestedTxPowerState(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE);
         controller.m_nTxPmin = -999;
     },
     ESafetyRule::StartPower},
    {"ItMutesWithTrafficOn",
     [](auto& controller, auto& monitored) {
         monitored.setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE);
         controller.m_eOPCState = eOPC_TX_OFF_IN_PROGRESS;
     },
     ESafetyRule::StepOrder},
};

INSTANTIATE_TEST_SUITE_P(Each, TamperedLife, ::testing::ValuesIn(TAMPERINGS),
                         [](const auto& tampering) { return std::string(tampering.param.pName); });

} // namespace
