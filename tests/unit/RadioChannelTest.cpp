#include "Unit/Process/RadioChannel.h"

#include "Unit/Process/LoadedModule.h"
#include "tests/unit/FakeController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

namespace
{
ChannelConfiguration channelSeven()
{
    ChannelConfiguration configuration;
    configuration.nNumber = 7;
    return configuration;
}
} // namespace

TEST(RadioChannel, FindsNoControllerWhereNoneIsPublished)
{
    RadioChannel channel(channelSeven());
    EXPECT_EQ(channel.controllerName(), "IOutputPowerController_7");
    EXPECT_FALSE(channel.connect());
}

TEST(RadioChannel, ConfiguresTheControllerThroughItsTable)
{
    FakeController controller("IOutputPowerController_7");
    ChannelConfiguration configuration = channelSeven();
    configuration.txPminDbm = -5.5;
    configuration.txPmaxDbm = 21.0;
    configuration.gainPercentOn = GainPercent{10, 20, 30};
    RadioChannel channel(configuration);
    ASSERT_TRUE(channel.connect());
    EXPECT_EQ(controller.nObservers, 3);
    EXPECT_NE(controller.pPredictedObserver, nullptr);
    channel.configureController(12);
    EXPECT_EQ(controller.nInterval, 12);
    EXPECT_EQ(controller.limits, std::make_pair(-550L, 2100L));
    EXPECT_THAT(controller.gains,
                testing::ElementsAre(testing::Pair(std::make_pair(0, 8), 10), testing::Pair(std::make_pair(1, 8), 20),
                                     testing::Pair(std::make_pair(2, 8), 30)));
    EXPECT_EQ(controller.productionTest.second, -1); // not touched unless the file asks for it
}

TEST(RadioChannel, SetsProductionTestWhenAskedTo)
{
    FakeController controller("IOutputPowerController_7");
    ChannelConfiguration configuration = channelSeven();
    configuration.bProductionTest = true;
    configuration.nLoopMode = 2;
    RadioChannel channel(configuration);
    ASSERT_TRUE(channel.connect());
    channel.configureController(6);
    EXPECT_EQ(controller.productionTest, std::make_pair(1U, 2));
}

TEST(RadioChannel, RequestsWithThePowerModeOfTheFile)
{
    FakeController controller("IOutputPowerController_7");
    ChannelConfiguration configuration = channelSeven();
    configuration.nPowerMode = 0;
    RadioChannel channel(configuration);
    ASSERT_TRUE(channel.connect());
    channel.requestOn();
    EXPECT_THAT(controller.requests,
                testing::ElementsAre(std::make_pair(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_STEP_LIMITED)));
    controller.nRequestResult = EAF_NULL_POINTER;
    EXPECT_THROW(channel.requestOn(), UnitStartError);
}

TEST(RadioChannel, FillsASampleAndCounts)
{
    FakeController controller("IOutputPowerController_7");
    RadioChannel channel(channelSeven());
    ASSERT_TRUE(channel.connect());
    StepSurroundings surroundings;
    surroundings.temperatureDegrees = 31.5;
    surroundings.profile.frequencyMhz = 4999.75;
    surroundings.profile.requestedPowerDbm = 15.0;
    StepSample sample{};
    channel.step(surroundings, sample); // off
    EXPECT_FALSE(channel.statistics().bHasPctrl);
    channel.requestOn();
    controller.pPredictedObserver->pfnNotify(controller.pPredictedObserver->vpThis, 7, 1234);
    sample.nTimeUs = 6000;
    surroundings.profile.requestedPowerDbm = 15.01;
    channel.step(surroundings, sample);
    EXPECT_EQ(sample.nStateBefore, eOPC_TX_ON_INITIATED);
    EXPECT_EQ(sample.nState, eOPC_TX_ON);
    EXPECT_EQ(sample.nChannelNumber, 7U);
    EXPECT_EQ(sample.nRequestedPower, 1501);
    EXPECT_EQ(sample.nPtarget, 101);
    EXPECT_EQ(sample.nPctrl, 104);
    EXPECT_EQ(sample.nPowerError, 103);
    EXPECT_EQ(sample.nPmeasured, 104);
    EXPECT_EQ(sample.nPredictedPctrl, 1234);
    EXPECT_EQ(sample.nDetectorState, eOPH_DETECTOR_STATE_2);
    EXPECT_EQ(sample.temperatureDegrees, 31.5F);
    EXPECT_EQ(sample.frequencyMhz, 4999.75F);
    EXPECT_EQ(sample.nResult, 0);
    controller.nRegulateResult = EAF_FAILED;
    surroundings.profile.requestedPowerDbm = 15.02;
    channel.step(surroundings, sample);
    EXPECT_EQ(sample.nResult, EAF_FAILED);
    EXPECT_EQ(sample.nSteps, 3U);
    EXPECT_EQ(sample.nFailedSteps, 1U);
    const ChannelStatistics& statistics = channel.statistics();
    EXPECT_EQ(statistics.nSwitchOnSteps, 2U);
    EXPECT_EQ(statistics.nSwitchOnTimeUs, 6000U);
    EXPECT_EQ(statistics.nPctrlMin, 104);
    EXPECT_EQ(statistics.nPctrlMax, 105);
    EXPECT_EQ(statistics.nNotifications, 1U);
    EXPECT_THAT(controller.requestedPowers, testing::ElementsAre(1500, 1501, 1502));
    EXPECT_EQ(channel.refusedCalls(), std::nullopt); // the handler is not a simulated one
    EXPECT_EQ(channel.lastSample().nSteps, sample.nSteps);
    EXPECT_EQ(channel.lastSample().nRequestedPower, 1502);
}

TEST(RadioChannel, TimesItsRampsUntilTheTargetIsReached)
{
    FakeController controller("IOutputPowerController_7");
    RadioChannel channel(channelSeven());
    ASSERT_TRUE(channel.connect());
    const auto stepTo = [&](EOPCState eState, std::uint64_t nTimeUs, long nPowerError) {
        controller.onRegulate = [&controller, eState] { controller.eState = eState; };
        controller.nPowerError = nPowerError;
        StepSample sample{};
        sample.nTimeUs = nTimeUs;
        channel.step({}, sample);
        return std::make_pair(channel.statistics().nRamps, channel.statistics().nRampUs);
    };
    using Ramps = std::pair<std::uint64_t, std::uint64_t>;
    EXPECT_EQ(stepTo(eOPC_TX_ON_IN_PROGRESS, 10, 0), Ramps(0, 0));
    EXPECT_EQ(stepTo(eOPC_TX_ON_RAMPING, 20, 900), Ramps(1, 0));
    EXPECT_EQ(stepTo(eOPC_TX_ON_RAMPING, 30, 100), Ramps(1, 10));
    EXPECT_EQ(stepTo(eOPC_TX_ON, 40, 101), Ramps(1, 20));
    EXPECT_EQ(stepTo(eOPC_TX_ON, 50, -101), Ramps(1, 30));
    EXPECT_EQ(stepTo(eOPC_TX_ON, 60, -100), Ramps(1, 40));
    EXPECT_EQ(stepTo(eOPC_TX_ON, 70, 500), Ramps(1, 40)) << "what is off the target later is no ramp";
    EXPECT_EQ(stepTo(eOPC_TX_ON_RAMPING, 80, 500), Ramps(2, 0));
    EXPECT_EQ(stepTo(eOPC_TX_OFF_INITIATED, 90, 500), Ramps(2, 0));
    EXPECT_EQ(stepTo(eOPC_TX_ON, 100, 0), Ramps(2, 0)) << "the ramp was given up";
}

TEST(RadioChannel, FollowsWhatItsLogsDo)
{
    FakeController controller("IOutputPowerController_7");
    RadioChannel channel(channelSeven());
    ASSERT_TRUE(channel.connect());
    controller.eState = eOPC_TX_ON;
    const auto stepsAfter = [&](const char* pOption) {
        channel.logs().onTransientLog(pOption);
        StepSample sample{};
        channel.step({}, sample);
        return channel.logs().nTransientSteps;
    };
    EXPECT_EQ(stepsAfter("Read"), 0U) << "it does not run";
    EXPECT_EQ(stepsAfter("Enable"), 1U);
    EXPECT_EQ(stepsAfter("Read"), 2U);
    EXPECT_TRUE(channel.logs().bTransientLogRuns);
    controller.nRegulateResult = EAF_FAILED;
    EXPECT_EQ(stepsAfter("Read"), 2U) << "a step that fails adds no sample";
    controller.nRegulateResult = EAF_OK;
    EXPECT_EQ(stepsAfter("Disable"), 2U);
    EXPECT_FALSE(channel.logs().bTransientLogRuns);
    EXPECT_EQ(stepsAfter("Enable"), 1U) << "it was emptied";
    EXPECT_EQ(channel.logs().nTransientBegins, 2U);
}

TEST(LogActivity, FollowsTheOpcLog)
{
    LogActivity logs;
    for (const auto& [pOption, bRuns] : std::initializer_list<std::pair<const char*, bool>>{
             {"Read", false}, {"Start", true}, {"ReadAndReset", true}, {"Stop", false}, {"SaveToSysLog", false}})
    {
        logs.onOpcLog(pOption);
        EXPECT_EQ(logs.bOpcLogRuns, bRuns) << pOption;
    }
}
