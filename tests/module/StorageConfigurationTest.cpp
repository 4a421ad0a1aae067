// The two settings that come from the module storage.
#include "tests/support/ControllerTest.h"

#include <set>
#include <utility>

namespace
{
constexpr const char* GAIN_BLOCKS = "channel.0.tx.rf.number.of.gain.blocks";
constexpr const char* CHANNEL_SPACING = "ChannelSpacing";

// Code and spacing in kHz.
const std::pair<int, int> SPACINGS[] = {
    {3, 3500},       {5, 5000},       {7, 7000},       {10, 10000},    {14, 14000},   {20, 20000},   {28, 28000},
    {30, 30000},     {40, 40000},     {50, 50000},     {56, 56000},    {60, 60000},   {62, 62500},   {80, 80000},
    {100, 100000},   {112, 112000},   {125, 125000},   {150, 150000},  {200, 200000}, {250, 250000}, {300, 300000},
    {350, 350000},   {400, 400000},   {450, 450000},   {500, 500000},  {600, 600000}, {750, 750000}, {1000, 1000000},
    {1250, 1250000}, {1500, 1500000}, {1750, 1750000}, {2000, 2000000}};
static_assert(std::size(SPACINGS) == 32);

class StorageConfigurationTest : public ControllerTest
{
protected:
    StorageVariable& variable(const std::string& sName) { return m_platform.script().variables[sName]; }

    long readSpacing(int nCode)
    {
        variable(CHANNEL_SPACING) = {EAF_OK, nCode};
        return controller().onPhasePostFrameformatLoad();
    }

    void expectOneFailure(const std::string& sText)
    {
        EXPECT_EQ(m_platform.traceTexts(1), Texts{sText});
        EXPECT_EQ(m_platform.traces().back().sSourcePath, CONTROLLER_SOURCE_PATH);
        m_platform.clearRecords();
    }
};
} // namespace

TEST_F(StorageConfigurationTest, GainBlocksAreReadUnderTheNameOfTheChannel)
{
    for (const unsigned int nChannel : {0U, 12U}) {
        build(nChannel);
        const std::string sName = "channel." + std::to_string(nChannel) + ".tx.rf.number.of.gain.blocks";
        variable(sName) = {EAF_OK, 4};
        EXPECT_EQ(controller().onPhaseModuleStorageObjectsRetreived(), EAF_OK);
        EXPECT_EQ(m_platform.calls(), Texts{"GetVariable(" + sName + ", 0)"});
        EXPECT_EQ(controller().m_nNumberOfGainBlocks, 4);
    }
}

TEST_F(StorageConfigurationTest, BothPhasesTraceTheirEntryFirst)
{
    variable(GAIN_BLOCKS) = {EAF_OK, 4};
    variable(CHANNEL_SPACING) = {EAF_OK, 28};
    controller().onPhaseModuleStorageObjectsRetreived();
    controller().onPhasePostFrameformatLoad();
    const std::vector<RecordedTrace> traces = m_platform.traces();
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].sText, "Enter: onPhaseModuleStorageObjectsRetreived()");
    EXPECT_EQ(traces[1].sText, "Enter: onPhasePostFrameformatLoad()");
    for (const RecordedTrace& trace : traces) {
        EXPECT_EQ(trace.nLevel, 5);
        EXPECT_EQ(trace.sSourcePath, CONTROLLER_SOURCE_PATH);
    }
    EXPECT_EQ(traces[0].nCallsBefore, 0U);
    EXPECT_EQ(traces[1].nCallsBefore, 1U);
}

TEST_F(StorageConfigurationTest, GainBlocksFromOneToSixAndNegativeOnesAreTaken)
{
    for (const int nValue : {1, 2, 3, 4, 5, 6, -1, INT32_MIN}) {
        variable(GAIN_BLOCKS) = {EAF_OK, nValue};
        EXPECT_EQ(controller().onPhaseModuleStorageObjectsRetreived(), EAF_OK);
        EXPECT_EQ(controller().m_nNumberOfGainBlocks, nValue);
    }
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

TEST_F(StorageConfigurationTest, WrongGainBlocksGiveTheDefaultAndAFailure)
{
    for (const int nValue : {0, 7, INT32_MAX}) {
        controller().m_nNumberOfGainBlocks = 2;
        variable(GAIN_BLOCKS) = {EAF_OK, nValue};
        EXPECT_EQ(controller().onPhaseModuleStorageObjectsRetreived(), EAF_FAILED);
        EXPECT_EQ(controller().m_nNumberOfGainBlocks, 6);
        expectOneFailure(std::string("onPhaseModuleStorageObjectsRetreived(): variable ") + GAIN_BLOCKS +
                         "from the database is wrong " + std::to_string(nValue) + ". Default value used instead 6");
    }
}

TEST_F(StorageConfigurationTest, GainBlocksThatCannotBeReadGiveTheDefaultAndTheStoragesResult)
{
    const std::pair<EAFResult, const char*> cases[] = {
        {EAF_FAILED, "8000"}, {EAF_NULL_POINTER, "8002"}, {0xABCD, "abcd"}, {INT32_MAX, "7fffffff"}};
    for (const auto& [nResult, pHex] : cases) {
        controller().m_nNumberOfGainBlocks = 2;
        variable(GAIN_BLOCKS) = {nResult, 3};
        EXPECT_EQ(controller().onPhaseModuleStorageObjectsRetreived(), nResult);
        EXPECT_EQ(controller().m_nNumberOfGainBlocks, 6);
        expectOneFailure("onPhaseModuleStorageObjectsRetreived(): failed to retrieve variables from database "
                         "(EAFResult = " +
                         std::string(pHex) + ") Default value 6used instead.");
    }
}

TEST_F(StorageConfigurationTest, AMissingGainBlockVariableGivesTheDefault)
{
    EXPECT_EQ(controller().onPhaseModuleStorageObjectsRetreived(), EAF_FAILED);
    EXPECT_EQ(controller().m_nNumberOfGainBlocks, 6);
}

TEST_F(StorageConfigurationTest, GainBlocksWithoutContentCountAsSuccess)
{
    const std::pair<EAFResult, const char*> cases[] = {{EAF_OK, "0"}, {0x7FFF, "7fff"}, {-1, "ffffffff"}};
    for (const auto& [nResult, pHex] : cases) {
        variable(GAIN_BLOCKS) = {nResult, 3, true};
        EXPECT_EQ(controller().onPhaseModuleStorageObjectsRetreived(), nResult);
        EXPECT_EQ(controller().m_nNumberOfGainBlocks, 6);
        expectOneFailure("onPhaseModuleStorageObjectsRetreived(): failed to retrieve variables from database "
                         "(EAFResult = " +
                         std::string(pHex) + ") Default value 6used instead.");
    }
}

TEST_F(StorageConfigurationTest, BothPhasesReturnTheStoragesSuccessUnchanged)
{
    for (const EAFResult nResult : {0x7FFF, 1, -1, INT32_MIN}) {
        variable(GAIN_BLOCKS) = {nResult, 5};
        variable(CHANNEL_SPACING) = {nResult, 62};
        EXPECT_EQ(controller().onPhaseModuleStorageObjectsRetreived(), nResult);
        EXPECT_EQ(controller().onPhasePostFrameformatLoad(), nResult);
        EXPECT_EQ(controller().m_nNumberOfGainBlocks, 5);
        EXPECT_EQ(controller().m_nChannelSpacing, 62500);
    }
}

TEST_F(StorageConfigurationTest, NumbersAfterAHexadecimalResultAreDecimalAgain)
{
    for (const bool bGainBlocks : {true, false}) {
        (void)(bGainBlocks ? controller().onPhaseModuleStorageObjectsRetreived()
                           : controller().onPhasePostFrameformatLoad());
        m_platform.clearRecords();
        controller().notifyTemperature(31);
        EXPECT_EQ(m_platform.traceTexts(5), Texts{"notifyTemperature(): New temperature = 31 for channel 0"});
    }
}

TEST_F(StorageConfigurationTest, EveryChannelSpacingCodeIsStoredInKilohertz)
{
    for (const auto& [nCode, nSpacing] : SPACINGS) {
        EXPECT_EQ(readSpacing(nCode), EAF_OK);
        EXPECT_EQ(controller().m_nChannelSpacing, nSpacing) << nCode;
    }
    EXPECT_EQ(m_platform.calls().back(), "GetVariable(ChannelSpacing, 0)");
}

TEST_F(StorageConfigurationTest, EveryOtherChannelSpacingCodeStoresZeroWithoutATrace)
{
    std::set<int> codes;
    std::set<int> others{0, -1, 2001, INT32_MIN, INT32_MAX};
    for (const auto& spacing : SPACINGS) {
        codes.insert(spacing.first);
        others.insert({spacing.first - 1, spacing.first + 1, spacing.first * 1000});
    }
    for (const int nCode : others) {
        if (codes.count(nCode) == 0) {
            controller().m_nChannelSpacing = 1;
            EXPECT_EQ(readSpacing(nCode), EAF_OK);
            EXPECT_EQ(controller().m_nChannelSpacing, 0) << nCode;
        }
    }
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

TEST_F(StorageConfigurationTest, TheChannelSpacingNameHoldsNoChannel)
{
    build(3);
    EXPECT_EQ(readSpacing(62), EAF_OK);
    EXPECT_EQ(m_platform.calls(), Texts{"GetVariable(ChannelSpacing, 0)"});
}

TEST_F(StorageConfigurationTest, AChannelSpacingThatCannotBeReadStaysAsItIs)
{
    const std::pair<EAFResult, const char*> cases[] = {{EAF_FAILED, "8000"}, {INT32_MAX, "7fffffff"}};
    for (const auto& [nResult, pHex] : cases) {
        controller().m_nChannelSpacing = 28000;
        variable(CHANNEL_SPACING) = {nResult, 40};
        EXPECT_EQ(controller().onPhasePostFrameformatLoad(), nResult);
        EXPECT_EQ(controller().m_nChannelSpacing, 28000);
        expectOneFailure(
            "onPhasePostFrameformatLoad(): failed to retrieve the variable ChannelSpacing from the database "
            "(EAFResult = " +
            std::string(pHex));
    }
}
