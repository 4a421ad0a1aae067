// The phase that connects the controller, and the phase that ends it.
#include "tests/support/ControllerTest.h"

namespace
{
constexpr const char* BANDWIDTH_TABLE = ".P.Level.Over.Bandwidth.To.OPC.Target.Offset";
constexpr const char* FREQUENCY_TABLE = ".Frequency.Over.Temperature.To.OPC.Target.Offset";

class ModuleInitTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        m_platform.reset();
        prepare(0);
    }

    /** Builds a controller that is not connected yet. */
    void prepare(unsigned int nChannel)
    {
        m_pController.reset();
        publishHandlers(nChannel);
        m_pController = std::make_unique<ExposedController>(nChannel);
        m_platform.clearRecords();
    }

    void expectFailure(const std::string& sText)
    {
        EXPECT_EQ(controller().onModuleInit(), EAF_FAILED);
        EXPECT_EQ(m_platform.traceTexts(1), Texts{sText});
        EXPECT_EQ(m_platform.traces().back().sSourcePath, CONTROLLER_SOURCE_PATH);
        EXPECT_FALSE(controller().m_bModuleInitDone);
    }
};
} // namespace

TEST_F(ModuleInitTest, ConnectsInOrderUnderTheNamesOfTheChannel)
{
    for (const unsigned int nChannel : {0U, 3U}) {
        prepare(nChannel);
        const std::string sChannel = std::to_string(nChannel);
        EXPECT_EQ(controller().onModuleInit(), EAF_OK);
        EXPECT_EQ(
            m_platform.calls(),
            (Texts{"getInterface(IOutputPowerHandler." + sChannel + ")",
                   nChannel == 0 ? "getInterface(IFrequencyHandler_Tx)" : "getInterface(IFrequencyHandler_Tx_3)",
                   "IFrequencyHandler::registerObserver", "getInterface(ITemperatureHandler)",
                   "ITemperatureHandler::registerObserver", "GetTable(Channel." + sChannel + BANDWIDTH_TABLE + ")",
                   "GetTable(Channel." + sChannel + FREQUENCY_TABLE + ")"}));
        EXPECT_TRUE(controller().m_bModuleInitDone);
    }
}

TEST_F(ModuleInitTest, TracesItsEntryFirst)
{
    controller().onModuleInit();
    const RecordedTrace trace = m_platform.traces().at(0);
    EXPECT_EQ(trace.sText, "Enter: onModuleInit()");
    EXPECT_EQ(trace.nLevel, 5);
    EXPECT_EQ(trace.nCallsBefore, 0U);
    EXPECT_EQ(trace.sSourcePath, CONTROLLER_SOURCE_PATH);
}

TEST_F(ModuleInitTest, KeepsWhatItFound)
{
    CCalibrationTable& bandwidth = m_platform.table(std::string("Channel.0") + BANDWIDTH_TABLE);
    CCalibrationTable& frequency = m_platform.table(std::string("Channel.0") + FREQUENCY_TABLE);
    EXPECT_EQ(controller().onModuleInit(), EAF_OK);
    EXPECT_EQ(controller().m_pOutputPowerHandler, m_handler.getCStruct());
    EXPECT_EQ(m_frequency.m_observers, std::vector<Observer<IFrequencyHandler>*>{m_pController.get()});
    EXPECT_EQ(m_platform.script().temperatureObservers,
              std::vector<ITemperatureObserver*>{&controller().m_temperatureObserver});
    EXPECT_EQ(controller().m_calTablePtargetOverBandwidthToPTargetOffset, &bandwidth);
    EXPECT_EQ(controller().m_calTableFrequencyOverTemperatureToPTargetOffset, &frequency);
    EXPECT_EQ(m_platform.traces().size(), 1U);
}

TEST_F(ModuleInitTest, CutsTheHandlersNameToOneDigitOfTheChannel)
{
    prepare(12);
    EXPECT_EQ(controller().onModuleInit(), EAF_OK);
    EXPECT_EQ(m_platform.calls().front(), "getInterface(IOutputPowerHandler.1)");
    EXPECT_EQ(m_platform.callsOf("getInterface(IFrequencyHandler"), Texts{"getInterface(IFrequencyHandler_Tx_12)"});
}

TEST_F(ModuleInitTest, FailsWithoutTheOutputPowerHandler)
{
    m_platform.script().interfaces.erase("IOutputPowerHandler.0");
    expectFailure("onModuleInit(): Failed to get interface IOutputPowerHandler.0");
    EXPECT_EQ(m_platform.calls(), Texts{"getInterface(IOutputPowerHandler.0)"});
}

TEST_F(ModuleInitTest, FailsWhenTheHandlersNameStandsForSomethingElse)
{
    PlainInterface plain;
    m_platform.publish("IOutputPowerHandler.0", &plain);
    expectFailure("onModuleInit(): Failed to get interface IOutputPowerHandler.0");
}

TEST_F(ModuleInitTest, FailsWhenTheHandlerOffersNoTable)
{
    m_handler.setTableOffered(false);
    expectFailure("onModuleInit(): Failed to get interface IOutputPowerHandler.0");
}

TEST_F(ModuleInitTest, AnEarlierHandlerServesWhenNothingUsableIsPublished)
{
    ASSERT_EQ(controller().onModuleInit(), EAF_OK);
    m_platform.script().interfaces.erase("IOutputPowerHandler.0");
    EXPECT_EQ(controller().onModuleInit(), EAF_OK);
    PlainInterface plain;
    m_platform.publish("IOutputPowerHandler.0", &plain);
    EXPECT_EQ(controller().onModuleInit(), EAF_OK);
    EXPECT_EQ(controller().m_pOutputPowerHandler, m_handler.getCStruct());
}

TEST_F(ModuleInitTest, ANullTableOfAHandlerThatIsThereReplacesTheEarlierOne)
{
    ASSERT_EQ(controller().onModuleInit(), EAF_OK);
    m_handler.setTableOffered(false);
    EXPECT_EQ(controller().onModuleInit(), EAF_FAILED);
    EXPECT_EQ(controller().m_pOutputPowerHandler, nullptr);
}

TEST_F(ModuleInitTest, FailsWithoutTheFrequencyHandler)
{
    m_platform.script().interfaces.erase("IFrequencyHandler_Tx");
    expectFailure("onModuleInit(): Failed to retrieve the FrequencyHandler interface");
    EXPECT_EQ(controller().m_pOutputPowerHandler, m_handler.getCStruct());
    EXPECT_EQ(m_platform.calls().back(), "getInterface(IFrequencyHandler_Tx)");
}

TEST_F(ModuleInitTest, FailsWhenTheFrequencyHandlersNameStandsForSomethingElse)
{
    m_platform.publish("IFrequencyHandler_Tx", &m_handler);
    expectFailure("onModuleInit(): Failed to retrieve the FrequencyHandler interface");
}

TEST_F(ModuleInitTest, FailsWhenTheFrequencyHandlerRefusesTheObserver)
{
    for (const EAFResult nResult : {EAF_FAILED, EAF_NULL_POINTER, 0x7FFFFFFF}) {
        m_platform.clearRecords();
        m_frequency.m_nRegistrationResult = nResult;
        expectFailure("onModuleInit(): Failed to register the DpdController as observer to FrequencyHandler.");
        EXPECT_EQ(m_platform.calls().back(), "IFrequencyHandler::registerObserver");
    }
}

TEST_F(ModuleInitTest, ResultsBelow0x8000AreSuccesses)
{
    for (const EAFResult nResult : {0x7FFF, -1, INT32_MIN}) {
        m_frequency.m_nRegistrationResult = nResult;
        EXPECT_EQ(controller().onModuleInit(), EAF_OK);
    }
}

TEST_F(ModuleInitTest, FailsWithoutTheTemperatureHandlerBeforeAnyTableIsFetched)
{
    m_platform.script().interfaces.erase("ITemperatureHandler");
    expectFailure("onModuleInit(): Failed to retrieve the TemperatureHandler interface");
    EXPECT_EQ(m_platform.calls().back(), "getInterface(ITemperatureHandler)");
    EXPECT_EQ(m_frequency.m_observers.size(), 1U);
}

TEST_F(ModuleInitTest, FailsWhenTheTemperatureHandlersNameStandsForSomethingElse)
{
    m_platform.publish("ITemperatureHandler", &m_handler);
    expectFailure("onModuleInit(): Failed to retrieve the TemperatureHandler interface");
}

TEST_F(ModuleInitTest, IgnoresARefusedTemperatureObserver)
{
    m_platform.script().nRegisterTemperatureObserver = EAF_FAILED;
    EXPECT_EQ(controller().onModuleInit(), EAF_OK);
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

TEST_F(ModuleInitTest, GoesOnWithoutCalibrationTables)
{
    EXPECT_EQ(controller().onModuleInit(), EAF_OK);
    EXPECT_EQ(m_platform.traceTexts(7), Texts(2, "onModuleInit(): could not get cal table, continuing...."));
    EXPECT_EQ(controller().m_calTablePtargetOverBandwidthToPTargetOffset, nullptr);
    EXPECT_EQ(controller().m_calTableFrequencyOverTemperatureToPTargetOffset, nullptr);
    EXPECT_TRUE(controller().m_bModuleInitDone);
}

TEST_F(ModuleInitTest, ForgetsATableThatCouldNotBeFetchedAnyMore)
{
    CCalibrationTable& bandwidth = m_platform.table(std::string("Channel.0") + BANDWIDTH_TABLE);
    CCalibrationTable& frequency = m_platform.table(std::string("Channel.0") + FREQUENCY_TABLE);
    ASSERT_EQ(controller().onModuleInit(), EAF_OK);
    bandwidth.nGetTableResult = EAF_FAILED;
    m_platform.clearRecords();
    ASSERT_EQ(controller().onModuleInit(), EAF_OK);
    EXPECT_EQ(controller().m_calTablePtargetOverBandwidthToPTargetOffset, nullptr);
    EXPECT_EQ(controller().m_calTableFrequencyOverTemperatureToPTargetOffset, &frequency);
    EXPECT_EQ(m_platform.traceTexts(7).size(), 1U);
}

TEST_F(ModuleInitTest, RepeatedInitialisationRegistersAgain)
{
    ASSERT_EQ(controller().onModuleInit(), EAF_OK);
    ASSERT_EQ(controller().onModuleInit(), EAF_OK);
    EXPECT_EQ(m_frequency.m_observers.size(), 2U);
    EXPECT_EQ(m_platform.script().temperatureObservers.size(), 2U);
}

TEST_F(ModuleInitTest, StopClearsTheFlagOnlyAndAnotherInitialisationSetsIt)
{
    ASSERT_EQ(controller().onModuleInit(), EAF_OK);
    m_platform.clearRecords();
    EXPECT_EQ(controller().onPhaseStop(), EAF_OK);
    EXPECT_FALSE(controller().m_bModuleInitDone);
    EXPECT_EQ(m_platform.calls(), Texts{});
    EXPECT_EQ(m_platform.traceTexts(5), Texts{"Enter: onPhaseStop()"});
    EXPECT_EQ(controller().m_pOutputPowerHandler, m_handler.getCStruct());
    EXPECT_EQ(controller().onModuleInit(), EAF_OK);
    EXPECT_TRUE(controller().m_bModuleInitDone);
}

TEST_F(ModuleInitTest, TheEndOfTheControllerWithdrawsNoObserver)
{
    ASSERT_EQ(controller().onModuleInit(), EAF_OK);
    m_pController.reset();
    EXPECT_EQ(m_frequency.m_observers.size(), 1U);
    EXPECT_EQ(m_platform.script().temperatureObservers.size(), 1U);
}
