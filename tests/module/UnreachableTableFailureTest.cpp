// The regulator's checks of its table look-ups, which never fail by themselves: the linker puts a look-up that can fail
// in between (--wrap in CMakeLists.txt).
#include "tests/support/ControllerTest.h"

namespace
{
// Result of the look-up of this number, counted from 1; the other ones succeed.
int s_nFailingLookUp = 0;
int s_nLookUps = 0;
int s_nResult = EAF_FAILED;
} // namespace

// The member function's own name for the linker; the object is its first argument.
extern "C" int realGetBilinearTableValue(const OutputPowerController* pThis, CCalibrationTable* pTable, int nX, int nY,
                                         int* pValue) __asm__("__real_" GET_BILINEAR_TABLE_VALUE);
extern "C" int wrappedGetBilinearTableValue(const OutputPowerController* pThis, CCalibrationTable* pTable, int nX,
                                            int nY, int* pValue) __asm__("__wrap_" GET_BILINEAR_TABLE_VALUE);

extern "C" int wrappedGetBilinearTableValue(const OutputPowerController* pThis, CCalibrationTable* pTable, int nX,
                                            int nY, int* pValue)
{
    ++s_nLookUps;
    const int nResult = realGetBilinearTableValue(pThis, pTable, nX, nY, pValue);
    return s_nLookUps == s_nFailingLookUp ? s_nResult : nResult;
}

namespace
{
class UnreachableTableFailureTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        m_observers.registerWith(controller());
        closeLoop(0, -5000, 5000);
        controller().m_nPtarget = 42;
        s_nLookUps = 0;
        s_nFailingLookUp = 0;
        s_nResult = EAF_FAILED;
    }

    void expectNothingChanged()
    {
        EXPECT_EQ(m_platform.calls(), Texts{});
        EXPECT_EQ(controller().m_nPtarget, 42);
        EXPECT_EQ(controller().m_nPctrl, 0);
        EXPECT_EQ(controller().getOPCState(), eOPC_TX_ON);
        EXPECT_EQ(m_platform.traces().back().sSourcePath, CONTROLLER_SOURCE_PATH);
    }

    RecordingObservers m_observers;
};
} // namespace

TEST_F(UnreachableTableFailureTest, TheBandwidthTableStopsTheStepFirst)
{
    s_nFailingLookUp = 1;
    EXPECT_EQ(controller().regulate(300), EAF_FAILED);
    EXPECT_EQ(s_nLookUps, 1);
    EXPECT_EQ(m_platform.traceTexts(1),
              Texts{"regulate(): failed to get value from table m_calTablePtargetOverBandwidthToPTargetOffset"});
    expectNothingChanged();
}

TEST_F(UnreachableTableFailureTest, TheFrequencyTableStopsTheStepSecond)
{
    s_nFailingLookUp = 2;
    EXPECT_EQ(controller().regulate(300), EAF_FAILED);
    EXPECT_EQ(s_nLookUps, 2);
    EXPECT_EQ(m_platform.traceTexts(1),
              Texts{"regulate(): failed to get value from table m_calTableFrequencyOverTemperatureToPTargetOffset"});
    expectNothingChanged();
}

TEST_F(UnreachableTableFailureTest, AResultBelow0x8000IsASuccess)
{
    s_nResult = 0x7FFF;
    for (s_nFailingLookUp = 1; s_nFailingLookUp <= 2; ++s_nFailingLookUp) {
        s_nLookUps = 0;
        EXPECT_EQ(controller().regulate(300), EAF_OK);
        EXPECT_EQ(s_nLookUps, 2);
        EXPECT_EQ(controller().m_nPtarget, 300);
    }
}
