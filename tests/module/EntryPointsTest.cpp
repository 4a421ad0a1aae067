// The four functions through which a loader drives the module.
#include "Control/OutputPowerController/OutputPowerController_c.h"
#include "Platform/Trace/GtTrace.h"
#include "tests/support/ControllerTest.h"

#include <climits>
#include <new>

namespace
{
constexpr const char* ENTRY_SOURCE_PATH = "Control/OutputPowerController/private/OutputPowerController_c";

struct NullHandleCase
{
    const char* pName;
    int nLine;
    bool bReturns;
    long (*call)();
};

const NullHandleCase NULL_HANDLE_CASES[] = {
    {"Construct", 30, false,
     [] {
         OutputPowerController_Construct(nullptr, 0);
         return 0L;
     }},
    {"Destruct", 45, false,
     [] {
         OutputPowerController_Destruct(nullptr);
         return 0L;
     }},
    {"Initialize", 59, true, [] { return OutputPowerController_Initialize(nullptr); }},
    {"Uninitialize", 73, true, [] { return OutputPowerController_Uninitialize(nullptr); }},
};

class EntryPointsTest : public ::testing::Test
{
protected:
    void SetUp() override { m_platform.reset(); }
    void TearDown() override { m_platform.reset(); }

    RecordingPlatform& m_platform = RecordingPlatform::get();
};

class NullHandleTest : public EntryPointsTest, public ::testing::WithParamInterface<NullHandleCase>
{
};
} // namespace

TEST_P(NullHandleTest, IsTracedWithItsCodeAndDoesNothingElse)
{
    m_platform.script().gtLevels[0x8002] = 3;
    OPC_trace.nLevel = 3;

    EXPECT_EQ(GetParam().call(), GetParam().bReturns ? EAF_NULL_POINTER : 0);

    const std::vector<RecordedTrace> traces = m_platform.traces();
    ASSERT_EQ(traces.size(), 1U);
    EXPECT_EQ(traces[0].sGroup, "OPC");
    EXPECT_EQ(traces[0].nLevel, 3);
    EXPECT_EQ(traces[0].sSourcePath, ENTRY_SOURCE_PATH);
    EXPECT_EQ(traces[0].nLine, GetParam().nLine);
    EXPECT_EQ(traces[0].sText, "Null pointer in argument      code: 0x8002\n");
    EXPECT_EQ(traces[0].formats, (Texts{"Null pointer in argument", "      code: %#lx\n"}));
    EXPECT_TRUE(traces[0].bWellEnded);
    EXPECT_EQ(m_platform.calls(), Texts{"DmLevel2GtLevel(0x8002)"});
}

TEST_P(NullHandleTest, IsNotTracedBelowTheLevelOfItsCode)
{
    m_platform.script().gtLevels[0x8002] = 3;
    OPC_trace.nLevel = 2;

    EXPECT_EQ(GetParam().call(), GetParam().bReturns ? EAF_NULL_POINTER : 0);
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_P(NullHandleTest, GivesItsResultWithTracingOff)
{
    OPC_trace.nLevel = INT_MIN;
    EXPECT_EQ(GetParam().call(), GetParam().bReturns ? EAF_NULL_POINTER : 0);
    EXPECT_TRUE(m_platform.traces().empty());
}

TEST_P(NullHandleTest, LooksAtTheLevelOfItsOwnTraceObject)
{
    OPC_trace.nLevel = 0;
    TI_trace.nLevel = 7;
    (void)GetParam().call();
    EXPECT_TRUE(m_platform.traces().empty());
}

INSTANTIATE_TEST_SUITE_P(EntryPoints, NullHandleTest, ::testing::ValuesIn(NULL_HANDLE_CASES),
                         [](const auto& entry) { return std::string(entry.param.pName); });

TEST_F(EntryPointsTest, ConstructGivesARegisteredControllerOfTheChannel)
{
    void* pModule = nullptr;
    OutputPowerController_Construct(&pModule, 3);
    ASSERT_NE(pModule, nullptr);
    auto* pController = static_cast<OutputPowerController*>(pModule);
    EXPECT_EQ(pController->getModuleChannel(), 3U);
    EXPECT_EQ(m_platform.script().modules, std::vector<ModuleInterface*>{pController});
    EXPECT_EQ(m_platform.script().interfaces.at("IOutputPowerController_3"),
              static_cast<IOutputPowerController*>(pController));
    OutputPowerController_Destruct(pModule);
}

TEST_F(EntryPointsTest, DestructTakesTheControllerOut)
{
    void* pModule = nullptr;
    OutputPowerController_Construct(&pModule, 0);
    OutputPowerController_Destruct(pModule);
    EXPECT_TRUE(m_platform.script().modules.empty());
    EXPECT_TRUE(m_platform.script().interfaces.empty());
    EXPECT_EQ(m_platform.calls().back(), "ModuleInterface::~ModuleInterface");
}

TEST_F(EntryPointsTest, InitializePublishesTheLogAndUninitializeWithdrawsIt)
{
    void* pModule = nullptr;
    OutputPowerController_Construct(&pModule, 2);
    m_platform.clearRecords();

    EXPECT_EQ(OutputPowerController_Initialize(pModule), EAF_OK);
    EXPECT_EQ(m_platform.traces().at(0).sText, "Enter: initialize()");
    EXPECT_EQ(m_platform.traces().at(0).nLevel, 5);
    EXPECT_EQ(m_platform.traces().at(0).sSourcePath, CONTROLLER_SOURCE_PATH);
    EXPECT_EQ(m_platform.calls(), (Texts{"registerInterface(IOutputPowerControlLog_2)", "CInterfaceBroker_GetInstance",
                                         "CInterfaceBroker_RegisterInterface(Channel.2.TxOutputPowerControlLog)",
                                         "CInterfaceBroker_RegisterInterface(TIManageOPCTransientLogCh2)",
                                         "CInterfaceBroker_DestroyInstance"}));
    m_platform.clearRecords();

    EXPECT_EQ(OutputPowerController_Uninitialize(pModule), EAF_OK);
    EXPECT_EQ(m_platform.traces().at(0).sText, "Enter: unInitialize()");
    EXPECT_EQ(m_platform.traces().at(0).nLevel, 5);
    EXPECT_EQ(m_platform.calls(),
              (Texts{"CInterfaceBroker_GetInstance",
                     "CInterfaceBroker_UnregisterInterface(Channel.2.TxOutputPowerControlLog, null)",
                     "CInterfaceBroker_UnregisterInterface(TIManageOPCTransientLogCh2, null)",
                     "unregisterInterface(IOutputPowerControlLog_2, null)"}));
    OutputPowerController_Destruct(pModule);
}

TEST_F(EntryPointsTest, InitializeAndUninitializeSucceedWhenTheBrokersRefuse)
{
    m_platform.script().nRegisterInterface = EAF_FAILED;
    m_platform.script().nUnregisterInterface = EAF_FAILED;
    m_platform.script().nCRegisterInterface = EAF_FAILED;
    m_platform.script().nCUnregisterInterface = EAF_FAILED;
    void* pModule = nullptr;
    OutputPowerController_Construct(&pModule, 0);
    ASSERT_NE(pModule, nullptr);
    EXPECT_EQ(OutputPowerController_Initialize(pModule), EAF_OK);
    EXPECT_EQ(OutputPowerController_Uninitialize(pModule), EAF_OK);
    OutputPowerController_Destruct(pModule);
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

TEST_F(EntryPointsTest, AnExceptionOfTheConstructorReachesTheLoaderAndLeavesNoObject)
{
    m_platform.script().afterRegisterModule = [] { throw std::bad_alloc(); };
    void* pModule = nullptr;
    EXPECT_THROW(OutputPowerController_Construct(&pModule, 0), std::bad_alloc);
    EXPECT_EQ(pModule, nullptr);
    EXPECT_EQ(m_platform.calls().back(), "ModuleInterface::~ModuleInterface");
}
