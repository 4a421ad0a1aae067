#include "Unit/Process/UnitProcess.h"

#include "Platform/Broker/BrokerDirectory.h"
#include "Platform/ConfigurationError.h"
#include "Platform/ModuleFramework/PhaseDriver.h"
#include "Unit/Process/RegulationLoop.h"
#include "tests/support/AllocationCount.h"
#include "tests/unit/TemporaryFolder.h"
#include "tests/unit/UnitFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
const char* const TWO_CHANNELS = "[trace]\nsystem_log = false\n"
                                 "[[channel]]\nnumber = 0\n[[channel]]\nnumber = 3\n";
const char* const STORAGE = "[variables]\n\"channel.0.tx.rf.number.of.gain.blocks\" = 6\n"
                            "\"channel.3.tx.rf.number.of.gain.blocks\" = 4\n\"ChannelSpacing\" = 28\n";

class UnitProcessTest : public testing::Test
{
protected:
    UnitProcessTest() : m_namesBefore(BrokerDirectory::publishedNames()) { m_folder.write("storage.toml", STORAGE); }

    void TearDown() override
    {
        EXPECT_EQ(BrokerDirectory::publishedNames(), m_namesBefore);
        EXPECT_EQ(PhaseDriver::moduleCount(), 0U);
    }

    UnitConfiguration load(const std::string& sText) const
    {
        return loadUnitConfiguration(m_folder.write("unit.toml", sText));
    }

    TemporaryFolder m_folder;
    std::vector<std::string> m_namesBefore;
};

const char* const STORAGE_TABLE = "[storage]\nfile = \"storage.toml\"\n";
} // namespace

TEST_F(UnitProcessTest, StartsAndStopsTheModulesOfEveryChannel)
{
    const UnitConfiguration unit = load(allModulesText() + STORAGE_TABLE + TWO_CHANNELS);
    UnitProcess process(unit);
    process.load();
    EXPECT_EQ(BrokerDirectory::publishedNames(), m_namesBefore);
    process.start();
    EXPECT_THAT(BrokerDirectory::publishedNames(),
                testing::IsSupersetOf({"IFrequencyHandler_Tx", "IFrequencyHandler_Tx_3", "IOutputPowerController",
                                       "IOutputPowerController_3", "IOutputPowerHandler.0", "IOutputPowerHandler.3",
                                       "ITemperatureHandler"}));
    ASSERT_EQ(process.channels().size(), 2U);
    EXPECT_EQ(process.channels()[1]->number(), 3U);
    EXPECT_NE(process.temperature(), nullptr);
    process.stop();
    EXPECT_EQ(BrokerDirectory::publishedNames(), m_namesBefore);
    EXPECT_THAT(process.warnings(), testing::IsEmpty());
    process.stop(); // again, in vain
}

TEST_F(UnitProcessTest, RegulatesTheSimulatedTransmitters)
{
    const UnitConfiguration unit = load("[unit]\ninterval_ms = 2\n" + allModulesText() + STORAGE_TABLE + TWO_CHANNELS);
    UnitProcess process(unit);
    process.load();
    process.start();
    RunSettings settings;
    settings.intervalMs = unit.intervalMs;
    settings.durationSeconds = 0.5;
    SampleQueue queue(2000);
    std::vector<RadioChannel*> channels;
    for (const auto& pChannel : process.channels()) {
        pChannel->requestOn();
        channels.push_back(pChannel.get());
    }
    RegulationLoop loop(settings, channels, process.temperature(), {}, queue);
    loop.run();
    EXPECT_EQ(loop.error(), "");
    for (const RadioChannel* pChannel : channels) {
        EXPECT_GT(pChannel->statistics().nSwitchOnSteps, 0U);
        EXPECT_EQ(pChannel->statistics().nFailedSteps, 0U);
        EXPECT_EQ(pChannel->refusedCalls(), 0U);
        EXPECT_FALSE(pChannel->isOn());
        EXPECT_EQ(pChannel->state(), eOPC_TX_OFF);
    }
}

TEST_F(UnitProcessTest, AllocatesNothingInAStep)
{
    const UnitConfiguration unit = load(allModulesText() + STORAGE_TABLE + TWO_CHANNELS);
    const Profile profile(m_folder.write("p.csv", "time_s,requested_power_dBm,temperature_C\n0,10,25\n1,12,25\n"),
                          {EInterpolation::Linear, EInterpolation::Linear, EInterpolation::Held});
    UnitProcess process(unit);
    process.load();
    process.start();
    RadioChannel& channel = *process.channels().front();
    const auto allocationsOfARun = [&](double durationSeconds) {
        RunSettings settings;
        settings.intervalMs = 1;
        settings.durationSeconds = durationSeconds;
        settings.pProfile = &profile;
        SampleQueue queue(1000);
        channel.requestOn();
        RegulationLoop loop(settings, {&channel}, process.temperature(), {}, queue);
        const std::size_t nBefore = allocationCount();
        loop.run();
        EXPECT_GT(channel.statistics().nSwitchOnSteps, 0U);
        return allocationCount() - nBefore;
    };
    allocationsOfARun(0.5); // lets the controller's logs grow
    // What switching on and off may cost is in both; the longer run has more steps.
    EXPECT_EQ(allocationsOfARun(0.4), allocationsOfARun(0.1));
}

TEST_F(UnitProcessTest, StopsWhenItGoes)
{
    const UnitConfiguration unit = load(allModulesText() + STORAGE_TABLE + TWO_CHANNELS);
    UnitProcess process(unit);
    process.load();
    process.start();
}

TEST_F(UnitProcessTest, NamesTheInterfaceThatAModuleMisses)
{
    const UnitConfiguration unit = load(moduleText("TemperatureHandler", "unit") + moduleText("OutputPowerHandler") +
                                        moduleText("OutputPowerController") + TWO_CHANNELS);
    UnitProcess process(unit);
    process.load();
    testing::internal::CaptureStderr();
    try {
        process.start();
        ADD_FAILURE() << "started";
    }
    catch (const ConfigurationError& error) {
        EXPECT_EQ(std::string(error.what()),
                  unit.sPath +
                      ": module \"OutputPowerController\" of channel 0 failed in onModuleInit (0x8000): nothing "
                      "is published as \"IFrequencyHandler_Tx\"; list a module that provides it under "
                      "[[module]]");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); // the error says it all
    EXPECT_EQ(BrokerDirectory::publishedNames(), m_namesBefore);
}

TEST_F(UnitProcessTest, NamesTheChannelThatHasNoController)
{
    const UnitConfiguration unit = load(moduleText("OutputPowerHandler") + TWO_CHANNELS);
    UnitProcess process(unit);
    process.load();
    try {
        process.start();
        ADD_FAILURE() << "started";
    }
    catch (const ConfigurationError& error) {
        EXPECT_EQ(std::string(error.what()),
                  unit.sPath +
                      ": channel 0 has no controller: nothing is published as \"IOutputPowerController\"; list "
                      "a module that provides it under [[module]]");
    }
}

TEST_F(UnitProcessTest, WarnsWhenStorageIsMissing)
{
    const UnitConfiguration unit = load(allModulesText() + "[trace]\ndefault = 0\nsystem_log = false\n"
                                                           "[[channel]]\nnumber = 0\n");
    UnitProcess process(unit);
    process.load();
    process.start();
    EXPECT_THAT(process.warnings(),
                testing::ElementsAre(
                    "module \"OutputPowerController\" of channel 0 failed in onPhaseModuleStorageObjectsRetreived "
                    "(0x8000); it goes on with its own defaults",
                    "module \"OutputPowerController\" of channel 0 failed in onPhasePostFrameformatLoad (0x8000); it "
                    "goes on with its own defaults"));
}

TEST_F(UnitProcessTest, RefusesLibrariesBeforeAnythingStarts)
{
    struct Case
    {
        std::string sModule;
        std::string sError;
    };
    m_folder.write("libText.so", "text");
    const std::string sLibrary = OPC_LIBRARY_FOLDER "/libFrequencyHandler.so";
    const std::vector<Case> cases = {
        {"[[module]]\nname = \"A\"\nlibrary = \"libNone.so\"\n",
         ":1: library of module \"A\" cannot be loaded: libNone.so: cannot open shared object file: No such file or "
         "directory; correct library"},
        {"[[module]]\nname = \"A\"\nlibrary = \"./libNone.so\"\n",
         ":1: library \"./libNone.so\" of module \"A\" does not exist; correct library"},
        {"[[module]]\nname = \"A\"\nlibrary = \"" + sLibrary + "\"\n",
         ":1: module \"A\" has no entry point A_Construct in its library; correct name or library"},
    };
    for (const Case& wrong : cases) {
        const UnitConfiguration unit = load(wrong.sModule + "[[channel]]\nnumber = 0\n");
        UnitProcess process(unit);
        try {
            process.load();
            ADD_FAILURE() << "loaded";
        }
        catch (const ConfigurationError& error) {
            EXPECT_EQ(error.what(), unit.sPath + wrong.sError);
        }
    }
    const UnitConfiguration unit =
        load("[[module]]\nname = \"A\"\nlibrary = \"libText.so\"\n[[channel]]\nnumber = 0\n");
    UnitProcess process(unit);
    EXPECT_THROW(process.load(), ConfigurationError);
}
