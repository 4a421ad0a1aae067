#include "tests/module/log/LogTest.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <type_traits>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
using Sample = OutputPowerControlLog::TransientLog;

static_assert(offsetof(Sample, txRfPowerSet) == 0);
static_assert(offsetof(Sample, txRfPowerTarget) == 4);
static_assert(offsetof(Sample, txRfDetectedPower) == 8);
static_assert(offsetof(Sample, txIfPower) == 12);
static_assert(offsetof(Sample, txRfGain) == 16);
static_assert(sizeof(Sample) == 5 * sizeof(std::int32_t));
static_assert(std::is_trivially_copyable_v<Sample> && std::is_standard_layout_v<Sample>);
static_assert(OutputPowerControlLog::MAX_TRANSIENT_LOG_SAMPLES == 200);

class TransientLogTest : public LogTest
{
protected:
    /** @return the sample's five fields, or the outputs' values before the call when it failed */
    std::vector<int> read(unsigned short nSample)
    {
        std::vector<int> anField = {-1, -2, -3, -4, -5};
        m_nResult =
            m_log.getSampleFromTransientLog(nSample, &anField[0], &anField[1], &anField[2], &anField[3], &anField[4]);
        return anField;
    }

    int detectedPower(unsigned short nSample) { return read(nSample)[2]; }

    void addDetectedPower(int nDetectedPower) { m_log.addSampleToTransientLog(1, 2, nDetectedPower, 4, 5); }

    EAFResult m_nResult = EAF_OK;
};

TEST_F(TransientLogTest, IsEmptyAndInactiveAfterConstruction)
{
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 0U);
    EXPECT_FALSE(m_log.isTransientLogActive());
}

TEST_F(TransientLogTest, ReadingAnEmptyLogFails)
{
    for (const unsigned short nSample : std::initializer_list<unsigned short>{1, 200, 65535}) {
        EXPECT_THAT(read(nSample), ElementsAre(-1, -2, -3, -4, -5));
        EXPECT_EQ(m_nResult, EAF_FAILED);
        EXPECT_THAT(takeTraces(), ElementsAre("RQX.OPCL 1: getSampleFromTransientLog() No sample entries in log"));
    }
}

TEST_F(TransientLogTest, ReadingBeyondTheLastSampleFails)
{
    m_log.addSamples(3);
    for (const unsigned short nSample : std::initializer_list<unsigned short>{4, 201, 65535}) {
        EXPECT_THAT(read(nSample), ElementsAre(-1, -2, -3, -4, -5));
        EXPECT_EQ(m_nResult, EAF_FAILED);
        EXPECT_THAT(takeTraces(),
                    ElementsAre("RQX.OPCL 1: getSampleFromTransientLog() Requested sample number does not exist"));
    }
}

TEST_F(TransientLogTest, ReadsEachSampleInFieldOrder)
{
    m_log.addSamples(3);
    EXPECT_THAT(read(1), ElementsAre(100, 101, 202, 103, 104));
    EXPECT_EQ(m_nResult, EAF_OK);
    EXPECT_THAT(read(3), ElementsAre(300, 301, 302, 303, 304));
    EXPECT_EQ(m_nResult, EAF_OK);
    EXPECT_THAT(takeTraces(), IsEmpty());
}

TEST_F(TransientLogTest, EachSampleGetsTheDetectedPowerOfTheNext)
{
    m_log.setTransientLogActive(true);
    addDetectedPower(10);
    EXPECT_EQ(detectedPower(1), 10);
    addDetectedPower(20);
    EXPECT_EQ(detectedPower(1), 20);
    addDetectedPower(30);
    EXPECT_EQ(detectedPower(1), 20);
    EXPECT_EQ(detectedPower(2), 30);
    EXPECT_EQ(detectedPower(3), 30);
}

TEST_F(TransientLogTest, TheLastSampleLeavesTheOneBeforeUncorrected)
{
    m_log.setTransientLogActive(true);
    for (int i = 1; i <= 198; ++i) {
        addDetectedPower(i);
    }
    EXPECT_EQ(detectedPower(197), 198);
    addDetectedPower(199);
    EXPECT_EQ(detectedPower(198), 199);
    addDetectedPower(200);
    EXPECT_EQ(detectedPower(198), 199);
    EXPECT_EQ(detectedPower(199), 199);
    EXPECT_EQ(detectedPower(200), 200);
}

TEST_F(TransientLogTest, KeepsTheFirstTwoHundredSamples)
{
    m_log.setTransientLogActive(true);
    for (int i = 1; i <= 250; ++i) {
        m_log.addSampleToTransientLog(i, 1000 + i, 2000 + i, 3000 + i, 4000 + i);
        ASSERT_EQ(m_log.getNumberOfSamplesInTransientLog(), static_cast<unsigned int>(std::min(i, 200)));
    }
    for (unsigned short i = 1; i <= 200; ++i) {
        const int nDetectedPower = 2000 + (i < 199 ? i + 1 : i);
        ASSERT_THAT(read(i), ElementsAre(i, 1000 + i, nDetectedPower, 3000 + i, 4000 + i));
    }
    EXPECT_THAT(takeTraces(), IsEmpty());
}

TEST_F(TransientLogTest, RecordsAgainAfterAResetOfAFullLog)
{
    m_log.addSamples(201);
    m_log.resetTransientLog();
    EXPECT_TRUE(m_log.isTransientLogActive());
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 0U);
    addDetectedPower(7);
    EXPECT_THAT(read(1), ElementsAre(1, 2, 7, 4, 5));
}

TEST_F(TransientLogTest, AddsNothingWhileInactive)
{
    addDetectedPower(1);
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 0U);
    m_log.addSamples(3);
    m_log.setTransientLogActive(false);
    addDetectedPower(-77);
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 3U);
    EXPECT_EQ(detectedPower(3), 302);
}

TEST_F(TransientLogTest, AppendsToWhatItHoldsWhenStartedAgain)
{
    m_log.addSamples(2);
    m_log.setTransientLogActive(false);
    m_log.setTransientLogActive(true);
    addDetectedPower(-77);
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 3U);
    EXPECT_EQ(detectedPower(2), -77);
}

TEST_F(TransientLogTest, ResetKeepsFlagAndStorage)
{
    m_log.addSamples(200);
    const Sample* const pStorage = m_log.m_vTransientLog.data();
    const std::size_t nCapacity = m_log.m_vTransientLog.capacity();
    for (const bool bActive : {false, true}) {
        m_log.setTransientLogActive(bActive);
        m_log.resetTransientLog();
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
        EXPECT_EQ(m_log.m_vTransientLog.capacity(), nCapacity);
    }
    m_log.addSamples(200);
    EXPECT_EQ(m_log.m_vTransientLog.data(), pStorage);
    EXPECT_EQ(m_log.m_vTransientLog.capacity(), nCapacity);
}

TEST_F(TransientLogTest, DumpOfAnEmptyLogWritesNothing)
{
    m_log.setTransientLogActive(true);
    m_log.writeTransientLogToSyslog();
    EXPECT_THAT(takeTraces(), IsEmpty());
    EXPECT_TRUE(m_log.isTransientLogActive());
}

TEST_F(TransientLogTest, DumpsOneLinePerSample)
{
    m_log.setTransientLogActive(true);
    m_log.addSampleToTransientLog(300, 310, 0, -12, 40);
    m_log.addSampleToTransientLog(-2147483647 - 1, 2147483647, 295, 0, -1);
    for (const bool bActive : {true, false}) {
        m_log.setTransientLogActive(bActive);
        m_log.writeTransientLogToSyslog();
        EXPECT_THAT(takeTraces(), ElementsAre("RQX.OPCL 4: ****** START OF OPC TRANSIENT LOG ******",
                                              "RQX.OPCL 4: SampleNumber, TxRfPowerSet, TxRfPowerTarget, "
                                              "TxRfDetectedPower, TxIfPower, TxRfGain",
                                              "RQX.OPCL 4: 1, 300, 310, 295, -12, 40",
                                              "RQX.OPCL 4: 2, -2147483648, 2147483647, 295, 0, -1",
                                              "RQX.OPCL 4: ****** END OF OPC TRANSIENT LOG ******"));
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
        EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 2U);
    }
}

TEST_F(TransientLogTest, DumpsAFullLogInTwoHundredAndThreeLines)
{
    m_log.addSamples(250);
    m_log.writeTransientLogToSyslog();
    const Texts lines = takeTraces();
    ASSERT_EQ(lines.size(), 203U);
    EXPECT_EQ(lines[2], "RQX.OPCL 4: 1, 100, 101, 202, 103, 104");
    EXPECT_EQ(lines[200], "RQX.OPCL 4: 199, 19900, 19901, 19902, 19903, 19904");
    EXPECT_EQ(lines[201], "RQX.OPCL 4: 200, 20000, 20001, 20002, 20003, 20004");
}
} // namespace
