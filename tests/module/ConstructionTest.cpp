// What a new controller holds and registers, and what its end withdraws.
#include "tests/support/ControllerTest.h"

#include <algorithm>
#include <memory>
#include <new>

namespace
{
class ConstructionTest : public ::testing::Test
{
protected:
    void SetUp() override { m_platform.reset(); }
    void TearDown() override
    {
        EXPECT_TRUE(m_platform.areTracesWellFormed());
        m_platform.reset();
    }

    RecordingPlatform& m_platform = RecordingPlatform::get();
};
} // namespace

TEST_F(ConstructionTest, RegistersTheModuleThenTheInterface)
{
    const ExposedController controller(3);
    EXPECT_EQ(m_platform.calls(), (Texts{"ModuleInterface(15000, OutputPowerController, 3, 0, {5, 11, 20, 16})",
                                         "RegisterModule", "registerInterface(IOutputPowerController_3)"}));
}

TEST_F(ConstructionTest, NamesTheInterfaceByChannel)
{
    const struct
    {
        unsigned int nChannel;
        const char* pName;
    } cases[] = {{0, "IOutputPowerController"},
                 {1, "IOutputPowerController_1"},
                 {12, "IOutputPowerController_12"},
                 {4294967295U, "IOutputPowerController_4294967295"}};
    for (const auto& named : cases) {
        const ExposedController controller(named.nChannel);
        EXPECT_EQ(m_platform.script().interfaces.count(named.pName), 1U) << named.pName;
    }
    EXPECT_TRUE(m_platform.script().interfaces.empty());
}

TEST_F(ConstructionTest, TracesItsEntryBeforeItRegistersAndTheLogAfter)
{
    const ExposedController controller(0);
    const std::vector<RecordedTrace> traces = m_platform.traces();
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].sText, "Enter: OutputPowerController()");
    EXPECT_EQ(traces[0].nLevel, 5);
    EXPECT_EQ(traces[0].sGroup, "RQX.OPC");
    EXPECT_EQ(traces[0].sSourcePath, CONTROLLER_SOURCE_PATH);
    EXPECT_EQ(traces[0].nCallsBefore, 1U);
    EXPECT_EQ(traces[1].sText, "Enter: OutputPowerControlLog()");
    EXPECT_EQ(traces[1].nCallsBefore, 2U);
}

TEST_F(ConstructionTest, BuildsItsTraceObjectAtLoad)
{
    const Texts objects = m_platform.traceObjects();
    EXPECT_EQ(std::count(objects.begin(), objects.end(), "RQX.OPC, 3"), 1);
}

TEST_F(ConstructionTest, HoldsTheDefaults)
{
    ExposedController controller(7);
    EXPECT_EQ(controller.m_nTemperature, 0);
    EXPECT_EQ(controller.m_nChannel, 7U);
    EXPECT_FALSE(controller.m_bModuleInitDone);
    EXPECT_NE(controller.m_pLog, nullptr);
    EXPECT_EQ(controller.m_nNumberOfGainBlocks, 0);
    EXPECT_EQ(controller.m_nChannelSpacing, 0);
    EXPECT_EQ(controller.m_pOutputPowerHandler, nullptr);
    EXPECT_EQ(controller.m_nTxFrequency, 0);
    EXPECT_EQ(int{controller.m_eTxPowerMode}, 3);
    EXPECT_EQ(controller.m_nPctrl, -10000);
    EXPECT_EQ(controller.m_nPtarget, -10000);
    EXPECT_EQ(controller.m_nPmeasured, 0);
    EXPECT_EQ(controller.m_nPredictedPctrl, -10000);
    EXPECT_EQ(controller.m_nLastNotifiedPtarget, 0);
    EXPECT_EQ(controller.m_nLastNotifiedPctrl, 0);
    EXPECT_EQ(controller.m_nLastNotifiedPredictedPctrl, 0);
    EXPECT_EQ(int{controller.getOPCState()}, 2);
    EXPECT_EQ(int{controller.m_ePreviousOPCState}, 9);
    EXPECT_EQ(controller.m_nTxPmin, 0);
    EXPECT_EQ(controller.m_nPctrlMax, 0);
    EXPECT_EQ(int{controller.m_eTxPowerActualStatus}, 0);
    EXPECT_EQ(controller.m_tsDelayedTxOnStart.tv_sec, 0);
    EXPECT_EQ(controller.m_tsDelayedTxOnStart.tv_nsec, 0);
    EXPECT_EQ(controller.m_nPctrlMin, -10000);
}

TEST_F(ConstructionTest, HoldsTheDefaultsOfCountsAndSettings)
{
    ExposedController controller(0);
    EXPECT_EQ(controller.m_nTxOnInProgressCount, 0);
    EXPECT_EQ(controller.m_nTxOnInProgressCycles, 3U);
    EXPECT_EQ(controller.m_nRampingCount, 0);
    EXPECT_EQ(controller.m_nRampingCycles, 15U);
    EXPECT_EQ(controller.m_nRegulatorInterval, 6);
    EXPECT_EQ(int{controller.m_eRfDetectorLoopMode}, 0);
    EXPECT_EQ(int{controller.m_eOPHDetectorState}, 3);
    EXPECT_EQ(controller.m_nPowerError, 0);
    EXPECT_FALSE(controller.m_bProductionTestMode);
    EXPECT_EQ(controller.m_nMaxPctrlStep, 100000);
    EXPECT_EQ(controller.m_calTablePtargetOverBandwidthToPTargetOffset, nullptr);
    EXPECT_EQ(controller.m_calTableFrequencyOverTemperatureToPTargetOffset, nullptr);
    EXPECT_TRUE(controller.m_vecPctrlObservers.empty());
    EXPECT_TRUE(controller.m_vecPtargetObservers.empty());
    EXPECT_TRUE(controller.m_vecPredictedPctrlObservers.empty());
    EXPECT_TRUE(controller.m_vecPowerModeObservers.empty());
}

TEST_F(ConstructionTest, HoldsAGainOfTwentyInTheTwoColumnsThatAreUsed)
{
    ExposedController controller(0);
    for (int nDetector = 0; nDetector < 3; ++nDetector) {
        for (int nState = 0; nState < 9; ++nState) {
            EXPECT_EQ(controller.m_anGain[nDetector][nState], nState >= 7 ? 20 : 0) << nDetector << ' ' << nState;
        }
    }
}

TEST_F(ConstructionTest, FillsTheTemperatureObserverWithTheObjectItself)
{
    ExposedController controller(0);
    EXPECT_EQ(controller.m_temperatureObserver.vpThis,
              static_cast<void*>(static_cast<OutputPowerController*>(&controller)));
    EXPECT_EQ(controller.m_temperatureObserver.pfnNotifyTemperature, &OutputPowerController::staticNotifyTemperature);
}

TEST_F(ConstructionTest, GoesOnWhenTheRegistrationsFail)
{
    m_platform.script().nRegisterModule = EAF_FAILED;
    m_platform.script().nRegisterInterface = EAF_FAILED;
    m_platform.script().nUnRegisterModule = EAF_FAILED;
    m_platform.script().nUnregisterInterface = EAF_FAILED;
    {
        const ExposedController controller(0);
        EXPECT_EQ(m_platform.calls().back(), "registerInterface(IOutputPowerController)");
    }
    EXPECT_TRUE(m_platform.traceTexts(1).empty());
}

TEST_F(ConstructionTest, EndDeletesTheLogThenWithdrawsModuleAndName)
{
    auto pController = std::make_unique<ExposedController>(3);
    m_platform.clearRecords();
    pController.reset();
    EXPECT_EQ(m_platform.calls(), (Texts{"UnRegisterModule", "unregisterInterface(IOutputPowerController_3, null)",
                                         "ModuleInterface::~ModuleInterface"}));
    const std::vector<RecordedTrace> traces = m_platform.traces();
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].sText, "Enter: ~OutputPowerController()");
    EXPECT_EQ(traces[0].nLevel, 5);
    EXPECT_EQ(traces[0].sSourcePath, CONTROLLER_SOURCE_PATH);
    EXPECT_EQ(traces[1].sText, "Enter: ~OutputPowerControlLog()");
    EXPECT_EQ(traces[1].nCallsBefore, 0U);
}

TEST_F(ConstructionTest, TheModuleBaseLeadsToTheEndOfTheWholeObject)
{
    std::unique_ptr<ModuleInterface> pModule = std::make_unique<OutputPowerController>(0);
    pModule.reset();
    EXPECT_TRUE(m_platform.script().interfaces.empty());
}

TEST_F(ConstructionTest, OtherPhasesKeepTheBehaviourOfTheBase)
{
    ExposedController controller(0);
    m_platform.clearRecords();
    EXPECT_EQ(controller.onPhaseActivation(5, eCALLBACK_PRIORITY_NORMAL), EAF_OK);
    EXPECT_EQ(controller.onPhaseEndFrameformatLoad(), EAF_OK);
    EXPECT_EQ(controller.onPhaseStart(), EAF_OK);
    EXPECT_EQ(controller.onPhaseFrameformatLoad(), EAF_OK);
    EXPECT_EQ(controller.onPhasePreFrameformatLoad(), EAF_OK);
    EXPECT_EQ(controller.onPhaseSetRadioChannelNearEndFinished(), EAF_OK);
    EXPECT_EQ(m_platform.calls(),
              (Texts{"ModuleInterface::onPhaseActivation", "ModuleInterface::onPhaseEndFrameformatLoad",
                     "ModuleInterface::onPhaseStart", "ModuleInterface::onPhaseFrameformatLoad",
                     "ModuleInterface::onPhasePreFrameformatLoad",
                     "ModuleInterface::onPhaseSetRadioChannelNearEndFinished"}));
}

TEST_F(ConstructionTest, AnExceptionAfterTheModuleWasRegisteredPassesOn)
{
    m_platform.script().afterRegisterModule = [] { throw std::bad_alloc(); };
    EXPECT_THROW(ExposedController(0), std::bad_alloc);
    EXPECT_EQ(m_platform.callsOf("registerInterface"), Texts{});
}
