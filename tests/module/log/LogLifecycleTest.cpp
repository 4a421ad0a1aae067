#include "tests/module/log/LogTest.h"

#include <memory>

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
struct ChannelNames
{
    unsigned int nChannel;
    std::string sInterface;
    std::string sManageLogs;
    std::string sTiMethod;
};

class LogNamesTest : public LogTest, public ::testing::WithParamInterface<ChannelNames>
{
protected:
    std::unique_ptr<ExposedLog> m_pLog = std::make_unique<ExposedLog>(GetParam().nChannel);
};

INSTANTIATE_TEST_SUITE_P(
    Channels, LogNamesTest,
    ::testing::Values(
        ChannelNames{0, "IOutputPowerControlLog", "Channel.0.TxOutputPowerControlLog", "TIManageOPCTransientLogCh0"},
        ChannelNames{3, "IOutputPowerControlLog_3", "Channel.3.TxOutputPowerControlLog", "TIManageOPCTransientLogCh3"},
        ChannelNames{12, "IOutputPowerControlLog_12", "Channel.12.TxOutputPowerControlLog",
                     "TIManageOPCTransientLogCh12"},
        ChannelNames{4294967295U, "IOutputPowerControlLog_4294967295", "Channel.4294967295.TxOutputPowerControlLog",
                     "TIManageOPCTransientLogCh4294967295"}),
    [](const auto& names) { return "Channel" + std::to_string(names.param.nChannel); });

TEST_P(LogNamesTest, InitializePublishesThreeNamesInOrder)
{
    m_platform.clearRecords();
    EXPECT_EQ(m_pLog->initialize(), EAF_OK);
    const ChannelNames& names = GetParam();
    EXPECT_THAT(m_platform.calls(),
                ElementsAre("registerInterface(" + names.sInterface + ")", "CInterfaceBroker_GetInstance",
                            "CInterfaceBroker_RegisterInterface(" + names.sManageLogs + ")",
                            "CInterfaceBroker_RegisterInterface(" + names.sTiMethod + ")",
                            "CInterfaceBroker_DestroyInstance"));
    EXPECT_EQ(m_platform.script().interfaces[names.sInterface], static_cast<IInterface*>(m_pLog.get()));
    EXPECT_EQ(m_platform.record(names.sManageLogs), &m_pLog->m_manageLogsCStruct);
    EXPECT_EQ(m_platform.record(names.sTiMethod), &m_pLog->m_tiMethodCStruct);
}

TEST_P(LogNamesTest, RecordsHoldTheLogAndItsHandlers)
{
    EXPECT_EQ(m_pLog->m_manageLogsCStruct.vpThis, nullptr);
    EXPECT_EQ(m_pLog->m_manageLogsCStruct.manageLogs, nullptr);
    EXPECT_EQ(m_pLog->m_tiMethodCStruct.vpThis, nullptr);
    EXPECT_EQ(m_pLog->m_tiMethodCStruct.handle, nullptr);
    m_pLog->initialize();
    EXPECT_EQ(m_pLog->m_manageLogsCStruct.vpThis, m_pLog->handle());
    EXPECT_EQ(m_pLog->m_manageLogsCStruct.manageLogs, &OutputPowerControlLog::staticManageOpcLog);
    EXPECT_EQ(m_pLog->m_tiMethodCStruct.vpThis, m_pLog->handle());
    EXPECT_EQ(m_pLog->m_tiMethodCStruct.handle, &OutputPowerControlLog::statichandleTIManageOPCTransientLog);
}

TEST_P(LogNamesTest, UnInitializeWithdrawsTheInterfaceLastAndKeepsTheHandle)
{
    m_pLog->initialize();
    m_pLog->addSamples(2);
    m_pLog->setOpcLogActive(true);
    m_pLog->write(5);
    m_platform.clearRecords();
    m_pLog->unInitialize();
    const ChannelNames& names = GetParam();
    EXPECT_THAT(m_platform.calls(), ElementsAre("CInterfaceBroker_GetInstance",
                                                "CInterfaceBroker_UnregisterInterface(" + names.sManageLogs + ", null)",
                                                "CInterfaceBroker_UnregisterInterface(" + names.sTiMethod + ", null)",
                                                "unregisterInterface(" + names.sInterface + ", null)"));
    EXPECT_THAT(m_platform.script().interfaces, IsEmpty());
    EXPECT_THAT(m_platform.script().records, IsEmpty());
    EXPECT_THAT(takeTraces(),
                ElementsAre("RQX.OPCL 5: Enter: unInitialize() for channel " + std::to_string(names.nChannel)));
    EXPECT_EQ(m_pLog->getNumberOfSamplesInTransientLog(), 2U);
    EXPECT_EQ(m_pLog->m_opcLog.txRfGainMax, 5);
    EXPECT_EQ(m_pLog->m_manageLogsCStruct.vpThis, m_pLog->handle());
    EXPECT_EQ(m_pLog->m_tiMethodCStruct.vpThis, m_pLog->handle());
}

TEST_P(LogNamesTest, InitializeTracesBeforeAndAfter)
{
    m_platform.clearRecords();
    m_pLog->initialize();
    const std::vector<RecordedTrace> traces = m_platform.traces();
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].nCallsBefore, 0U);
    EXPECT_EQ(traces[1].nCallsBefore, 5U);
    const std::string sChannel = std::to_string(GetParam().nChannel);
    EXPECT_THAT(takeTraces(),
                ElementsAre("RQX.OPCL 5: Enter: initialize() for channel " + sChannel,
                            "RQX.OPCL 5: Exit: initialize() finished successfully for channel " + sChannel));
}

class LogLifecycleTest : public LogTest
{
};

TEST_F(LogLifecycleTest, ConstructionTracesAndRegistersNothing)
{
    {
        const ExposedLog log(7);
        EXPECT_EQ(log.m_nChannel, 7U);
        EXPECT_THAT(m_platform.calls(), IsEmpty());
        EXPECT_THAT(takeTraces(), ElementsAre("RQX.OPCL 5: Enter: OutputPowerControlLog()"));
    }
    EXPECT_THAT(m_platform.calls(), IsEmpty());
    EXPECT_THAT(takeTraces(), ElementsAre("RQX.OPCL 5: Enter: ~OutputPowerControlLog()"));
}

TEST_F(LogLifecycleTest, IsDestroyedThroughItsInterface)
{
    std::unique_ptr<IInterface> pInterface = std::make_unique<OutputPowerControlLog>(1);
    m_platform.clearRecords();
    pInterface.reset();
    EXPECT_THAT(takeTraces(), ElementsAre("RQX.OPCL 5: Enter: ~OutputPowerControlLog()"));
}

TEST_F(LogLifecycleTest, TraceObjectStartsAtLevelThree)
{
    EXPECT_THAT(m_platform.traceObjects(), Contains("RQX.OPCL, 3").Times(1));
}

TEST_F(LogLifecycleTest, InitializeEmptiesBothLogsAndKeepsTheActiveFlags)
{
    for (const bool bActive : {true, false}) {
        m_log.addSamples(2);
        m_log.setTransientLogActive(bActive);
        m_log.setOpcLogActive(true);
        m_log.write(5);
        m_log.setOpcLogActive(bActive);
        m_log.initialize();
        EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 0U);
        EXPECT_EQ(m_log.m_opcLog.txRfPowerSetMax, 0);
        EXPECT_TRUE(m_log.m_bOpcLogFirstSample);
        EXPECT_EQ(m_log.isTransientLogActive(), bActive);
        EXPECT_EQ(m_log.isOpcLogActive(), bActive);
    }
}

TEST_F(LogLifecycleTest, BrokerFailuresGoUnnoticed)
{
    m_platform.script().nRegisterInterface = EAF_FAILED;
    m_platform.script().nCGetInstance = EAF_FAILED;
    m_platform.script().nCRegisterInterface = EAF_FAILED;
    m_platform.script().nCDestroyInstance = EAF_FAILED;
    m_platform.script().nCUnregisterInterface = EAF_FAILED;
    m_platform.script().nUnregisterInterface = EAF_FAILED;
    EXPECT_EQ(m_log.initialize(), EAF_OK);
    EXPECT_EQ(m_platform.calls().size(), 5U);
    EXPECT_THAT(takeTraces(), Contains("RQX.OPCL 5: Exit: initialize() finished successfully for channel 3"));
    m_log.unInitialize();
    EXPECT_EQ(m_platform.calls().size(), 4U);
}

class LogRestartTest : public LogTest
{
protected:
    void SetUp() override
    {
        m_log.addSamples(2);
        m_log.setTransientLogActive(false);
        m_log.setOpcLogActive(true);
        m_log.write(5);
        m_log.setOpcLogActive(false);
    }
};

TEST_F(LogRestartTest, LeavesInactiveLogsAlone)
{
    m_log.logsRestart();
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 2U);
    EXPECT_EQ(m_log.m_opcLog.txRfGainMax, 5);
    EXPECT_FALSE(m_log.m_bOpcLogFirstSample);
    EXPECT_FALSE(m_log.isTransientLogActive());
    EXPECT_FALSE(m_log.isOpcLogActive());
}

TEST_F(LogRestartTest, RestartsTheOpcLogAlone)
{
    m_log.setOpcLogActive(true);
    m_log.logsRestart();
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 2U);
    EXPECT_FALSE(m_log.isTransientLogActive());
    EXPECT_EQ(m_log.m_opcLog.txRfGainMax, 0);
    EXPECT_TRUE(m_log.m_bOpcLogFirstSample);
    EXPECT_TRUE(m_log.isOpcLogActive());
}

TEST_F(LogRestartTest, RestartsTheTransientLogAlone)
{
    m_log.setTransientLogActive(true);
    m_log.logsRestart();
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 0U);
    EXPECT_TRUE(m_log.isTransientLogActive());
    EXPECT_EQ(m_log.m_opcLog.txRfGainMax, 5);
    EXPECT_FALSE(m_log.isOpcLogActive());
}

TEST_F(LogRestartTest, CTableRestartsActiveLogs)
{
    m_log.setTransientLogActive(true);
    m_log.setOpcLogActive(true);
    IInterface_c& brokered = m_log;
    const auto* pTable = static_cast<const IOutputPowerControlLogCStruct*>(brokered.getCStruct());
    EXPECT_EQ(pTable, &m_log.m_cStruct);
    EXPECT_EQ(pTable->vpThis, static_cast<IOutputPowerControlLog*>(&m_log));
    EXPECT_EQ(pTable->logsRestart(pTable->vpThis), EAF_OK);
    EXPECT_EQ(m_log.getNumberOfSamplesInTransientLog(), 0U);
    EXPECT_EQ(m_log.m_opcLog.txRfGainMax, 0);
    EXPECT_TRUE(m_log.isTransientLogActive());
    EXPECT_TRUE(m_log.isOpcLogActive());
}

TEST_F(LogRestartTest, CTableRefusesNullWithoutATrace)
{
    m_platform.clearRecords();
    EXPECT_EQ(m_log.m_cStruct.logsRestart(nullptr), EAF_NULL_POINTER);
    EXPECT_EQ(IOutputPowerControlLog::staticLogsRestart(nullptr), EAF_NULL_POINTER);
    EXPECT_THAT(takeTraces(), IsEmpty());
}
} // namespace
