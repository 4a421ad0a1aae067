#include "tests/module/log/TransientLogCommandTest.h"

#include "tests/module/log/WatchedDump.h"

#include <array>

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
const std::string EMPTY_FAULT = faultText(4, "eTI_E_FAILED, TI.ManageOPCTransientLog can not read empty log");

std::string responseOfSamples(unsigned int nChannel, const std::vector<std::array<int, 5>>& samples)
{
    std::string sSamples;
    for (const std::array<int, 5>& s : samples) {
        sSamples += (sSamples.empty() ? "" : ", ") + ("{TxRfPowerSet: " + std::to_string(s[0])) +
                    ", TxRfPowerTarget: " + std::to_string(s[1]) + ", TxRfDetectedPower: " + std::to_string(s[2]) +
                    ", TxIfPower: " + std::to_string(s[3]) + ", TxRfGain: " + std::to_string(s[4]) + "}";
    }
    return "{RadioChannelID: " + std::to_string(nChannel) + ", OPCLog: [" + sSamples + "]}";
}

class TransientLogOperationTest : public TransientLogCommandTest
{
protected:
    std::string request(const std::string& sOption) { return send(requestFor(sOption)); }
};

TEST_F(TransientLogOperationTest, EnableEmptiesTheLogAndRecords)
{
    for (const bool bActive : {false, true}) {
        m_log.addSamples(3);
        m_log.setTransientLogActive(bActive);
        EXPECT_EQ(request("Enable"), STANDARD_RESPONSE);
        EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 0U);
        EXPECT_TRUE(m_log.isTransientLogActive());
    }
}

TEST_F(TransientLogOperationTest, DisableKeepsTheSamplesForALaterRead)
{
    m_log.addSamples(1);
    EXPECT_EQ(request("Disable"), STANDARD_RESPONSE);
    EXPECT_FALSE(m_log.isTransientLogActive());
    EXPECT_EQ(request("Read"), responseOfSamples(3, {{100, 101, 102, 103, 104}}));
    EXPECT_EQ(request("Disable"), STANDARD_RESPONSE);
    EXPECT_FALSE(m_log.isTransientLogActive());
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 1U);
}

TEST_F(TransientLogOperationTest, SaveToSysLogDumpsAndLeavesRecordingAsItWas)
{
    for (const bool bActive : {false, true}) {
        m_log.resetTransientLog();
        m_log.addSamples(1);
        m_log.setTransientLogActive(bActive);
        m_platform.clearRecords();
        EXPECT_EQ(request("SaveToSysLog"), STANDARD_RESPONSE);
        EXPECT_THAT(takeTraces(),
                    ElementsAre(calledTrace("SaveToSysLog"), "RQX.OPCL 4: ****** START OF OPC TRANSIENT LOG ******",
                                "RQX.OPCL 4: SampleNumber, TxRfPowerSet, TxRfPowerTarget, "
                                "TxRfDetectedPower, TxIfPower, TxRfGain",
                                "RQX.OPCL 4: 1, 100, 101, 102, 103, 104",
                                "RQX.OPCL 4: ****** END OF OPC TRANSIENT LOG ******"));
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
        EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 1U);
    }
}

TEST_F(TransientLogOperationTest, RecordingIsOffDuringTheDump)
{
    int nNumbers = 0;
    m_log.addSamples(2);
    watchTracedNumbers([&] {
        ++nNumbers;
        EXPECT_FALSE(m_log.isTransientLogActive());
        m_log.addSampleToTransientLog(0, 0, 0, 0, 0);
    });
    EXPECT_EQ(request("SaveToSysLog"), STANDARD_RESPONSE);
    EXPECT_EQ(nNumbers, 2 * 6);
    EXPECT_TRUE(m_log.isTransientLogActive());
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 2U);
}

TEST_F(TransientLogOperationTest, SaveToSysLogOfAnEmptyLogSucceeds)
{
    EXPECT_EQ(request("SaveToSysLog"), STANDARD_RESPONSE);
    EXPECT_THAT(takeTraces(), Contains(calledTrace("SaveToSysLog")));
}

TEST_F(TransientLogOperationTest, ReadGivesEverySampleAndLeavesRecordingAsItWas)
{
    m_log.addSamples(3);
    const std::string sResponse =
        responseOfSamples(3, {{100, 101, 202, 103, 104}, {200, 201, 302, 203, 204}, {300, 301, 302, 303, 304}});
    for (const bool bActive : {true, false}) {
        m_log.setTransientLogActive(bActive);
        EXPECT_EQ(request("Read"), sResponse);
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
        EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 3U);
    }
}

TEST_F(TransientLogOperationTest, ReadGivesSignedValues)
{
    m_log.setTransientLogActive(true);
    m_log.addSampleToTransientLog(-9900, -2147483647 - 1, 2147483647, 0, -1);
    EXPECT_EQ(request("Read"), responseOfSamples(3, {{-9900, -2147483647 - 1, 2147483647, 0, -1}}));
}

TEST_F(TransientLogOperationTest, ReadGivesAFullLogInOrder)
{
    std::vector<std::array<int, 5>> samples;
    for (int i = 1; i <= 200; ++i) {
        const int nNext = i < 199 ? i + 1 : i;
        samples.push_back({100 * i, 100 * i + 1, 100 * nNext + 2, 100 * i + 3, 100 * i + 4});
    }
    m_log.addSamples(250);
    EXPECT_EQ(request("Read"), responseOfSamples(3, samples));
}

TEST_F(TransientLogOperationTest, RecordingIsOffWhileTheSamplesAreWalked)
{
    std::vector<bool> recording;
    m_log.addSamples(2);
    m_prepare = [&](XmlRpcCalls& calls) {
        calls.beforeAddition([&](std::size_t) {
            recording.push_back(m_log.isTransientLogActive());
            m_log.addSampleToTransientLog(0, 0, 0, 0, 0);
        });
    };
    EXPECT_EQ(sendWatched("Read", [](const XmlRpcCalls&) {}),
              responseOfSamples(3, {{100, 101, 202, 103, 104}, {200, 201, 202, 203, 204}}));
    std::vector<bool> expected(12, false);
    expected.resize(14, true); // on again when the channel and the array are added
    EXPECT_EQ(recording, expected);
}

TEST_F(TransientLogOperationTest, ReadOfAnEmptyLogIsRefused)
{
    for (const bool bActive : {true, false}) {
        m_log.setTransientLogActive(bActive);
        m_platform.clearRecords();
        EXPECT_EQ(sendWatched("Read",
                              [](const XmlRpcCalls& calls) {
                                  EXPECT_THAT(calls.additions(), IsEmpty());
                                  EXPECT_THAT(calls.releaseTexts(), ElementsAre("{}"));
                              }),
                  EMPTY_FAULT);
        EXPECT_THAT(takeTraces(), ElementsAre(calledTrace("Read"), tiTrace("Cannot read empty log", "0x8000")));
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
    }
}

TEST_F(TransientLogOperationTest, OtherOptionsAreRefusedAndChangeNothing)
{
    for (const bool bActive : {true, false}) {
        m_log.resetTransientLog();
        m_log.addSamples(1);
        m_log.setTransientLogActive(bActive);
        for (const char* pOption : {"Start", "Stop", "ReadAndReset", "enable", "ENABLE", "Enable ", " Read", "Rea", "x",
                                    "Invalid", "100%s%n"})
        {
            m_platform.clearRecords();
            EXPECT_EQ(sendWatched(pOption,
                                  [](const XmlRpcCalls& calls) {
                                      EXPECT_THAT(calls.additions(), IsEmpty());
                                      EXPECT_THAT(calls.releaseTexts(), ElementsAre("{}"));
                                  }),
                      INVALID_FAULT);
            EXPECT_THAT(takeTraces(), ElementsAre(calledTrace(pOption)));
            EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 1U);
            EXPECT_EQ(m_log.isTransientLogActive(), bActive);
        }
    }
}

TEST_F(TransientLogOperationTest, SuccessReleasesNothing)
{
    m_log.addSamples(1);
    for (const char* pOption : {"Read", "SaveToSysLog", "Disable", "Enable"}) {
        sendWatched(pOption, [](const XmlRpcCalls& calls) { EXPECT_THAT(calls.releases(), IsEmpty()); });
    }
}

TEST_F(TransientLogOperationTest, TracesOnlyWhenTheTraceObjectsLevelAdmitsTheCode)
{
    m_platform.script().gtLevels = {{0x800, 7}, {0x8000, 8}, {0xA102, 8}};
    EXPECT_EQ(request("Read"), EMPTY_FAULT);
    send(requestOf({}));
    EXPECT_THAT(takeTraces(),
                ElementsAre("TI 7: COutputPowerControlLog_HandleTIManageOPCTransientLog called for sRequestOption "
                            "value:Read      code: 0x800\n"));
    TI_trace.nLevel = 0;
    EXPECT_EQ(request("Enable"), STANDARD_RESPONSE);
    EXPECT_THAT(takeTraces(), IsEmpty());
}

TEST_F(TransientLogOperationTest, TheRegisteredRecordServesItsOwnLog)
{
    ExposedLog other(12);
    other.initialize();
    other.addSamples(1);
    m_log.initialize();
    auto* pRecord = static_cast<TIMethodCStruct*>(m_platform.record("TIManageOPCTransientLogCh12"));
    ASSERT_NE(pRecord, nullptr);
    XMLRPC_REQUEST xRequest = requestFor("Read");
    EXPECT_EQ(takeText(pRecord->handle(pRecord->vpThis, nullptr, xRequest, nullptr)),
              responseOfSamples(12, {{100, 101, 102, 103, 104}}));
    XMLRPC_RequestFree(xRequest, 1);
    other.unInitialize();
    m_log.unInitialize();
}
} // namespace
