#include "Unit/Simulator/RunTrack.h"

#include "tests/unit/simulator/VirtualSteps.h"

#include <gtest/gtest.h>

namespace
{
/** Adds steps whose control power in hundredths of a dBm is their number. */
void addSteps(RunTrack& track, std::uint64_t nSteps)
{
    for (std::uint64_t nStep = 0; nStep < nSteps; ++nStep) {
        VirtualStep step = makeStep(nStep * 6000);
        step.sample.nPctrl = static_cast<std::int32_t>(nStep);
        track.onStep(step);
    }
}
} // namespace

TEST(RunTrack, KeepsEveryStepWhileThereIsRoom)
{
    RunTrack track;
    addSteps(track, RunTrack::MAX_BUCKETS);
    EXPECT_EQ(track.stepsPerBucket(), 1U);
    EXPECT_EQ(track.buckets().size(), RunTrack::MAX_BUCKETS);
}

TEST(RunTrack, HalvesItsResolutionWhenItIsFull)
{
    const std::pair<std::uint64_t, std::uint64_t> cases[] = {{4097, 2}, {8192, 2}, {8193, 4}, {100000, 32}};
    for (const auto& [nSteps, nPerBucket] : cases) {
        RunTrack track;
        addSteps(track, nSteps);
        EXPECT_EQ(track.stepsPerBucket(), nPerBucket) << nSteps;
        EXPECT_EQ(track.buckets().size(), (nSteps + nPerBucket - 1) / nPerBucket) << nSteps;
        std::uint64_t nFirst = 0;
        for (const StepBucket& bucket : track.buckets()) {
            const ValueRange& range = bucket.range(EQuantity::ControlPower);
            ASSERT_DOUBLE_EQ(range.minimum, static_cast<double>(nFirst) / 100.0);
            ASSERT_DOUBLE_EQ(range.maximum, static_cast<double>(nFirst + bucket.nSteps - 1) / 100.0);
            ASSERT_DOUBLE_EQ(bucket.firstSeconds, static_cast<double>(nFirst) * 0.006);
            nFirst += bucket.nSteps;
        }
        EXPECT_EQ(nFirst, nSteps);
    }
}

TEST(RunTrack, RemembersTheLastStateAndTheOneFurthestFromOn)
{
    RunTrack track;
    for (std::uint64_t nStep = 0; nStep < RunTrack::MAX_BUCKETS + 1; ++nStep) {
        VirtualStep step = makeStep(nStep * 6000);
        step.sample.nState = nStep == 0 ? eOPC_TX_OFF : eOPC_TX_ON;
        track.onStep(step);
    }
    EXPECT_EQ(track.buckets().front().nLastState, eOPC_TX_ON);
    EXPECT_EQ(track.buckets().front().nLowestDegree, eDEGREE_OFF);
    EXPECT_EQ(track.buckets().back().nLowestDegree, eDEGREE_ON);
}

TEST(JoinedBuckets, AreAtMostAsManyAsAskedFor)
{
    const std::pair<std::uint64_t, std::size_t> cases[] = {{1000, 1000}, {1024, 1024}, {1025, 513}, {4096, 1024}};
    for (const auto& [nSteps, nJoined] : cases) {
        RunTrack track;
        addSteps(track, nSteps);
        const auto joined = joinedBuckets(track.buckets(), 1024);
        EXPECT_EQ(joined.size(), nJoined) << nSteps;
        EXPECT_DOUBLE_EQ(joined.back().lastSeconds, static_cast<double>(nSteps - 1) * 0.006) << nSteps;
    }
}
