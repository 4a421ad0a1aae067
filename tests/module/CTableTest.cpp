// The C function table: its order, what each entry calls, and null objects.
#include "Control/OutputPowerController/IOutputPowerController.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

namespace
{
using Calls = std::vector<std::string>;

template <class... TArguments> std::string callText(const char* pOperation, TArguments... arguments)
{
    std::string sArguments;
    ((sArguments += (sArguments.empty() ? "" : ", ") + std::to_string(arguments)), ...);
    return pOperation + ("(" + sArguments + ")");
}

/** Records which operation was called with what; every getter gives a value of its own. */
class FakeController : public IOutputPowerController
{
public:
    void setTxPminPmax(int nTxPmin, unsigned int nTxPmax) override { add("setTxPminPmax", nTxPmin, nTxPmax); }
    int setRequestedTxPowerState(ERequestedTxPowerState eState, ETxPowerMode eMode) override
    {
        return add("setRequestedTxPowerState", int{eState}, int{eMode});
    }
    int setProductionTestSettings(bool bProductionTest, ERfDetectorLoopMode eLoopMode) override
    {
        return add("setProductionTestSettings", int{bProductionTest}, int{eLoopMode});
    }
    void setRegulatorInterval(int nIntervalMs) override { add("setRegulatorInterval", nIntervalMs); }
    EOPCState getOPCState() const override { return eOPC_TX_ON_RAMPING; }
    ETxPowerActualStatus getTxPowerActualStatus() const override { return eTX_POWER_ACTUAL_ON; }
    int getPctrl() const override { return -123; }
    void registerPctrlObserver(IOpcPctrlObserver* pObserver) override { keep("registerPctrlObserver", pObserver); }
    void registerPtargetObserver(IOpcPtargetObserver* pObserver) override
    {
        keep("registerPtargetObserver", pObserver);
    }
    void registerPredictedPctrlObserver(IOpcPredictedPctrlObserver* pObserver) override
    {
        keep("registerPredictedPctrlObserver", pObserver);
    }
    void registerPowerModeObserver(IOpcPowerModeObserver* pObserver) override
    {
        keep("registerPowerModeObserver", pObserver);
    }
    int regulate(int nPtarget) override { return add("regulate", nPtarget); }
    void getLogData(int* pPtarget, int* pPctrl, int* pPowerError, int* pPmeasured, int* pTxPmin, int* pPctrlMax,
                    EOPCState* pState, EOPHDetectorState* pDetectorState) const override
    {
        *pPtarget = -1;
        *pPctrl = -2;
        *pPowerError = -3;
        *pPmeasured = -4;
        *pTxPmin = -5;
        *pPctrlMax = -6;
        *pState = eOPC_TX_ON;
        *pDetectorState = eOPH_DETECTOR_STATE_2;
    }
    int getPmeasured() const override { return -456; }
    void setGain(EOPHDetectorState eDetectorState, EOPCState eState, int nGainPercent) override
    {
        add("setGain", int{eDetectorState}, int{eState}, nGainPercent);
    }
    int getGain(EOPHDetectorState eDetectorState, EOPCState eState) const override
    {
        return 100 * int{eDetectorState} + int{eState};
    }

    Calls m_calls;
    void* m_pObserver = nullptr;
    int m_nResult = 0; /**< result of every operation that has one */

private:
    template <class... TArguments> int add(const char* pOperation, TArguments... arguments)
    {
        m_calls.push_back(callText(pOperation, arguments...));
        return m_nResult;
    }
    void keep(const char* pOperation, void* pObserver)
    {
        m_calls.emplace_back(pOperation);
        m_pObserver = pObserver;
    }
};

constexpr std::size_t ENTRY_COUNT = 17;
using AnyFunction = void (*)();
static_assert(sizeof(IOutputPowerControllerCStruct) == ENTRY_COUNT * sizeof(AnyFunction));

class CTableTest : public ::testing::Test
{
protected:
    void SetUp() override { std::memcpy(m_entries.data(), m_controller.getCStruct(), sizeof m_entries); }

    /** Calls the entry of an index, as a C caller who goes by the order does. */
    template <class... TParameters> long call(std::size_t nIndex, void* vpThis, TParameters... arguments)
    {
        return reinterpret_cast<long (*)(void*, TParameters...)>(m_entries.at(nIndex))(vpThis, arguments...);
    }

    void* vpThis() { return static_cast<IOutputPowerController*>(&m_controller); }

    FakeController m_controller;
    std::array<AnyFunction, ENTRY_COUNT> m_entries{};
};
} // namespace

TEST_F(CTableTest, BeginsWithTheInterfacePointer)
{
    void* pFirst = nullptr;
    std::memcpy(&pFirst, m_controller.getCStruct(), sizeof pFirst);
    EXPECT_EQ(pFirst, vpThis());
    EXPECT_EQ(m_controller.getCStruct(), m_controller.getCStruct());
}

TEST_F(CTableTest, SettersCallTheirOperationAndGiveZeroWhateverItReturns)
{
    m_controller.m_nResult = EAF_FAILED;
    EXPECT_EQ(call(1, vpThis(), -500L, 3000L), 0);
    EXPECT_EQ(call(4, vpThis(), 25L), 0);
    EXPECT_EQ(call(15, vpThis(), eOPH_DETECTOR_STATE_1, eOPC_TX_ON, 35L), 0);
    EXPECT_EQ(m_controller.m_calls,
              (Calls{"setTxPminPmax(-500, 3000)", "setRegulatorInterval(25)", "setGain(1, 8, 35)"}));
}

TEST_F(CTableTest, RequestsHandBackTheResultOfTheirOperation)
{
    for (const int nResult : {0, EAF_FAILED, EAF_NULL_POINTER, -1, 7, INT_MIN, INT_MAX}) {
        m_controller.m_nResult = nResult;
        EXPECT_EQ(call(2, vpThis(), eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_REPORT_THEN_LIMIT), nResult);
        EXPECT_EQ(call(3, vpThis(), 7U, eRF_DETECTOR_LOOP_MODE_OPEN), nResult);
        EXPECT_EQ(call(12, vpThis(), -900L), nResult);
    }
    m_controller.m_calls.resize(3);
    EXPECT_EQ(m_controller.m_calls,
              (Calls{"setRequestedTxPowerState(1, 2)", "setProductionTestSettings(1, 2)", "regulate(-900)"}));
}

// Where long has 64 bits, what does not fit wraps, as callers on 32 bits cannot even say it.
TEST_F(CTableTest, NumbersOf32BitsPassWhateverTheSizeOfLong)
{
    (void)call(1, vpThis(), long{INT_MIN}, long{INT_MAX});
    (void)call(4, vpThis(), long{INT_MAX});
    (void)call(12, vpThis(), long{INT_MIN});
    (void)call(15, vpThis(), eOPH_DETECTOR_STATE_0, eOPC_TX_ON, long{INT_MIN});
    (void)call(12, vpThis(), LONG_MAX);
    (void)call(1, vpThis(), LONG_MIN, -1L);
    const bool bWide = sizeof(long) > sizeof(int);
    EXPECT_EQ(
        m_controller.m_calls,
        (Calls{"setTxPminPmax(-2147483648, 2147483647)", "setRegulatorInterval(2147483647)", "regulate(-2147483648)",
               "setGain(0, 8, -2147483648)", bWide ? "regulate(-1)" : "regulate(2147483647)",
               bWide ? "setTxPminPmax(0, 4294967295)" : "setTxPminPmax(-2147483648, 4294967295)"}));
}

TEST_F(CTableTest, ProductionTestIsTrueForEveryNonZeroValue)
{
    for (const unsigned int nValue : {0U, 1U, 7U, 256U, 0x80000000U}) {
        m_controller.m_calls.clear();
        (void)call(3, vpThis(), nValue, eRF_DETECTOR_LOOP_MODE_NORMAL);
        EXPECT_EQ(m_controller.m_calls.at(0),
                  nValue == 0U ? "setProductionTestSettings(0, 0)" : "setProductionTestSettings(1, 0)");
    }
}

TEST_F(CTableTest, GettersStoreTheValueAndGiveZero)
{
    EOPCState eState = eOPC_UNDEFINED;
    EXPECT_EQ(call(5, vpThis(), &eState), 0);
    EXPECT_EQ(eState, eOPC_TX_ON_RAMPING);
    ETxPowerActualStatus eStatus = eTX_POWER_ACTUAL_OFF;
    EXPECT_EQ(call(6, vpThis(), &eStatus), 0);
    EXPECT_EQ(eStatus, eTX_POWER_ACTUAL_ON);
    long nValue = 1;
    EXPECT_EQ(call(7, vpThis(), &nValue), 0);
    EXPECT_EQ(nValue, -123);
    EXPECT_EQ(call(14, vpThis(), &nValue), 0);
    EXPECT_EQ(nValue, -456);
    EXPECT_EQ(call(16, vpThis(), eOPH_DETECTOR_STATE_2, eOPC_TX_ON_RAMPING, &nValue), 0);
    EXPECT_EQ(nValue, 207);
}

TEST_F(CTableTest, RegistrationsPassTheRecordOn)
{
    const std::tuple<std::size_t, const char*> cases[] = {{8, "registerPctrlObserver"},
                                                          {9, "registerPtargetObserver"},
                                                          {10, "registerPredictedPctrlObserver"},
                                                          {11, "registerPowerModeObserver"}};
    for (const auto& [nIndex, pOperation] : cases) {
        m_controller.m_calls.clear();
        int nRecord = 0;
        EXPECT_EQ(call(nIndex, vpThis(), static_cast<void*>(&nRecord)), 0);
        EXPECT_EQ(m_controller.m_calls, Calls{pOperation});
        EXPECT_EQ(m_controller.m_pObserver, &nRecord);
    }
}

TEST_F(CTableTest, LogDataCopiesSixNumbersInOrderAndPassesTheStates)
{
    std::array<long, 6> values{};
    EOPCState eState = eOPC_UNDEFINED;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    EXPECT_EQ(call(13, vpThis(), &values[0], &values[1], &values[2], &values[3], &values[4], &values[5], &eState,
                   &eDetectorState),
              0);
    EXPECT_EQ(values, (std::array<long, 6>{-1, -2, -3, -4, -5, -6}));
    EXPECT_EQ(eState, eOPC_TX_ON);
    EXPECT_EQ(eDetectorState, eOPH_DETECTOR_STATE_2);
}

TEST_F(CTableTest, ANullObjectGivesNullPointerAndTouchesNothing)
{
    long nValue = 42;
    EOPCState eState = eOPC_UNDEFINED;
    ETxPowerActualStatus eStatus = eTX_POWER_ACTUAL_ON;
    EOPHDetectorState eDetectorState = eOPH_DETECTOR_STATE_UNKNOWN;
    void* const pNoObserver = nullptr;
    EXPECT_EQ(call(1, nullptr, 1L, 2L), EAF_NULL_POINTER);
    EXPECT_EQ(call(2, nullptr, eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_FREE), EAF_NULL_POINTER);
    EXPECT_EQ(call(3, nullptr, 1U, eRF_DETECTOR_LOOP_MODE_NORMAL), EAF_NULL_POINTER);
    EXPECT_EQ(call(4, nullptr, 6L), EAF_NULL_POINTER);
    EXPECT_EQ(call(5, nullptr, &eState), EAF_NULL_POINTER);
    EXPECT_EQ(call(6, nullptr, &eStatus), EAF_NULL_POINTER);
    EXPECT_EQ(call(7, nullptr, &nValue), EAF_NULL_POINTER);
    for (const std::size_t nIndex : {8U, 9U, 10U, 11U}) {
        EXPECT_EQ(call(nIndex, nullptr, pNoObserver), EAF_NULL_POINTER);
    }
    EXPECT_EQ(call(12, nullptr, 1L), EAF_NULL_POINTER);
    EXPECT_EQ(call(13, nullptr, &nValue, &nValue, &nValue, &nValue, &nValue, &nValue, &eState, &eDetectorState),
              EAF_NULL_POINTER);
    EXPECT_EQ(call(14, nullptr, &nValue), EAF_NULL_POINTER);
    EXPECT_EQ(call(15, nullptr, eOPH_DETECTOR_STATE_0, eOPC_TX_ON, 1L), EAF_NULL_POINTER);
    EXPECT_EQ(call(16, nullptr, eOPH_DETECTOR_STATE_0, eOPC_TX_ON, &nValue), EAF_NULL_POINTER);

    EXPECT_EQ(nValue, 42);
    EXPECT_EQ(eState, eOPC_UNDEFINED);
    EXPECT_EQ(eStatus, eTX_POWER_ACTUAL_ON);
    EXPECT_EQ(eDetectorState, eOPH_DETECTOR_STATE_UNKNOWN);
    EXPECT_TRUE(m_controller.m_calls.empty());
}

TEST_F(CTableTest, NamedMembersStandInTheOrderOfTheOperations)
{
    const IOutputPowerControllerCStruct table = {nullptr,
                                                 &IOutputPowerController::staticSetTxPminPmax,
                                                 &IOutputPowerController::staticSetRequestedTxPowerState,
                                                 &IOutputPowerController::staticSetProductionTestSettings,
                                                 &IOutputPowerController::staticSetRegulatorInterval,
                                                 &IOutputPowerController::staticGetOPCState,
                                                 &IOutputPowerController::staticGetTxPowerActualStatus,
                                                 &IOutputPowerController::staticGetPctrl,
                                                 &IOutputPowerController::staticRegisterPctrlObserver,
                                                 &IOutputPowerController::staticRegisterPtargetObserver,
                                                 &IOutputPowerController::staticRegisterPredictedPctrlObserver,
                                                 &IOutputPowerController::staticRegisterPowerModeObserver,
                                                 &IOutputPowerController::staticRegulate,
                                                 &IOutputPowerController::staticGetLogData,
                                                 &IOutputPowerController::staticGetPmeasured,
                                                 &IOutputPowerController::staticSetGain,
                                                 &IOutputPowerController::staticGetGain};
    std::array<AnyFunction, ENTRY_COUNT> expected{};
    std::memcpy(expected.data(), &table, sizeof expected);
    for (std::size_t i = 1; i < ENTRY_COUNT; ++i) {
        EXPECT_EQ(m_entries.at(i), expected.at(i)) << i;
    }
}
