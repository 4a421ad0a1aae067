#include "Unit/Telemetry/StepEvents.h"

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/EAFResult.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace
{
StepSample stepAt(std::uint64_t nSteps, std::int32_t nResult = EAF_OK, std::uint64_t nFailedSteps = 0)
{
    StepSample sample{};
    sample.nTimeUs = nSteps * 6000;
    sample.nSteps = nSteps;
    sample.nChannelNumber = 7;
    sample.nStateBefore = eOPC_TX_ON;
    sample.nState = eOPC_TX_ON;
    sample.nResult = nResult;
    sample.nFailedSteps = nFailedSteps;
    return sample;
}

std::vector<std::string> texts(const std::vector<RunEvent>& events)
{
    std::vector<std::string> texts(events.size());
    std::transform(events.begin(), events.end(), texts.begin(), [](const RunEvent& event) { return event.sText; });
    return texts;
}
} // namespace

TEST(StepEvents, AreNoneForAStepLikeTheOneBefore)
{
    StepEvents events;
    for (std::uint64_t nStep = 1; nStep < 10; ++nStep) {
        EXPECT_TRUE(events.look(stepAt(nStep)).empty());
    }
}

TEST(StepEvents, TellAChangeOfStateWithItsPlace)
{
    StepEvents events;
    StepSample sample = stepAt(12);
    sample.nStateBefore = eOPC_TX_OFF;
    sample.nState = eOPC_TX_ON_INITIATED;
    const std::vector<RunEvent> found = events.look(sample);
    ASSERT_THAT(texts(found), testing::ElementsAre("TX_OFF to TX_ON_INITIATED"));
    EXPECT_EQ(found[0].eEvent, ERunEvent::State);
    EXPECT_EQ(found[0].nTimeUs, 72'000U);
    EXPECT_EQ(found[0].nSteps, 11U);
    EXPECT_EQ(found[0].nChannelNumber, 7U);
}

TEST(StepEvents, TellWhenStepsBeginToFailAndHowManyHadWhenTheyEndTo)
{
    StepEvents events;
    EXPECT_TRUE(events.look(stepAt(1)).empty());
    EXPECT_THAT(texts(events.look(stepAt(2, EAF_NULL_POINTER, 1))),
                testing::ElementsAre(testing::StartsWith("steps fail with 0x")));
    EXPECT_TRUE(events.look(stepAt(3, EAF_NULL_POINTER, 2)).empty());
    EXPECT_TRUE(events.look(stepAt(4, EAF_NULL_POINTER, 3)).empty());
    EXPECT_THAT(texts(events.look(stepAt(5, EAF_OK, 3))),
                testing::ElementsAre("steps are well again after 3 that failed"));
    EXPECT_THAT(texts(events.look(stepAt(6, EAF_NULL_POINTER, 4))), testing::SizeIs(1));
    EXPECT_THAT(texts(events.look(stepAt(7, EAF_OK, 4))),
                testing::ElementsAre("steps are well again after 1 that failed"));
}

TEST(StepEvents, KeepChannelsApart)
{
    StepEvents events;
    StepSample other = stepAt(1, EAF_NULL_POINTER, 1);
    other.nChannelIndex = 3;
    EXPECT_EQ(events.look(other).size(), 1U);
    EXPECT_TRUE(events.look(stepAt(1)).empty());
    EXPECT_EQ(events.look(stepAt(2, EAF_NULL_POINTER, 1)).size(), 1U);
}

TEST(StepEvents, CountSkippedDeadlinesOnceForAllChannels)
{
    StepEvents events;
    StepSample sample = stepAt(1);
    sample.nOverruns = 3;
    const std::vector<RunEvent> found = events.look(sample);
    ASSERT_THAT(texts(found), testing::ElementsAre("3 deadlines skipped"));
    EXPECT_EQ(found[0].nChannelNumber, std::nullopt);
    sample.nChannelIndex = 1;
    EXPECT_TRUE(events.look(sample).empty());
}

TEST(StepEvents, TellOfSkippedDeadlinesOnceASecond)
{
    StepEvents events;
    StepSample sample = stepAt(1);
    sample.nOverruns = 1;
    EXPECT_THAT(texts(events.look(sample)), testing::ElementsAre("1 deadline skipped"));
    for (std::uint64_t nTimeUs = sample.nTimeUs; nTimeUs < 1'006'000; nTimeUs += 6000) {
        sample.nTimeUs = nTimeUs;
        ++sample.nOverruns;
        EXPECT_TRUE(events.look(sample).empty());
    }
    sample.nTimeUs = 1'006'000;
    EXPECT_THAT(texts(events.look(sample)), testing::ElementsAre("167 deadlines skipped"));
}

TEST(StepEvents, TellOfDroppedSamplesOnlyWhenThereAreMore)
{
    StepEvents events;
    EXPECT_TRUE(events.lookAtDropped(0).empty());
    EXPECT_THAT(texts(events.lookAtDropped(5)), testing::ElementsAre(testing::StartsWith("5 samples dropped")));
    EXPECT_TRUE(events.lookAtDropped(5).empty());
    EXPECT_THAT(texts(events.lookAtDropped(7)), testing::ElementsAre(testing::StartsWith("2 samples dropped")));
}

TEST(StepEvents, TellTheFaultsThatTheUnitFileSwitches)
{
    FaultConfiguration fault;
    fault.nChannel = 5;
    fault.fault.eKind = EHandlerFault::Stuck;
    fault.atSeconds = 0.018;
    fault.forSeconds = 0.012;
    StepEvents events({fault});
    EXPECT_TRUE(events.look(stepAt(2)).empty());
    const std::vector<RunEvent> begun = events.look(stepAt(3));
    ASSERT_THAT(texts(begun), testing::ElementsAre("fault of getPmeasured: stuck"));
    EXPECT_EQ(begun[0].eEvent, ERunEvent::Note);
    EXPECT_EQ(begun[0].nChannelNumber, 5U);
    EXPECT_EQ(begun[0].nSteps, 2U);
    EXPECT_TRUE(events.look(stepAt(4)).empty());
    EXPECT_THAT(texts(events.look(stepAt(5))), testing::ElementsAre("the fault of getPmeasured is over"));
    EXPECT_TRUE(events.look(stepAt(6)).empty());
}
