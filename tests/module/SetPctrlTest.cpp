// Sending the control power and feeding the logs.
#include "Control/OutputPowerController/private/OutputPowerControlLog.h"
#include "tests/support/ControllerTest.h"

#include <array>

namespace
{
class SetPctrlTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        controller().m_nPtarget = 300;
        controller().m_nPctrl = 200;
        controller().m_nPmeasured = 100;
        m_handler.m_anReducedGain = {61, 62, 63, 64, 65, 66};
    }

    void activate(bool bTransientLog, bool bOpcLog)
    {
        controller().m_pLog->setTransientLogActive(bTransientLog);
        controller().m_pLog->setOpcLogActive(bOpcLog);
    }

    OutputPowerControlLog::OpcLog opcLog()
    {
        OutputPowerControlLog::OpcLog log{};
        controller().m_pLog->readFromOpcLog(&log);
        return log;
    }

    /** @return the latest value of the five quantities and the six reduced gains */
    std::array<int, 11> actualValues()
    {
        const OutputPowerControlLog::OpcLog log = opcLog();
        const auto& gains = log.gainReductionAmplifierActual;
        return {log.txRfPowerSetActual,
                log.txRfPowerTargetActual,
                log.txRfDetectedPowerActual,
                log.txIfPowerActual,
                log.txRfGainActual,
                gains[0],
                gains[1],
                gains[2],
                gains[3],
                gains[4],
                gains[5]};
    }

    std::array<int, 5> transientSample(unsigned short nSample)
    {
        std::array<int, 5> sample{};
        EXPECT_EQ(controller().m_pLog->getSampleFromTransientLog(nSample, &sample[0], &sample[1], &sample[2],
                                                                 &sample[3], &sample[4]),
                  EAF_OK);
        return sample;
    }
};

Texts withGainReads(int nCount)
{
    Texts calls{"setOutputPower(200, 300)", "getTxPowerReadings"};
    for (int i = 1; i <= nCount; ++i) {
        calls.push_back("getReducedGainFromAmplifier(" + std::to_string(i) + ")");
    }
    return calls;
}
} // namespace

TEST_F(SetPctrlTest, SendsControlPowerAndTarget)
{
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), Texts{"setOutputPower(200, 300)"});
    EXPECT_TRUE(m_platform.traces().empty());
    EXPECT_EQ(controller().m_pLog->getNumberOfSamplesInTransientLog(), 0U);
}

TEST_F(SetPctrlTest, AFailureIsTracedWithItsResultAndWritesNoLog)
{
    activate(true, true);
    const std::pair<EOPHResult, const char*> cases[] = {
        {EAF_FAILED, "8000"}, {0xABCDE, "abcde"}, {INT32_MAX, "7fffffff"}};
    for (const auto& [nResult, pHex] : cases) {
        m_platform.clearRecords();
        m_handler.setResult(EHandlerCall::SetOutputPower, nResult);
        EXPECT_EQ(controller().setPctrl(), EAF_FAILED);
        EXPECT_EQ(m_platform.traceTexts(1),
                  Texts{std::string("setPctrl(): Failed to set output power in OPH (eOPHResult = ") + pHex});
        EXPECT_EQ(m_platform.traces().back().sSourcePath, CONTROLLER_SOURCE_PATH);
        EXPECT_EQ(m_platform.calls(), Texts{"setOutputPower(200, 300)"});
    }
    EXPECT_EQ(controller().m_pLog->getNumberOfSamplesInTransientLog(), 0U);
    EXPECT_EQ(actualValues(), (std::array<int, 11>{}));
    controller().notifyTemperature(31);
    EXPECT_EQ(m_platform.traceTexts(5), Texts{"notifyTemperature(): New temperature = 31 for channel 0"})
        << "decimal after the hexadecimal result";
}

TEST_F(SetPctrlTest, AFailureIsTheSameBelowTheTraceLevel)
{
    activate(true, true);
    m_handler.setResult(EHandlerCall::SetOutputPower, EAF_FAILED);
    m_platform.setQuiet(true);
    EXPECT_EQ(controller().setPctrl(), EAF_FAILED);
    m_platform.setQuiet(false);
    EXPECT_TRUE(m_platform.traces().empty());
    EXPECT_EQ(controller().m_pLog->getNumberOfSamplesInTransientLog(), 0U);
}

TEST_F(SetPctrlTest, TheTransientLogAloneReadsThePowersOnly)
{
    activate(true, false);
    controller().m_nNumberOfGainBlocks = 3;
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), withGainReads(0));
    ASSERT_EQ(controller().m_pLog->getNumberOfSamplesInTransientLog(), 1U);
    EXPECT_EQ(transientSample(1), (std::array<int, 5>{300, 200, 100, 22, 33}));
    EXPECT_EQ(actualValues(), (std::array<int, 11>{}));
}

TEST_F(SetPctrlTest, TheOpcLogAloneReadsPowersAndGains)
{
    activate(false, true);
    controller().m_nNumberOfGainBlocks = 3;
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), withGainReads(3));
    EXPECT_EQ(actualValues(), (std::array<int, 11>{300, 200, 100, 22, 33, 61, 62, 63, 0, 0, 0}));
    EXPECT_EQ(controller().m_pLog->getNumberOfSamplesInTransientLog(), 0U);
}

TEST_F(SetPctrlTest, BothLogsShareOneReading)
{
    activate(true, true);
    controller().m_nNumberOfGainBlocks = 6;
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), withGainReads(6));
    EXPECT_EQ(transientSample(1), (std::array<int, 5>{300, 200, 100, 22, 33}));
    EXPECT_EQ(actualValues(), (std::array<int, 11>{300, 200, 100, 22, 33, 61, 62, 63, 64, 65, 66}));
}

TEST_F(SetPctrlTest, ReadsAsManyAmplifiersAsThereAreGainBlocks)
{
    activate(false, true);
    for (int nBlocks = 0; nBlocks <= 6; ++nBlocks) {
        m_platform.clearRecords();
        controller().m_nNumberOfGainBlocks = nBlocks;
        EXPECT_EQ(controller().setPctrl(), EAF_OK);
        EXPECT_EQ(m_platform.calls(), withGainReads(nBlocks));
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(actualValues().at(static_cast<std::size_t>(5 + i)), i < nBlocks ? 61 + i : 0);
        }
    }
}

TEST_F(SetPctrlTest, ANegativeNumberOfGainBlocksReadsNoAmplifierAndLogsZeros)
{
    activate(false, true);
    for (const int nBlocks : {-1, INT32_MIN}) {
        m_platform.clearRecords();
        controller().m_nNumberOfGainBlocks = nBlocks;
        EXPECT_EQ(controller().setPctrl(), EAF_OK);
        EXPECT_EQ(m_platform.calls(), withGainReads(0));
        EXPECT_EQ(actualValues(), (std::array<int, 11>{300, 200, 100, 22, 33, 0, 0, 0, 0, 0, 0}));
    }
}

TEST_F(SetPctrlTest, TheResultOfTheReadingsIsNotLookedAt)
{
    activate(true, true);
    m_handler.setResult(EHandlerCall::GetTxPowerReadings, EAF_FAILED);
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    EXPECT_EQ(transientSample(1), (std::array<int, 5>{300, 200, 100, 22, 33}));
    m_handler.setWritesOutputs(EHandlerCall::GetTxPowerReadings, false);
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    EXPECT_EQ(transientSample(2), (std::array<int, 5>{300, 200, 100, 0, 0}));
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_F(SetPctrlTest, AFailingAmplifierIsTracedAndTheOthersAreRead)
{
    build(4);
    controller().m_nPtarget = 300;
    controller().m_nPctrl = 200;
    activate(false, true);
    controller().m_nNumberOfGainBlocks = 4;
    m_handler.setResultOfCall(EHandlerCall::GetReducedGainFromAmplifier, 2, 0x8ABC);
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    EXPECT_EQ(m_platform.calls(), withGainReads(4));
    EXPECT_EQ(m_platform.traceTexts(1), Texts{"setPctrl(): failed to get Reduced Gain From Amplifier 2for channel 4 "
                                              "(eOPHResult = 8abc"});
    EXPECT_EQ(m_platform.traces().back().sSourcePath, CONTROLLER_SOURCE_PATH);
    EXPECT_EQ(actualValues().at(6), 62) << "the handler's output is kept";
    EXPECT_EQ(actualValues().at(7), 63);
}

TEST_F(SetPctrlTest, AFailingAmplifierThatWritesNothingIsLoggedAsZero)
{
    build(12);
    activate(false, true);
    controller().m_nNumberOfGainBlocks = 2;
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    m_handler.setResult(EHandlerCall::GetReducedGainFromAmplifier, EAF_FAILED);
    m_handler.setWritesOutputs(EHandlerCall::GetReducedGainFromAmplifier, false);
    EXPECT_EQ(controller().setPctrl(), EAF_OK);
    EXPECT_EQ(m_platform.traceTexts(1),
              (Texts{"setPctrl(): failed to get Reduced Gain From Amplifier 1for channel 12 (eOPHResult = 8000",
                     "setPctrl(): failed to get Reduced Gain From Amplifier 2for channel 12 (eOPHResult = 8000"}))
        << "the second amplifier's number and channel are decimal";
    EXPECT_EQ(actualValues().at(5), 0);
    EXPECT_EQ(actualValues().at(6), 0);
}

TEST_F(SetPctrlTest, ARampStepAndAClosedLoopStepFeedTheLogsOnceEach)
{
    activate(true, false);
    controller().m_nPctrlMax = 1000;
    controller().m_nRampingCount = 5;
    enter(eOPC_TX_ON_RAMPING);
    EXPECT_EQ(controller().regulate(400), EAF_OK);
    EXPECT_EQ(controller().m_pLog->getNumberOfSamplesInTransientLog(), 1U);
    EXPECT_EQ(transientSample(1), (std::array<int, 5>{400, 240, 200, 22, 33}));
    closeLoop(240, -1000, 1000);
    EXPECT_EQ(controller().regulate(400), EAF_OK);
    EXPECT_EQ(controller().m_pLog->getNumberOfSamplesInTransientLog(), 2U);
}
