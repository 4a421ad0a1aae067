// The calibration offsets that make the target.
#include "tests/support/ControllerTest.h"

namespace
{
constexpr const char* BANDWIDTH_TABLE = "Channel.0.P.Level.Over.Bandwidth.To.OPC.Target.Offset";
constexpr const char* FREQUENCY_TABLE = "Channel.0.Frequency.Over.Temperature.To.OPC.Target.Offset";

class TargetOffsetTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        bandwidth().value = [](int nX, int nY) { return nX + 10 * nY; };
        frequency().value = [](int nX, int nY) { return 1000 * nX + nY; };
        ASSERT_EQ(controller().onModuleInit(), EAF_OK);
        controller().m_nChannelSpacing = 28000;
        m_platform.clearRecords();
    }

    int value(CCalibrationTable* pTable)
    {
        int nValue = 12345;
        EXPECT_EQ(controller().getBilinearTableValue(pTable, 3, 4, &nValue), EAF_OK);
        return nValue;
    }

    CCalibrationTable& bandwidth() { return m_platform.table(BANDWIDTH_TABLE); }
    CCalibrationTable& frequency() { return m_platform.table(FREQUENCY_TABLE); }
};
} // namespace

TEST_F(TargetOffsetTest, BothOffsetsAreLookedUpAtTheirPlaceAndAdded)
{
    controller().m_nTxFrequency = 7;
    controller().m_nTemperature = -5;
    EXPECT_EQ(controller().regulate(300), EAF_OK);
    EXPECT_EQ(controller().m_nPtarget, 300 + (300 + 280000) + (7000 - 5));
    EXPECT_EQ(m_platform.calls(), (Texts{std::string("IsValid(") + BANDWIDTH_TABLE + ")",
                                         std::string("BiLinearInterpolate(") + BANDWIDTH_TABLE + ", 300, 28000)",
                                         std::string("IsValid(") + FREQUENCY_TABLE + ")",
                                         std::string("BiLinearInterpolate(") + FREQUENCY_TABLE + ", 7, -5)"}));
}

TEST_F(TargetOffsetTest, WithoutTablesTheTargetIsWhatWasRequested)
{
    controller().m_calTablePtargetOverBandwidthToPTargetOffset = nullptr;
    controller().m_calTableFrequencyOverTemperatureToPTargetOffset = nullptr;
    EXPECT_EQ(controller().regulate(-777), EAF_OK);
    EXPECT_EQ(controller().m_nPtarget, -777);
    EXPECT_EQ(m_platform.calls(), Texts{});
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

TEST_F(TargetOffsetTest, TheTargetWrapsIn32Bits)
{
    bandwidth().value = [](int, int) { return INT32_MAX; };
    frequency().value = [](int, int) { return INT32_MAX; };
    EXPECT_EQ(controller().regulate(1), EAF_OK);
    EXPECT_EQ(controller().m_nPtarget, -1);
    EXPECT_EQ(controller().regulate(INT32_MIN), EAF_OK);
    EXPECT_EQ(controller().m_nPtarget, INT32_MAX - 1);
}

TEST_F(TargetOffsetTest, ATableGivesItsValue)
{
    EXPECT_EQ(value(&bandwidth()), 43);
}

TEST_F(TargetOffsetTest, NoTableGivesZeroWithoutACall)
{
    EXPECT_EQ(value(nullptr), 0);
    EXPECT_EQ(m_platform.calls(), Texts{});
}

TEST_F(TargetOffsetTest, ATableThatIsNotValidGivesZeroWithoutInterpolation)
{
    bandwidth().nValid = 0;
    EXPECT_EQ(value(&bandwidth()), 0);
    bandwidth().nValid = 1;
    bandwidth().nIsValidResult = EAF_FAILED;
    EXPECT_EQ(value(&bandwidth()), 0);
    EXPECT_EQ(m_platform.callsOf("BiLinearInterpolate"), Texts{});
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_F(TargetOffsetTest, EveryValidityButZeroCountsAndSoDoesEveryResultBelow0x8000)
{
    for (const int nValid : {-1, 2, INT32_MIN}) {
        bandwidth().nValid = nValid;
        EXPECT_EQ(value(&bandwidth()), 43);
    }
    for (const EAFResult nResult : {0x7FFF, -1}) {
        bandwidth().nIsValidResult = nResult;
        EXPECT_EQ(value(&bandwidth()), 43);
    }
}

TEST_F(TargetOffsetTest, TheResultOfTheInterpolationIsNotLookedAt)
{
    bandwidth().nInterpolateResult = EAF_FAILED;
    EXPECT_EQ(value(&bandwidth()), 43);
    bandwidth().bInterpolateWrites = false;
    EXPECT_EQ(value(&bandwidth()), 0);
    EXPECT_TRUE(m_platform.traces().empty());
}
