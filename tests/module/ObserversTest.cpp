// The four observer lists.
#include "tests/support/ControllerTest.h"

#include <functional>

namespace
{
struct NotifyCase
{
    const char* pWhat;
    std::function<void(ExposedController&, int)> notify;
    std::function<void(ExposedController&, RecordingObservers&)> registerOne;
};

const NotifyCase NOTIFY_CASES[] = {
    {"pctrl", [](ExposedController& controller, int nValue) { controller.notifyPctrlObservers(nValue); },
     [](ExposedController& controller, RecordingObservers& observers) {
         controller.registerPctrlObserver(&observers.m_pctrl);
     }},
    {"ptarget", [](ExposedController& controller, int nValue) { controller.notifyPtargetObservers(nValue); },
     [](ExposedController& controller, RecordingObservers& observers) {
         controller.registerPtargetObserver(&observers.m_ptarget);
     }},
    {"predictedPctrl",
     [](ExposedController& controller, int nValue) { controller.notifyPredictedPctrlObservers(nValue); },
     [](ExposedController& controller, RecordingObservers& observers) {
         controller.registerPredictedPctrlObserver(&observers.m_predictedPctrl);
     }},
    {"powerMode",
     [](ExposedController& controller, int nValue) {
         controller.notifyPowerModeObservers(static_cast<ETxPowerMode>(nValue));
     },
     [](ExposedController& controller, RecordingObservers& observers) {
         controller.registerPowerModeObserver(&observers.m_powerMode);
     }},
};

class ObserverListTest : public ControllerTest, public ::testing::WithParamInterface<NotifyCase>
{
protected:
    std::string call(const char* pSet, unsigned int nChannel, int nValue)
    {
        return std::string(pSet) + GetParam().pWhat + "(" + std::to_string(nChannel) + ", " + std::to_string(nValue) +
               ")";
    }

    RecordingObservers m_first{"first "};
    RecordingObservers m_second{"second "};
};

class NotifyObserversTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
        controller().m_nPtarget = 0;
        controller().m_nPctrl = 0;
        controller().m_nPredictedPctrl = 0;
    }

    RecordingObservers m_observers;
};
} // namespace

TEST_P(ObserverListTest, WithoutObserversNothingHappens)
{
    GetParam().notify(controller(), 5);
    controller().notifyObservers();
    EXPECT_EQ(m_platform.calls(), Texts{});
}

TEST_P(ObserverListTest, EveryObserverIsCalledInTheOrderOfRegistration)
{
    build(3);
    GetParam().registerOne(controller(), m_second);
    GetParam().registerOne(controller(), m_first);
    for (const int nValue : {0, -9900, 0, INT32_MIN, INT32_MAX}) {
        GetParam().notify(controller(), nValue);
        EXPECT_EQ(takeCalls(), (Texts{call("second ", 3, nValue), call("first ", 3, nValue)}));
    }
}

TEST_P(ObserverListTest, ARecordRegisteredTwiceIsCalledTwiceInItsPlaces)
{
    GetParam().registerOne(controller(), m_first);
    GetParam().registerOne(controller(), m_second);
    GetParam().registerOne(controller(), m_first);
    GetParam().notify(controller(), 7);
    EXPECT_EQ(takeCalls(), (Texts{call("first ", 0, 7), call("second ", 0, 7), call("first ", 0, 7)}));
}

TEST_P(ObserverListTest, OnlyItsOwnListIsTold)
{
    m_first.registerWith(controller());
    GetParam().notify(controller(), 7);
    EXPECT_EQ(takeCalls(), Texts{call("first ", 0, 7)});
}

TEST_P(ObserverListTest, TheRecordItselfIsUsedNotACopy)
{
    GetParam().registerOne(controller(), m_first);
    m_first.m_pctrl.vpThis = &m_second;
    m_first.m_ptarget.vpThis = &m_second;
    m_first.m_predictedPctrl.vpThis = &m_second;
    m_first.m_powerMode.vpThis = &m_second;
    GetParam().notify(controller(), 7);
    EXPECT_EQ(takeCalls(), Texts{call("second ", 0, 7)});
}

TEST_P(ObserverListTest, NotificationLeavesTheLastToldValuesAlone)
{
    controller().m_nLastNotifiedPctrl = 1;
    controller().m_nLastNotifiedPtarget = 2;
    controller().m_nLastNotifiedPredictedPctrl = 3;
    GetParam().notify(controller(), 7);
    EXPECT_EQ(controller().m_nLastNotifiedPctrl, 1);
    EXPECT_EQ(controller().m_nLastNotifiedPtarget, 2);
    EXPECT_EQ(controller().m_nLastNotifiedPredictedPctrl, 3);
}

INSTANTIATE_TEST_SUITE_P(Lists, ObserverListTest, ::testing::ValuesIn(NOTIFY_CASES),
                         [](const auto& list) { return std::string(list.param.pWhat); });

TEST_F(NotifyObserversTest, TellsTargetThenControlThenPrediction)
{
    controller().m_nPtarget = 1;
    controller().m_nPctrl = 2;
    controller().m_nPredictedPctrl = 3;
    controller().notifyObservers();
    EXPECT_EQ(takeCalls(), (Texts{"ptarget(0, 1)", "pctrl(0, 2)", "predictedPctrl(0, 3)"}));
    EXPECT_EQ(controller().m_nLastNotifiedPtarget, 1);
    EXPECT_EQ(controller().m_nLastNotifiedPctrl, 2);
    EXPECT_EQ(controller().m_nLastNotifiedPredictedPctrl, 3);
    controller().notifyObservers();
    EXPECT_EQ(takeCalls(), Texts{}) << "unchanged values are told to nobody";
}

TEST_F(NotifyObserversTest, TellsOnlyWhatChanged)
{
    controller().m_nPtarget = -1;
    controller().notifyObservers();
    EXPECT_EQ(takeCalls(), Texts{"ptarget(0, -1)"});
    controller().m_nPctrl = -2;
    controller().notifyObservers();
    EXPECT_EQ(takeCalls(), Texts{"pctrl(0, -2)"});
    controller().m_nPredictedPctrl = -3;
    controller().notifyObservers();
    EXPECT_EQ(takeCalls(), Texts{"predictedPctrl(0, -3)"});
}

TEST_F(NotifyObserversTest, ANewControllersLastToldValuesAreZero)
{
    controller().notifyObservers();
    EXPECT_EQ(takeCalls(), Texts{}) << "all three are 0, as was told last";
}

TEST_F(NotifyObserversTest, RemembersTheValueBeforeItTellsIt)
{
    struct Seen
    {
        ExposedController* pController;
        int nLast;
    } seen{&controller(), 0};
    IOpcPctrlObserver observer{&seen, [](void* vpThis, unsigned int, int) {
                                   auto* pSeen = static_cast<Seen*>(vpThis);
                                   pSeen->nLast = pSeen->pController->m_nLastNotifiedPctrl;
                               }};
    controller().registerPctrlObserver(&observer);
    controller().m_nPctrl = 9;
    controller().notifyObservers();
    EXPECT_EQ(seen.nLast, 9);
}

TEST_F(NotifyObserversTest, RememberedEvenWithoutObservers)
{
    build(0);
    controller().m_nPctrl = 9;
    controller().notifyObservers();
    m_observers.registerWith(controller());
    controller().m_nPtarget = controller().m_nLastNotifiedPtarget;
    controller().m_nPredictedPctrl = controller().m_nLastNotifiedPredictedPctrl;
    controller().notifyObservers();
    EXPECT_EQ(takeCalls(), Texts{});
}

TEST_F(NotifyObserversTest, TheFirstAfterTheRampComparesWithTheValuesFromBeforeIt)
{
    controller().m_nPctrlMax = 5000;
    controller().m_nRampingCount = 5;
    controller().m_nLastNotifiedPctrl = 120;
    controller().m_nPctrl = 100;
    enter(eOPC_TX_ON_RAMPING);
    EXPECT_EQ(controller().regulate(200), EAF_OK); // error 100 ends the ramp at 120
    EXPECT_EQ(controller().m_nPctrl, 120);
    m_platform.clearRecords();
    controller().notifyObservers();
    EXPECT_EQ(takeCalls(), Texts{"ptarget(0, 200)"}) << "the ramp told 120 as everything, but that is not remembered";
}

TEST_F(NotifyObserversTest, AfterTheSwitchOffEveryoneIsToldOnce)
{
    enter(eOPC_TX_OFF_IN_PROGRESS);
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
    EXPECT_EQ(m_platform.callsOf("p"), (Texts{"ptarget(0, -9900)", "pctrl(0, -9900)", "predictedPctrl(0, -9900)"}));
    enter(eOPC_TX_OFF_IN_PROGRESS);
    m_platform.clearRecords();
    EXPECT_EQ(controller().handleOPCStateMachine(), EAF_OK);
    EXPECT_EQ(takeCalls(), Texts{"setTxState(1)"});
}
