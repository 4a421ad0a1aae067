#include "Unit/Process/RadioChannel.h"
#include "tests/unit/FakeController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
class RadioChannelCommands : public testing::Test
{
protected:
    RadioChannelCommands() : m_channel(configuration()) { m_channel.connect(); }

    static ChannelConfiguration configuration()
    {
        ChannelConfiguration configuration;
        configuration.nNumber = 7;
        configuration.nPowerMode = 0;
        return configuration;
    }

    void step()
    {
        StepSample sample{};
        m_channel.step({}, sample);
    }

    FakeController m_controller{"IOutputPowerController_7"};
    RadioChannel m_channel;
};
} // namespace

TEST_F(RadioChannelCommands, PassARequestOnAtOnceFromTheRestingState)
{
    m_channel.want(eREQUESTED_TX_POWER_ON);
    EXPECT_THAT(m_controller.requests,
                testing::ElementsAre(std::make_pair(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_STEP_LIMITED)));
    step();
    EXPECT_EQ(m_channel.state(), eOPC_TX_ON);
    step();
    m_channel.want(eREQUESTED_TX_POWER_OFF);
    step();
    step();
    EXPECT_EQ(m_controller.requests.size(), 2U); // each once
    EXPECT_EQ(m_channel.state(), eOPC_TX_OFF);
}

TEST_F(RadioChannelCommands, KeepARequestUntilTheControllerFollowsIt)
{
    m_controller.eState = eOPC_TX_ON_IN_PROGRESS;
    m_channel.want(eREQUESTED_TX_POWER_OFF);
    EXPECT_THAT(m_controller.requests, testing::IsEmpty()); // it would be ignored
    m_controller.eState = eOPC_TX_ON;
    m_controller.bOn = true;
    step();
    EXPECT_EQ(m_channel.state(), eOPC_TX_OFF);

    m_controller.eState = eOPC_TX_OFF_IN_PROGRESS;
    m_channel.want(eREQUESTED_TX_POWER_ON);
    m_controller.eState = eOPC_TX_OFF;
    step();
    EXPECT_EQ(m_channel.state(), eOPC_TX_ON);
}

TEST_F(RadioChannelCommands, ForgetARequestOnceItIsFulfilled)
{
    m_channel.want(eREQUESTED_TX_POWER_ON);
    step();                            // on
    step();                            // seen to be on
    m_controller.eState = eOPC_TX_OFF; // by itself
    step();
    EXPECT_EQ(m_controller.requests.size(), 1U);
}

TEST_F(RadioChannelCommands, ChangeThePowerModeWithoutSwitching)
{
    EXPECT_EQ(m_channel.setPowerMode(1), EAF_OK);
    EXPECT_EQ(m_controller.requests.back(), std::make_pair(eREQUESTED_TX_POWER_OFF, eTX_POWER_MODE_FREE));
    m_controller.bOn = true;
    EXPECT_EQ(m_channel.setPowerMode(0), EAF_OK);
    EXPECT_EQ(m_controller.requests.back(), std::make_pair(eREQUESTED_TX_POWER_ON, eTX_POWER_MODE_STEP_LIMITED));
    EXPECT_EQ(m_channel.configuration().nPowerMode, 0);
}

TEST_F(RadioChannelCommands, RememberTheSettingsThatTheyPassOn)
{
    EXPECT_EQ(m_channel.setLimits(-4.0, 21.5), EAF_OK);
    EXPECT_EQ(m_controller.limits, std::make_pair(-400L, 2150L));
    EXPECT_EQ(m_channel.configuration().txPminDbm, -4.0);
    EXPECT_EQ(m_channel.configuration().txPmaxDbm, 21.5);
    EXPECT_EQ(m_channel.setProductionTest(true, 2), EAF_OK);
    EXPECT_EQ(m_controller.productionTest, std::make_pair(1U, 2));
    EXPECT_TRUE(m_channel.configuration().bProductionTest);
    EXPECT_EQ(m_channel.configuration().nLoopMode, 2);
    EXPECT_EQ(m_channel.setInterval(3), EAF_OK);
    EXPECT_EQ(m_controller.nInterval, 3);
}

TEST_F(RadioChannelCommands, SetAndReadGains)
{
    EXPECT_EQ(m_channel.setGain(eOPH_DETECTOR_STATE_1, eOPC_TX_ON, 35), EAF_OK);
    EXPECT_EQ(m_channel.setGain(eOPH_DETECTOR_STATE_0, eOPC_TX_ON_RAMPING, 12), EAF_OK);
    EXPECT_EQ(m_channel.gains(eOPC_TX_ON)[1], 35);
    EXPECT_EQ(m_channel.gains(eOPC_TX_ON_RAMPING)[0], 12);
}

TEST_F(RadioChannelCommands, LetASetPowerStandAgainstTheProfile)
{
    StepSurroundings surroundings;
    surroundings.profile.requestedPowerDbm = 5.0;
    StepSample sample{};
    m_channel.requestedPowerDbm().set(12.0);
    m_channel.step(surroundings, sample);
    m_channel.requestedPowerDbm().release();
    m_channel.step(surroundings, sample);
    EXPECT_THAT(m_controller.requestedPowers, testing::ElementsAre(1200, 500));
}

TEST_F(RadioChannelCommands, RefuseAFaultWithoutASimulatedHandler)
{
    EXPECT_FALSE(m_channel.setFault(EHandlerOperation::GetPmeasured, {EHandlerFault::Fail, 1, 0, 0}));
    EXPECT_EQ(m_channel.faults().at(0).eKind, EHandlerFault::None);
}
