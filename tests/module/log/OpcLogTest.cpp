#include "tests/module/log/LogTest.h"

#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <type_traits>

using ::testing::Each;
using ::testing::ElementsAre;

namespace
{
using OpcLog = OutputPowerControlLog::OpcLog;

constexpr std::array<std::size_t, 19> FIELD_OFFSETS = {offsetof(OpcLog, txRfPowerSetMin),
                                                       offsetof(OpcLog, txRfPowerSetActual),
                                                       offsetof(OpcLog, txRfPowerSetMax),
                                                       offsetof(OpcLog, txRfPowerTargetMin),
                                                       offsetof(OpcLog, txRfPowerTargetActual),
                                                       offsetof(OpcLog, txRfPowerTargetMax),
                                                       offsetof(OpcLog, txRfDetectedPowerMin),
                                                       offsetof(OpcLog, txRfDetectedPowerActual),
                                                       offsetof(OpcLog, txRfDetectedPowerMax),
                                                       offsetof(OpcLog, txIfPowerMin),
                                                       offsetof(OpcLog, txIfPowerActual),
                                                       offsetof(OpcLog, txIfPowerMax),
                                                       offsetof(OpcLog, txRfGainMin),
                                                       offsetof(OpcLog, txRfGainActual),
                                                       offsetof(OpcLog, txRfGainMax),
                                                       offsetof(OpcLog, txRfGainInitial),
                                                       offsetof(OpcLog, gainReductionAmplifierMin),
                                                       offsetof(OpcLog, gainReductionAmplifierActual),
                                                       offsetof(OpcLog, gainReductionAmplifierMax)};

constexpr bool areFieldsInOrder()
{
    for (std::size_t i = 0; i < FIELD_OFFSETS.size(); ++i) {
        // Sixteen single values, then three arrays of six.
        if (FIELD_OFFSETS[i] != 4 * (i < 16 ? i : 16 + 6 * (i - 16))) {
            return false;
        }
    }
    return true;
}

static_assert(areFieldsInOrder());
static_assert(sizeof(OpcLog) == 34 * sizeof(std::int32_t));
static_assert(std::is_trivially_copyable_v<OpcLog> && std::is_standard_layout_v<OpcLog>);
static_assert(std::is_same_v<decltype(OpcLog::txRfGainInitial), std::int32_t>);
static_assert(std::is_same_v<decltype(OpcLog::gainReductionAmplifierMax), std::int32_t[6]>);

class OpcLogTest : public LogTest
{
protected:
    std::array<std::int32_t, 34> read()
    {
        OpcLog log;
        m_log.readFromOpcLog(&log);
        std::array<std::int32_t, 34> anField{};
        std::memcpy(anField.data(), &log, sizeof log);
        return anField;
    }

    /** @return minimum, actual value and maximum of the first quantity */
    std::array<std::int32_t, 3> readPowerSet()
    {
        const std::array<std::int32_t, 34> anField = read();
        return {anField[0], anField[1], anField[2]};
    }
};

TEST_F(OpcLogTest, HoldsZerosAfterConstruction)
{
    EXPECT_THAT(read(), Each(0));
    EXPECT_FALSE(m_log.isOpcLogActive());
    EXPECT_TRUE(m_log.m_bOpcLogFirstSample);
}

TEST_F(OpcLogTest, ResetZeroesEveryFieldAndKeepsTheActiveFlag)
{
    for (const bool bActive : {false, true}) {
        m_log.setOpcLogActive(bActive);
        m_log.write(9);
        m_log.write(-9);
        m_log.writeInitialTxRfGainToOpcLog(42);
        m_log.resetOpcLog();
        EXPECT_THAT(read(), Each(0));
        EXPECT_TRUE(m_log.m_bOpcLogFirstSample);
        EXPECT_EQ(m_log.isOpcLogActive(), bActive);
    }
}

TEST_F(OpcLogTest, PutsEachArgumentIntoItsFields)
{
    m_log.setOpcLogActive(true);
    m_log.writeToOpcLog(10, 20, 30, 40, 50, 61, 62, 63, 64, 65, 66);
    m_log.writeToOpcLog(9, 22, 29, 42, 49, 71, 52, 73, 54, 75, 56);
    EXPECT_THAT(read(), ElementsAre(9, 9, 10, 20, 22, 22, 29, 29, 30, 40, 42, 42, 49, 49, 50, 0, //
                                    61, 52, 63, 54, 65, 56, 71, 52, 73, 54, 75, 56, 71, 62, 73, 64, 75, 66));
}

TEST_F(OpcLogTest, ZerosOfAResetAreNoMaxima)
{
    m_log.setOpcLogActive(true);
    m_log.resetOpcLog();
    m_log.write(-5);
    EXPECT_THAT(readPowerSet(), ElementsAre(-5, -5, -5));
}

TEST_F(OpcLogTest, KeepsMinimumAndMaximumWhileActive)
{
    m_log.setOpcLogActive(true);
    m_log.write(10);
    m_log.write(7);
    m_log.write(12);
    EXPECT_THAT(readPowerSet(), ElementsAre(7, 12, 12));
}

TEST_F(OpcLogTest, ComparesSigned)
{
    m_log.setOpcLogActive(true);
    m_log.write(0);
    m_log.write(INT_MIN);
    m_log.write(INT_MAX);
    m_log.write(-1);
    EXPECT_THAT(readPowerSet(), ElementsAre(INT_MIN, -1, INT_MAX));
}

TEST_F(OpcLogTest, SeedsAtEachWriteWhileInactiveWithTheFirstSamplePending)
{
    m_log.write(5);
    m_log.write(3);
    EXPECT_THAT(readPowerSet(), ElementsAre(3, 3, 3));
    EXPECT_TRUE(m_log.m_bOpcLogFirstSample);

    m_log.setOpcLogActive(true);
    m_log.write(8);
    EXPECT_THAT(readPowerSet(), ElementsAre(8, 8, 8));
    EXPECT_FALSE(m_log.m_bOpcLogFirstSample);
}

TEST_F(OpcLogTest, WriteWhileInactiveOverwritesWhatWasAccumulated)
{
    m_log.setOpcLogActive(true);
    m_log.write(10);
    m_log.write(20);
    m_log.setOpcLogActive(false);
    EXPECT_THAT(readPowerSet(), ElementsAre(10, 20, 20));
    m_log.write(15);
    EXPECT_THAT(readPowerSet(), ElementsAre(15, 15, 15));
}

TEST_F(OpcLogTest, GoesOnFromWhatItHoldsWhenActivatedWithoutAReset)
{
    m_log.setOpcLogActive(true);
    m_log.write(10);
    m_log.write(20);
    m_log.setOpcLogActive(false);
    m_log.setOpcLogActive(true);
    m_log.write(15);
    EXPECT_THAT(readPowerSet(), ElementsAre(10, 15, 20));
}

TEST_F(OpcLogTest, ResetWhileActiveSeedsAtTheNextWrite)
{
    m_log.setOpcLogActive(true);
    m_log.write(10);
    m_log.resetOpcLog();
    m_log.write(50);
    m_log.write(40);
    EXPECT_THAT(readPowerSet(), ElementsAre(40, 40, 50));
}

TEST_F(OpcLogTest, InitialGainStandsApart)
{
    m_log.writeInitialTxRfGainToOpcLog(42);
    EXPECT_EQ(read()[15], 42);
    EXPECT_TRUE(m_log.m_bOpcLogFirstSample);
    m_log.write(7);
    m_log.setOpcLogActive(true);
    m_log.write(8);
    m_log.write(9);
    EXPECT_EQ(read()[15], 42);
    m_log.resetOpcLog();
    EXPECT_EQ(read()[15], 0);
}

TEST_F(OpcLogTest, DumpsFourteenLinesToTheSystemLog)
{
    std::array<std::int32_t, 34> anField{};
    for (std::size_t i = 0; i < anField.size(); ++i) {
        anField[i] = static_cast<std::int32_t>(i % 2 == 0 ? 1000 + i : i) * (i % 3 == 0 ? -1 : 1);
    }
    std::memcpy(&m_log.m_opcLog, anField.data(), sizeof m_log.m_opcLog);
    m_log.writeOpcLogToSyslog();
    EXPECT_THAT(
        takeTraces(),
        ElementsAre(
            "RQX.OPCL 4: ****** START OF OPC LOG ******",
            "RQX.OPCL 4: TxRfPowerSetActual = 1, TxRfPowerSetMin = -1000, TxRfPowerSetMax = 1002",
            "RQX.OPCL 4: TxRfPowerTargetActual = 1004, TxRfPowerTargetMin = -3, TxRfPowerTargetMax = 5",
            "RQX.OPCL 4: TxRfDetectedPowerActual = 7, TxRfDetectedPowerMin = -1006, TxRfDetectedPowerMax = 1008",
            "RQX.OPCL 4: TxIfPowerActual = 1010, TxIfPowerMin = -9, TxIfPowerMax = 11",
            "RQX.OPCL 4: TxRfGainActual = 13, TxRfGainMin = -1012, TxRfGainMax = 1014",
            "RQX.OPCL 4: TxRfGainInitial = -15, TxRfGainInitialMin = -15, TxRfGainInitialMax = -15",
            "RQX.OPCL 4: GainReductionAmplifier1Actual = 1022, GainReductionAmplifier1Min = 1016, "
            "GainReductionAmplifier1Max = 1028",
            "RQX.OPCL 4: GainReductionAmplifier2Actual = 23, GainReductionAmplifier2Min = 17, "
            "GainReductionAmplifier2Max = 29",
            "RQX.OPCL 4: GainReductionAmplifier3Actual = -1024, GainReductionAmplifier3Min = -1018, "
            "GainReductionAmplifier3Max = -1030",
            "RQX.OPCL 4: GainReductionAmplifier4Actual = 25, GainReductionAmplifier4Min = 19, "
            "GainReductionAmplifier4Max = 31",
            "RQX.OPCL 4: GainReductionAmplifier5Actual = 1026, GainReductionAmplifier5Min = 1020, "
            "GainReductionAmplifier5Max = 1032",
            "RQX.OPCL 4: GainReductionAmplifier6Actual = -27, GainReductionAmplifier6Min = -21, "
            "GainReductionAmplifier6Max = -33",
            "RQX.OPCL 4: ****** END OF OPC LOG ******"));
}

TEST_F(OpcLogTest, DumpsZerosWhenNeverWritten)
{
    m_log.writeOpcLogToSyslog();
    const Texts lines = takeTraces();
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[6], "RQX.OPCL 4: TxRfGainInitial = 0, TxRfGainInitialMin = 0, TxRfGainInitialMax = 0");
    EXPECT_EQ(lines[9], "RQX.OPCL 4: GainReductionAmplifier3Actual = 0, GainReductionAmplifier3Min = 0, "
                        "GainReductionAmplifier3Max = 0");
}
} // namespace
