// The transient log's command when the library refuses additions or the log shrinks.
#include "tests/module/log/TransientLogCommandTest.h"

#include <array>

using ::testing::ElementsAre;

namespace
{
const std::string NOT_CREATED_FAULT =
    faultText(4, "eTI_E_FAILED, TI.ManageOPCTransientLog failed to create response vector");

constexpr std::array<const char*, 5> MEMBERS = {"TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower",
                                                "TxRfGain"};
constexpr int SAMPLES = 3;
constexpr int ADDITIONS_PER_SAMPLE = 6;

/** @return the text of a sample that ExposedLog::addSamples() recorded among three, less one member (from 0) */
std::string sampleText(int nSample, int nMissingMember = -1)
{
    std::string sMembers;
    for (int i = 0; i < 5; ++i) {
        // The detected power is the next sample's.
        const int nValue = 100 * (i == 2 && nSample < SAMPLES ? nSample + 1 : nSample) + i;
        if (i != nMissingMember) {
            sMembers += (sMembers.empty() ? "" : ", ") + std::string(MEMBERS[static_cast<std::size_t>(i)]) + ": " +
                        std::to_string(nValue);
        }
    }
    return inBraces(sMembers);
}

/** @return the text of the array with its first samples */
std::string arrayText(int nSamples, int nCutSample = 0, int nMissingMember = -1)
{
    std::string sSamples;
    for (int i = 1; i <= nSamples; ++i) {
        sSamples += (i == 1 ? "" : ", ") + sampleText(i, i == nCutSample ? nMissingMember : -1);
    }
    return "OPCLog: [" + sSamples + "]";
}

class TransientLogFailureTest : public TransientLogCommandTest
{
protected:
    void SetUp() override
    {
        m_log.addSamples(SAMPLES);
        m_platform.clearRecords();
    }

    void failAddition(int nAddition)
    {
        m_prepare = [nAddition](XmlRpcCalls& calls) { calls.failAddition(static_cast<std::size_t>(nAddition)); };
    }

    /** Each value that was not taken, and the fault's forerunners, must have been released once. */
    static void expectEachReleasedOnce(const XmlRpcCalls& calls)
    {
        for (const XmlRpcCalls::Value& released : calls.releases()) {
            EXPECT_EQ(calls.releasesOf(released.xValue), 1U) << released.sText;
        }
    }

    void expectFailureTrace(const std::string& sOption)
    {
        EXPECT_THAT(takeTraces(),
                    ElementsAre(calledTrace(sOption), tiTrace("Failed to create response vector", "0x8000")));
    }
};

TEST_F(TransientLogFailureTest, AddsAllInOrder)
{
    EXPECT_EQ(sendWatched("Read",
                          [](const XmlRpcCalls& calls) {
                              const Texts additions = calls.additionTexts();
                              ASSERT_EQ(additions.size(), 20U);
                              EXPECT_EQ(additions[0], "TxRfPowerSet: 100");
                              EXPECT_EQ(additions[4], "TxRfGain: 104");
                              EXPECT_EQ(additions[5], sampleText(1));
                              EXPECT_EQ(additions[17], sampleText(3));
                              EXPECT_EQ(additions[18], "RadioChannelID: 3");
                              EXPECT_EQ(additions[19], arrayText(3));
                          }),
              "{RadioChannelID: 3, " + arrayText(3) + "}");
}

TEST_F(TransientLogFailureTest, AMemberThatCannotBeAddedIsLeftOut)
{
    for (const bool bActive : {true, false}) {
        for (int nSample = 1; nSample <= SAMPLES; ++nSample) {
            for (int nMember = 0; nMember < 5; ++nMember) {
                m_log.setTransientLogActive(bActive);
                failAddition(ADDITIONS_PER_SAMPLE * (nSample - 1) + nMember + 1);
                EXPECT_EQ(sendWatched("Read",
                                      [](const XmlRpcCalls& calls) {
                                          EXPECT_EQ(calls.additions().size(), 20U);
                                          EXPECT_EQ(calls.releases().size(), 1U); // the member itself
                                      }),
                          "{RadioChannelID: 3, " + arrayText(3, nSample, nMember) + "}");
                EXPECT_THAT(takeTraces(), ElementsAre(calledTrace("Read")));
                EXPECT_EQ(m_log.isTransientLogActive(), bActive);
            }
        }
    }
}

TEST_F(TransientLogFailureTest, ASampleThatCannotBeAddedEndsTheReadAndRecording)
{
    for (const bool bActive : {true, false}) {
        for (int nSample = 1; nSample <= SAMPLES; ++nSample) {
            m_log.setTransientLogActive(bActive);
            failAddition(ADDITIONS_PER_SAMPLE * nSample);
            EXPECT_EQ(sendWatched("Read",
                                  [nSample](const XmlRpcCalls& calls) {
                                      EXPECT_THAT(calls.releaseTexts(),
                                                  ElementsAre(sampleText(nSample), arrayText(nSample - 1), "{}"));
                                      expectEachReleasedOnce(calls);
                                  }),
                      NOT_CREATED_FAULT);
            expectFailureTrace("Read");
            EXPECT_FALSE(m_log.isTransientLogActive());
            EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 3U);
        }
    }
}

TEST_F(TransientLogFailureTest, AChannelThatCannotBeAddedLeavesRecordingAsItWas)
{
    for (const bool bActive : {true, false}) {
        m_log.setTransientLogActive(bActive);
        failAddition(19);
        EXPECT_EQ(sendWatched("Read",
                              [](const XmlRpcCalls& calls) {
                                  EXPECT_THAT(calls.releaseTexts(),
                                              ElementsAre("RadioChannelID: 3", arrayText(3), "{}"));
                                  expectEachReleasedOnce(calls);
                              }),
                  NOT_CREATED_FAULT);
        expectFailureTrace("Read");
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
    }
}

TEST_F(TransientLogFailureTest, AnArrayThatCannotBeAddedLeavesRecordingAsItWas)
{
    for (const bool bActive : {true, false}) {
        m_log.setTransientLogActive(bActive);
        failAddition(20);
        EXPECT_EQ(sendWatched("Read",
                              [](const XmlRpcCalls& calls) {
                                  EXPECT_THAT(calls.releaseTexts(), ElementsAre(arrayText(3), "{RadioChannelID: 3}"));
                                  expectEachReleasedOnce(calls);
                              }),
                  NOT_CREATED_FAULT);
        expectFailureTrace("Read");
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
    }
}

TEST_F(TransientLogFailureTest, AShrunkLogEndsTheReadAtTheFirstSampleMissing)
{
    for (int nRead = 1; nRead < SAMPLES; ++nRead) {
        const auto nAdditions = static_cast<std::size_t>(nRead) * ADDITIONS_PER_SAMPLE;
        m_log.resetTransientLog();
        m_log.addSamples(SAMPLES);
        m_platform.clearRecords();
        m_prepare = [this, nAdditions](XmlRpcCalls& calls) {
            calls.beforeAddition([this, nAdditions](std::size_t nAddition) {
                if (nAddition == nAdditions) {
                    m_log.resetTransientLog();
                }
            });
        };
        EXPECT_EQ(sendWatched("Read",
                              [nRead, nAdditions](const XmlRpcCalls& calls) {
                                  // The struct of the missing sample holds what the last one left.
                                  EXPECT_EQ(calls.additions().size(), nAdditions + 5);
                                  EXPECT_THAT(calls.releaseTexts(),
                                              ElementsAre(sampleText(nRead), arrayText(nRead), "{}"));
                                  expectEachReleasedOnce(calls);
                              }),
                  NOT_CREATED_FAULT);
        EXPECT_THAT(takeTraces(),
                    ElementsAre(calledTrace("Read"), "RQX.OPCL 1: getSampleFromTransientLog() No sample entries in log",
                                tiTrace("Failed to create response vector", "0x8000")));
        EXPECT_FALSE(m_log.isTransientLogActive());
    }
}

TEST_F(TransientLogFailureTest, ALogRestartedMeanwhileStaysStopped)
{
    // A restart finds the log stopped and leaves it alone; a reset and a few samples make it shorter.
    m_prepare = [this](XmlRpcCalls& calls) {
        calls.beforeAddition([this](std::size_t nAddition) {
            if (nAddition == 1) {
                m_log.logsRestart();
                m_log.m_vTransientLog.resize(1);
            }
        });
    };
    EXPECT_EQ(sendWatched("Read", [](const XmlRpcCalls&) {}), NOT_CREATED_FAULT);
    EXPECT_THAT(takeTraces(),
                ElementsAre(calledTrace("Read"),
                            "RQX.OPCL 1: getSampleFromTransientLog() Requested sample number does not exist",
                            tiTrace("Failed to create response vector", "0x8000")));
    EXPECT_FALSE(m_log.isTransientLogActive());
}

TEST_F(TransientLogFailureTest, AnActionStaysDoneWhenItsResponseFails)
{
    failAddition(1);
    const auto watch = [](const XmlRpcCalls& calls) {
        EXPECT_THAT(calls.releaseTexts(), ElementsAre("StandardResponse: \"OK\"", "{}"));
        expectEachReleasedOnce(calls);
    };
    EXPECT_EQ(sendWatched("Disable", watch), NOT_CREATED_FAULT);
    expectFailureTrace("Disable");
    EXPECT_FALSE(m_log.isTransientLogActive());
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 3U);

    EXPECT_EQ(sendWatched("Enable", watch), NOT_CREATED_FAULT);
    expectFailureTrace("Enable");
    EXPECT_TRUE(m_log.isTransientLogActive());
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 0U);

    m_log.addSamples(1);
    for (const bool bActive : {true, false}) {
        m_log.setTransientLogActive(bActive);
        EXPECT_EQ(sendWatched("SaveToSysLog", watch), NOT_CREATED_FAULT);
        const Texts traces = takeTraces();
        ASSERT_EQ(traces.size(), 6U);
        EXPECT_EQ(traces[3], "RQX.OPCL 4: 1, 100, 101, 102, 103, 104");
        EXPECT_EQ(traces[5], tiTrace("Failed to create response vector", "0x8000"));
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
    }
}
} // namespace
