#include "tests/module/log/OpcLogCommandTest.h"

#include "tests/module/log/WatchedDump.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
const std::string INVALID_OPTION_FAULT = faultText(4, "eTI_E_FAILED, TI.ManageLogs OpcLog invalid request option");

TEST_F(OpcLogCommandTest, NullObjectIsRefusedWithoutATrace)
{
    char sOption[] = "Read";
    EXPECT_EQ(takeText(OutputPowerControlLog::staticManageOpcLog(nullptr, sOption)),
              faultText(2, "eTI_E_REQUIRED_INPUT_MISSING, TI.ManageLogs for OPCLog failed due to vpThis NULL pointer"));
    EXPECT_EQ(takeText(OutputPowerControlLog::staticManageOpcLog(nullptr, nullptr)),
              faultText(2, "eTI_E_REQUIRED_INPUT_MISSING, TI.ManageLogs for OPCLog failed due to vpThis NULL pointer"));
    EXPECT_THAT(takeTraces(), IsEmpty());
}

TEST_F(OpcLogCommandTest, StartResetsAndRecords)
{
    for (const bool bActive : {true, false}) {
        fill();
        m_log.setOpcLogActive(bActive);
        EXPECT_EQ(manage("Start"), OPC_STANDARD_RESPONSE);
        EXPECT_TRUE(isZero());
        EXPECT_TRUE(m_log.isOpcLogActive());
        EXPECT_TRUE(m_log.m_bOpcLogFirstSample);
    }
}

TEST_F(OpcLogCommandTest, StopKeepsTheStatistics)
{
    fill();
    EXPECT_EQ(manage("Stop"), OPC_STANDARD_RESPONSE);
    EXPECT_FALSE(m_log.isOpcLogActive());
    EXPECT_EQ(manage("Read"), inBraces(arrayText(ARRAY_OF_CHANNEL_3, 12)));
    EXPECT_EQ(manage("Stop"), OPC_STANDARD_RESPONSE);
    EXPECT_FALSE(m_log.isOpcLogActive());
}

TEST_F(OpcLogCommandTest, SaveToSysLogDumpsAndKeepsRecording)
{
    for (const bool bActive : {true, false}) {
        fill();
        m_log.setOpcLogActive(bActive);
        m_platform.clearRecords();
        EXPECT_EQ(manage("SaveToSysLog"), OPC_STANDARD_RESPONSE);
        EXPECT_EQ(m_log.isOpcLogActive(), bActive);
        EXPECT_FALSE(isZero());
        const Texts lines = takeTraces();
        ASSERT_EQ(lines.size(), 14U);
        EXPECT_EQ(lines[1], "RQX.OPCL 4: TxRfPowerSetActual = 1, TxRfPowerSetMin = -11, TxRfPowerSetMax = 11");
    }
}

TEST_F(OpcLogCommandTest, RecordsDuringTheDump)
{
    int nNumbers = 0;
    m_log.setOpcLogActive(true);
    watchTracedNumbers([&] {
        EXPECT_TRUE(m_log.isOpcLogActive());
        m_log.write(++nNumbers);
    });
    EXPECT_EQ(manage("SaveToSysLog"), OPC_STANDARD_RESPONSE);
    EXPECT_EQ(nNumbers, 12 * 3);
    EXPECT_EQ(m_log.m_opcLog.txRfGainMin, 1);
    EXPECT_EQ(m_log.m_opcLog.txRfGainMax, 36);
}

TEST_F(OpcLogCommandTest, ReadGivesTwelveObjectsAndChangesNothing)
{
    for (const bool bActive : {true, false}) {
        fill();
        m_log.setOpcLogActive(bActive);
        m_platform.clearRecords();
        EXPECT_EQ(manage("Read"), inBraces(arrayText(ARRAY_OF_CHANNEL_3, 12)));
        EXPECT_FALSE(isZero());
        EXPECT_FALSE(m_log.m_bOpcLogFirstSample);
        EXPECT_EQ(m_log.isOpcLogActive(), bActive);
        EXPECT_THAT(takeTraces(), IsEmpty());
    }
}

TEST_F(OpcLogCommandTest, ReadAndResetGivesWhatReadGivesAndZeroes)
{
    for (const bool bActive : {true, false}) {
        fill();
        m_log.setOpcLogActive(bActive);
        m_platform.clearRecords();
        EXPECT_EQ(manage("ReadAndReset"), inBraces(arrayText(ARRAY_OF_CHANNEL_3, 12)));
        EXPECT_TRUE(isZero());
        EXPECT_TRUE(m_log.m_bOpcLogFirstSample);
        EXPECT_EQ(m_log.isOpcLogActive(), bActive);
        EXPECT_THAT(takeTraces(), IsEmpty());
    }
}

TEST_F(OpcLogCommandTest, ReadRightAfterConstructionGivesZeros)
{
    std::string sObjects;
    for (const ObjectText& object : filledObjects()) {
        sObjects += (sObjects.empty() ? "" : ", ") + ObjectText{object.sName, 0, 0, 0}.text();
    }
    EXPECT_EQ(manage("Read"), "{Channel.3.TxOutputPowerControlLog: [" + sObjects + "]}");
}

TEST_F(OpcLogCommandTest, ReadGivesOneCopyOfTheRecord)
{
    fill();
    m_prepare = [this](XmlRpcCalls& calls) {
        calls.beforeAddition(
            [this](std::size_t) { m_log.write(static_cast<int>(m_log.m_opcLog.txIfPowerMax) + 1000); });
    };
    EXPECT_EQ(manage("Read"), inBraces(arrayText(ARRAY_OF_CHANNEL_3, 12)));
    EXPECT_GT(m_log.m_opcLog.txIfPowerMax, 1000);
}

TEST_F(OpcLogCommandTest, TheArraysNameIsCutAfterThirtyThreeBytes)
{
    struct Channel
    {
        unsigned int nChannel;
        const char* pName;
    };
    for (const Channel& channel :
         {Channel{0, "Channel.0.TxOutputPowerControlLog"}, Channel{9, "Channel.9.TxOutputPowerControlLog"},
          Channel{10, "Channel.10.TxOutputPowerControlLo"}, Channel{12, "Channel.12.TxOutputPowerControlLo"},
          Channel{123, "Channel.123.TxOutputPowerControlL"}, Channel{4294967295U, "Channel.4294967295.TxOutputPowerC"}})
    {
        ExposedLog log(channel.nChannel);
        char sOption[] = "Read";
        XMLRPC_VALUE xAnswer = log.manageOpcLog(sOption);
        EXPECT_STREQ(XMLRPC_GetValueID(XMLRPC_VectorRewind(xAnswer)), channel.pName);
        EXPECT_EQ(XMLRPC_VectorSize(xAnswer), 1);
        XMLRPC_CleanupValue(xAnswer);
    }
}

TEST_F(OpcLogCommandTest, OtherOptionsAreRefusedAndChangeNothing)
{
    for (const bool bActive : {true, false}) {
        for (const char* pOption : {"Enable", "Disable", "", "read", "READ", "Read ", " Read", "ReadAndRese", "start",
                                    "Starts", "SaveToSyslog", "%s%n"})
        {
            fill();
            m_log.setOpcLogActive(bActive);
            m_platform.clearRecords();
            EXPECT_EQ(manageWatched(pOption,
                                    [](const XmlRpcCalls& calls) {
                                        EXPECT_THAT(calls.additions(), IsEmpty());
                                        EXPECT_THAT(calls.releaseTexts(), ElementsAre("{}"));
                                    }),
                      INVALID_OPTION_FAULT)
                << pOption;
            EXPECT_FALSE(isZero());
            EXPECT_EQ(m_log.isOpcLogActive(), bActive);
            EXPECT_THAT(takeTraces(), IsEmpty());
        }
    }
}

TEST_F(OpcLogCommandTest, SuccessReleasesAndTracesNothing)
{
    for (const char* pOption : {"Start", "Read", "ReadAndReset", "Stop"}) {
        manageWatched(pOption, [](const XmlRpcCalls& calls) { EXPECT_THAT(calls.releases(), IsEmpty()); });
    }
    EXPECT_THAT(m_platform.traces(), IsEmpty());
}

TEST_F(OpcLogCommandTest, TheRegisteredRecordServesItsOwnLog)
{
    ExposedLog other(5);
    other.initialize();
    m_log.initialize();
    auto* pRecord = static_cast<ManageLogsCStruct*>(m_platform.record("Channel.5.TxOutputPowerControlLog"));
    ASSERT_NE(pRecord, nullptr);
    char sOption[] = "Start";
    EXPECT_EQ(takeText(pRecord->manageLogs(pRecord->vpThis, sOption)), OPC_STANDARD_RESPONSE);
    EXPECT_TRUE(other.isOpcLogActive());
    EXPECT_FALSE(m_log.isOpcLogActive());
    other.unInitialize();
    m_log.unInitialize();
}
} // namespace
