#include "Unit/Process/ChannelMonitor.h"

#include "Platform/Broker/BrokerDirectory.h"
#include "Platform/Broker/InterfaceBroker.h"
#include "Unit/Process/UnitProcess.h"
#include "tests/unit/FakeController.h"
#include "tests/unit/TemporaryFolder.h"
#include "tests/unit/UnitFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
const char* const ONE_CHANNEL = "[trace]\nsystem_log = false\n[[channel]]\nnumber = 0\n";

class ChannelMonitorTest : public testing::Test
{
protected:
    ChannelMonitorTest() : m_namesBefore(BrokerDirectory::publishedNames()) {}

    void TearDown() override
    {
        m_pProcess.reset();
        EXPECT_EQ(BrokerDirectory::publishedNames(), m_namesBefore);
    }

    /** Starts a monitored unit whose channel has these keys. */
    UnitProcess& start(const std::string& sChannelKeys = {})
    {
        m_unit = loadUnitConfiguration(m_folder.write("unit.toml", allModulesText() + ONE_CHANNEL + sChannelKeys));
        m_pProcess = std::make_unique<UnitProcess>(m_unit);
        m_pProcess->monitorSafety();
        m_pProcess->load();
        m_pProcess->start();
        return *m_pProcess;
    }

    void steps(int nSteps)
    {
        for (int nStep = 0; nStep < nSteps; ++nStep) {
            m_pProcess->channels().front()->stepWith({.requestedPowerDbm = 10.0, .simulatedSeconds = 0.006}, m_sample);
        }
    }

    TemporaryFolder m_folder;
    std::vector<std::string> m_namesBefore;
    UnitConfiguration m_unit;
    std::unique_ptr<UnitProcess> m_pProcess;
    StepSample m_sample{};
};

std::string told(const ViolationStore& store)
{
    return store.kept() == 0 ? std::string() : violationText(store.at(0)) + "\n" + violationCalls(store.at(0));
}

TEST_F(ChannelMonitorTest, FindsNothingInAnOrdinaryLife)
{
    UnitProcess& process = start();
    RadioChannel& channel = *process.channels().front();
    channel.requestOn();
    steps(100);
    EXPECT_EQ(channel.state(), eOPC_TX_ON);
    channel.want(eREQUESTED_TX_POWER_OFF);
    steps(5);
    EXPECT_EQ(channel.state(), eOPC_TX_OFF);
    EXPECT_EQ(channel.safetyViolations(), 0U);
    process.stop();
    ASSERT_EQ(process.monitors().size(), 1U);
    EXPECT_EQ(process.monitors().front()->violations().total(), 0U) << told(process.monitors().front()->violations());
    EXPECT_THAT(process.warnings(), testing::Each(testing::Not(testing::HasSubstr("still published"))));
}

TEST_F(ChannelMonitorTest, HearsASwitchOnAboveTheUpperLimit)
{
    UnitProcess& process = start();
    RadioChannel& channel = *process.channels().front();
    channel.setLimits(100.0, 200.0);
    channel.requestOn();
    steps(1);
    const ViolationStore& store = process.monitors().front()->violations();
    ASSERT_EQ(store.count(ESafetyRule::CrossedLimits), 1U) << told(store);
    EXPECT_THAT(told(store), testing::HasSubstr("setOutputPower(10000, "));
    EXPECT_EQ(channel.safetyViolations(), 1U);
}

TEST_F(ChannelMonitorTest, KeepsTheSimulationsKnobs)
{
    start();
    EXPECT_NE(m_pProcess->channels().front()->transmitter(), nullptr);
}

TEST_F(ChannelMonitorTest, GivesTheNamesBackWhenTheProcessGoes)
{
    start();
    auto& broker = InterfaceBroker::getInstance();
    EXPECT_NE(dynamic_cast<MonitoredHandler*>(broker.getInterface("IOutputPowerHandler.0")), nullptr);
    EXPECT_NE(dynamic_cast<MonitoredController*>(broker.getInterface("IOutputPowerController")), nullptr);
    m_pProcess.reset();
}

TEST_F(ChannelMonitorTest, WarnsOfAControllerThatIsPublishedToCOnly)
{
    const FakeController controller("IOutputPowerController");
    const std::string sHandlers =
        moduleText("TemperatureHandler", "unit") + moduleText("FrequencyHandler") + moduleText("OutputPowerHandler");
    m_unit = loadUnitConfiguration(m_folder.write("unit.toml", sHandlers + ONE_CHANNEL));
    m_pProcess = std::make_unique<UnitProcess>(m_unit);
    m_pProcess->monitorSafety();
    m_pProcess->load();
    m_pProcess->start();
    EXPECT_THAT(m_pProcess->warnings(),
                testing::Contains(testing::HasSubstr("channel 0 is not watched by the safety")));
    EXPECT_FALSE(m_pProcess->channels().front()->safetyViolations().has_value());
    m_pProcess.reset();
}

/** A handler that is published for a test. */
class PublishedHandler : public IOutputPowerHandler
{
public:
    PublishedHandler() { InterfaceBroker::getInstance().registerInterface("IOutputPowerHandler.7", this); }
    ~PublishedHandler() override { InterfaceBroker::getInstance().unregisterInterface("IOutputPowerHandler.7", this); }
    PublishedHandler(const PublishedHandler&) = delete;
    PublishedHandler& operator=(const PublishedHandler&) = delete;
};

TEST_F(ChannelMonitorTest, ChangesNothingWhereSomethingIsMissing)
{
    PublishedHandler handler;
    ChannelMonitor monitor(7);
    EXPECT_FALSE(monitor.interpose());
    EXPECT_EQ(InterfaceBroker::getInstance().getInterface("IOutputPowerHandler.7"), static_cast<IInterface*>(&handler));
    monitor.putBack();
    EXPECT_EQ(monitor.channel(), 7U);
}
} // namespace
