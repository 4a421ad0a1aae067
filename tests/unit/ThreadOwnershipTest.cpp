#include "Unit/Clock/MonotonicTime.h"
#include "Unit/CommandLine/private/SampleReader.h"
#include "Unit/LivePage/private/FeedStream.h"
#include "Unit/Process/LoadedModule.h"
#include "Unit/Process/RegulationLoop.h"
#include "Unit/Process/UnitProcess.h"
#include "tests/support/BrokenRule.h"
#include "tests/unit/FakeController.h"
#include "tests/unit/TemporaryFolder.h"
#include "tests/unit/UnitFiles.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace
{
class ThreadOwnershipTest : public testing::Test
{
protected:
    ThreadOwnershipTest() : m_channel(ChannelConfiguration())
    {
        m_channel.connect();
        m_settings.intervalMs = 1;
        m_settings.durationSeconds = 0.01;
    }

    FakeController m_controller{"IOutputPowerController"};
    RadioChannel m_channel;
    RunSettings m_settings;
    SampleQueue m_queue{1000};
};
} // namespace

TEST_F(ThreadOwnershipTest, KeepsAChannelToTheThreadThatStartsIt)
{
    EXPECT_EQ(m_channel.state(), eOPC_TX_OFF);
    EXPECT_BROKEN_RULE(inAnotherThread([this] { (void)m_channel.state(); }), "RadioChannel::state");
    EXPECT_BROKEN_RULE(inAnotherThread([this] { (void)m_channel.statistics(); }), "a member of RadioChannel");
    EXPECT_BROKEN_RULE(inAnotherThread([this] { m_channel.want(eREQUESTED_TX_POWER_ON); }), "RadioChannel::want");
}

TEST_F(ThreadOwnershipTest, HandsTheChannelsToTheRegulationAndBack)
{
    m_channel.requestOn();
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    inAnotherThread([&loop] { loop.run(); });
    EXPECT_EQ(loop.error(), "");
    EXPECT_GT(m_channel.statistics().nSteps, 0U);
    EXPECT_EQ(loop.commands().statistics().nCommands, 0U);
    EXPECT_BROKEN_RULE(inAnotherThread([&loop] { (void)loop.overruns(); }), "RegulationLoop::overruns");
}

TEST_F(ThreadOwnershipTest, KeepsOthersOutOfAChannelWhileItIsRegulated)
{
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    m_controller.onRegulate = [this] { inAnotherThread([this] { (void)m_channel.state(); }); };
    EXPECT_BROKEN_RULE(loop.run(), "RadioChannel::state");
}

TEST_F(ThreadOwnershipTest, KeepsOthersOutOfTheLoopWhileItRuns)
{
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    m_controller.onRegulate = [&loop] { inAnotherThread([&loop] { (void)loop.setInterval(2); }); };
    EXPECT_BROKEN_RULE(loop.run(), "RegulationLoop::setInterval");
}

TEST_F(ThreadOwnershipTest, KeepsTheRegulationFromWaitingForItself)
{
    RegulationLoop loop(m_settings, {&m_channel}, nullptr, {}, m_queue);
    m_controller.onRegulate = [&loop] { loop.commands().run([] {}); };
    EXPECT_BROKEN_RULE(loop.run(), "CommandQueue::run");
}

TEST(CommandQueueOwnership, IsServedByOneThread)
{
    CommandQueue queue;
    queue.serveUntil(monotonicNs(), monotonicNs());
    EXPECT_BROKEN_RULE(inAnotherThread([&queue] { queue.serveUntil(0, 0); }), "CommandQueue::serveUntil");
}

TEST(CommandQueueOwnership, LetsOnlyTheRegulationsThreadExecuteInIt)
{
    CommandQueue queue;
    queue.executeInCaller();
    queue.run([] {});
    EXPECT_BROKEN_RULE(inAnotherThread([&queue] { queue.run([] {}); }), "CommandQueue::run");
}

TEST(SampleQueueOwnership, HasOneThreadThatWritesAndOneThatReads)
{
    SampleQueue queue(2);
    queue.push(StepSample{});
    inAnotherThread([&queue] { queue.consumeAll([](const StepSample&) {}); });
    EXPECT_BROKEN_RULE(inAnotherThread([&queue] { queue.push(StepSample{}); }), "SampleQueue::push");
    EXPECT_BROKEN_RULE(queue.consumeAll([](const StepSample&) {}), "SampleQueue::consumeAll");
}

TEST(UnitProcessOwnership, IsForTheThreadThatMadeIt)
{
    const TemporaryFolder folder;
    const UnitConfiguration unit =
        loadUnitConfiguration(folder.write("unit.toml", allModulesText() + "[[channel]]\nnumber = 0\n"));
    UnitProcess process(unit);
    EXPECT_BROKEN_RULE(inAnotherThread([&process] { process.load(); }), "UnitProcess::load");
    EXPECT_BROKEN_RULE(inAnotherThread([&process] { process.stop(); }), "UnitProcess::stop");
}

TEST(LoadedModuleOwnership, IsForTheThreadThatConstructedIt)
{
    const TemporaryFolder folder;
    const UnitConfiguration unit =
        loadUnitConfiguration(folder.write("unit.toml", allModulesText() + "[[channel]]\nnumber = 0\n"));
    LoadedModule module(std::make_shared<ModuleLibrary>(unit, unit.modules.front()), 0);
    EXPECT_EQ(module.uninitialize(), EAF_OK);
    EXPECT_BROKEN_RULE(inAnotherThread([&module] { module.initialize(); }), "LoadedModule::initialize");
    EXPECT_BROKEN_RULE(inAnotherThread([&module] { (void)module.uninitialize(); }), "LoadedModule::uninitialize");
}

TEST(ReaderOwnership, KeepsAPositionInTheFeedToItsReader)
{
    RunFeed feed(10, 10);
    StatusDisplay display(stdout, false, 1);
    SampleReader reader(feed, nullptr, nullptr, display, 1);
    reader.drain();
    EXPECT_BROKEN_RULE(inAnotherThread([&reader] { reader.drain(); }), "SampleReader::drain");
    FeedStream stream(std::shared_ptr<const RunFeed>(std::shared_ptr<const RunFeed>(), &feed), "run", {});
    (void)stream.next();
    EXPECT_BROKEN_RULE(inAnotherThread([&stream] { (void)stream.next(); }), "FeedStream::next");
}
