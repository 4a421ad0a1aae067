#include "Unit/SafetyMonitor/MonitoredController.h"

#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "Unit/SafetyMonitor/ViolationStore.h"

#include <gmock/gmock.h>

#include <string>
#include <tuple>
#include <vector>

using ::testing::ElementsAre;

namespace
{
/** A controller that is only a table; writes its calls down. */
class RecordingController
{
public:
    RecordingController()
    {
        table.vpThis = this;
        fillInputs();
        fillOutputs();
        fillObservers();
    }

    template <class... TValues> long record(const char* pName, TValues... values)
    {
        std::string sCall = pName;
        ((sCall += " " + std::to_string(values)), ...);
        calls.push_back(sCall);
        return nResult++;
    }

    IOutputPowerControllerCStruct table{};
    std::vector<std::string> calls;
    std::vector<void*> observers;
    long nResult = 100;

private:
    static RecordingController& self(void* vpThis) { return *static_cast<RecordingController*>(vpThis); }

    template <class TObserver> static long observe(void* vpThis, TObserver* pObserver)
    {
        self(vpThis).observers.push_back(pObserver);
        return self(vpThis).nResult++;
    }

    void fillInputs()
    {
        table.staticSetTxPminPmax = [](void* p, long a, long b) { return self(p).record("limits", a, b); };
        table.staticSetRequestedTxPowerState = [](void* p, ERequestedTxPowerState a, ETxPowerMode b) {
            return self(p).record("request", static_cast<int>(a), static_cast<int>(b));
        };
        table.staticSetProductionTestSettings = [](void* p, unsigned int a, ERfDetectorLoopMode b) {
            return self(p).record("production", a, static_cast<int>(b));
        };
        table.staticSetRegulatorInterval = [](void* p, long a) { return self(p).record("interval", a); };
        table.staticRegulate = [](void* p, long a) { return self(p).record("regulate", a); };
        table.staticSetGain = [](void* p, EOPHDetectorState a, EOPCState b, long c) {
            return self(p).record("setGain", static_cast<int>(a), static_cast<int>(b), c);
        };
    }

    void fillOutputs()
    {
        table.staticGetOPCState = [](void* p, EOPCState* a) {
            *a = eOPC_TX_ON_RAMPING;
            return self(p).record("state");
        };
        table.staticGetTxPowerActualStatus = [](void* p, ETxPowerActualStatus* a) {
            *a = eTX_POWER_ACTUAL_ON;
            return self(p).record("status");
        };
        table.staticGetPctrl = [](void* p, long* a) {
            *a = -77;
            return self(p).record("pctrl");
        };
        table.staticGetPmeasured = [](void* p, long* a) {
            *a = -78;
            return self(p).record("pmeasured");
        };
        table.staticGetGain = [](void* p, EOPHDetectorState a, EOPCState b, long* c) {
            *c = 35;
            return self(p).record("getGain", static_cast<int>(a), static_cast<int>(b));
        };
        table.staticGetLogData = [](void* p, long* a, long* b, long* c, long* d, long* e, long* f, EOPCState* g,
                                    EOPHDetectorState* h) {
            std::tie(*a, *b, *c, *d, *e, *f) = std::tuple(1, 2, 3, 4, 5, 6);
            *g = eOPC_TX_ON;
            *h = eOPH_DETECTOR_STATE_1;
            return self(p).record("log");
        };
    }

    void fillObservers()
    {
        table.staticRegisterPctrlObserver = &observe<IOpcPctrlObserver>;
        table.staticRegisterPtargetObserver = &observe<IOpcPtargetObserver>;
        table.staticRegisterPredictedPctrlObserver = &observe<IOpcPredictedPctrlObserver>;
        table.staticRegisterPowerModeObserver = &observe<IOpcPowerModeObserver>;
    }
};

class MonitoredControllerTest : public ::testing::Test
{
protected:
    RecordingController m_real;
    ViolationStore m_store;
    TransmitterRules m_rules{0, EHeardSides::Both, m_store};
    MonitoredController m_monitored{m_real.table, m_rules};
    IInterface_c& m_interface = m_monitored;
    IOutputPowerControllerCStruct& m_table = *static_cast<IOutputPowerControllerCStruct*>(m_interface.getCStruct());
    void* m_pThis = m_table.vpThis;
};

TEST_F(MonitoredControllerTest, TablePassesInputsAndResultsOn)
{
    EXPECT_EQ(m_table.staticSetTxPminPmax(m_pThis, -500, 3000), 100);
    EXPECT_EQ(m_table.staticSetRequestedTxPowerState(m_pThis, eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE), 101);
    EXPECT_EQ(m_table.staticSetProductionTestSettings(m_pThis, 7, eRF_DETECTOR_LOOP_MODE_OPEN), 102);
    EXPECT_EQ(m_table.staticSetRegulatorInterval(m_pThis, 12), 103);
    EXPECT_EQ(m_table.staticRegulate(m_pThis, 1250), 104);
    EXPECT_EQ(m_table.staticSetGain(m_pThis, eOPH_DETECTOR_STATE_1, eOPC_TX_ON, 35), 105);
    EXPECT_THAT(m_real.calls, ElementsAre("limits -500 3000", "request 1 1", "production 7 2", "interval 12",
                                          "regulate 1250", "setGain 1 8 35"));
}

TEST_F(MonitoredControllerTest, TablePassesOutputsBack)
{
    EOPCState eState = eOPC_UNDEFINED;
    EXPECT_EQ(m_table.staticGetOPCState(m_pThis, &eState), 100);
    EXPECT_EQ(eState, eOPC_TX_ON_RAMPING);
    ETxPowerActualStatus eStatus = eTX_POWER_ACTUAL_OFF;
    EXPECT_EQ(m_table.staticGetTxPowerActualStatus(m_pThis, &eStatus), 101);
    EXPECT_EQ(eStatus, eTX_POWER_ACTUAL_ON);
    long nValue = 0;
    EXPECT_EQ(m_table.staticGetPctrl(m_pThis, &nValue), 102);
    EXPECT_EQ(nValue, -77);
    EXPECT_EQ(m_table.staticGetPmeasured(m_pThis, &nValue), 103);
    EXPECT_EQ(nValue, -78);
    EXPECT_EQ(m_table.staticGetGain(m_pThis, eOPH_DETECTOR_STATE_2, eOPC_TX_ON, &nValue), 104);
    EXPECT_EQ(nValue, 35);
    long anValue[6] = {};
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    EXPECT_EQ(m_table.staticGetLogData(m_pThis, &anValue[0], &anValue[1], &anValue[2], &anValue[3], &anValue[4],
                                       &anValue[5], &eState, &eDetectorState),
              105);
    EXPECT_THAT(anValue, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(eState, eOPC_TX_ON);
    EXPECT_EQ(eDetectorState, eOPH_DETECTOR_STATE_1);
    EXPECT_THAT(m_real.calls, ElementsAre("state", "status", "pctrl", "pmeasured", "getGain 2 8", "log"));
}

TEST_F(MonitoredControllerTest, TableAndClassPassObserversOn)
{
    IOpcPctrlObserver pctrl{};
    IOpcPtargetObserver ptarget{};
    IOpcPredictedPctrlObserver predicted{};
    IOpcPowerModeObserver mode{};
    EXPECT_EQ(m_table.staticRegisterPctrlObserver(m_pThis, &pctrl), 100);
    EXPECT_EQ(m_table.staticRegisterPtargetObserver(m_pThis, &ptarget), 101);
    EXPECT_EQ(m_table.staticRegisterPredictedPctrlObserver(m_pThis, &predicted), 102);
    EXPECT_EQ(m_table.staticRegisterPowerModeObserver(m_pThis, &mode), 103);
    m_monitored.registerPctrlObserver(&pctrl);
    m_monitored.registerPtargetObserver(&ptarget);
    m_monitored.registerPredictedPctrlObserver(&predicted);
    m_monitored.registerPowerModeObserver(&mode);
    EXPECT_THAT(m_real.observers,
                ElementsAre(&pctrl, &ptarget, &predicted, &mode, &pctrl, &ptarget, &predicted, &mode));
}

TEST_F(MonitoredControllerTest, ClassGoesTheSameWay)
{
    m_monitored.setTxPminPmax(-500, 3000);
    EXPECT_EQ(m_monitored.setRequestedTxPowerState(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_INITIAL), 101);
    EXPECT_EQ(m_monitored.setProductionTestSettings(true, eRF_DETECTOR_LOOP_MODE_OPEN), 102);
    m_monitored.setRegulatorInterval(12);
    EXPECT_EQ(m_monitored.regulate(-1), 104);
    m_monitored.setGain(eOPH_DETECTOR_STATE_1, eOPC_TX_ON, 35);
    EXPECT_EQ(m_monitored.getOPCState(), eOPC_TX_ON_RAMPING);
    EXPECT_EQ(m_monitored.getTxPowerActualStatus(), eTX_POWER_ACTUAL_ON);
    EXPECT_EQ(m_monitored.getPctrl(), -77);
    EXPECT_EQ(m_monitored.getPmeasured(), -78);
    EXPECT_EQ(m_monitored.getGain(eOPH_DETECTOR_STATE_0, eOPC_TX_ON), 35);
    int anValue[6] = {};
    EOPCState eState = eOPC_UNDEFINED;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    m_monitored.getLogData(&anValue[0], &anValue[1], &anValue[2], &anValue[3], &anValue[4], &anValue[5], &eState,
                           &eDetectorState);
    EXPECT_THAT(anValue, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(eState, eOPC_TX_ON);
    EXPECT_EQ(eDetectorState, eOPH_DETECTOR_STATE_1);
    EXPECT_THAT(m_real.calls,
                ElementsAre("limits -500 3000", "request 0 3", "production 1 2", "interval 12", "regulate -1",
                            "setGain 1 8 35", "state", "status", "pctrl", "pmeasured", "getGain 0 8", "log"));
}

TEST_F(MonitoredControllerTest, RefusesANullControllerAndTouchesNothing)
{
    EXPECT_EQ(m_table.staticSetTxPminPmax(nullptr, 0, 0), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticSetRequestedTxPowerState(nullptr, eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE),
              EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticSetProductionTestSettings(nullptr, 0, eRF_DETECTOR_LOOP_MODE_NORMAL), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticSetRegulatorInterval(nullptr, 6), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticGetOPCState(nullptr, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticGetTxPowerActualStatus(nullptr, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticGetPctrl(nullptr, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticRegisterPctrlObserver(nullptr, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticRegisterPtargetObserver(nullptr, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticRegisterPredictedPctrlObserver(nullptr, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticRegisterPowerModeObserver(nullptr, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticRegulate(nullptr, 0), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticGetLogData(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticGetPmeasured(nullptr, nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticSetGain(nullptr, eOPH_DETECTOR_STATE_0, eOPC_TX_ON, 0), EAF_NULL_POINTER);
    EXPECT_EQ(m_table.staticGetGain(nullptr, eOPH_DETECTOR_STATE_0, eOPC_TX_ON, nullptr), EAF_NULL_POINTER);
    EXPECT_TRUE(m_real.calls.empty());
    EXPECT_EQ(m_rules.steps(), 0U);
}

TEST_F(MonitoredControllerTest, HasNoEntryThatTheOtherTableLacks)
{
    m_real.table.staticGetPctrl = nullptr;
    m_real.table.staticRegulate = nullptr;
    MonitoredController monitored(m_real.table, m_rules);
    IInterface_c& interface = monitored;
    const auto& table = *static_cast<IOutputPowerControllerCStruct*>(interface.getCStruct());
    EXPECT_EQ(table.staticGetPctrl, nullptr);
    EXPECT_EQ(table.staticRegulate, nullptr);
    EXPECT_NE(table.staticSetGain, nullptr);
}

TEST_F(MonitoredControllerTest, CastsAsWhatTheBrokerHandsOut)
{
    IInterface* const pPublished = &m_monitored;
    EXPECT_EQ(dynamic_cast<IOutputPowerController*>(pPublished), &m_monitored);
    EXPECT_EQ(IOutputPowerController::staticRegulate(m_pThis, 9), 100);
    EXPECT_EQ(m_rules.steps(), 1U);
}
} // namespace
