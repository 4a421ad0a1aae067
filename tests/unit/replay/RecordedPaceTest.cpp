#include "Unit/Replay/RecordedPace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace
{
using testing::ElementsAre;

/** What a regulation that follows a pace meets. */
class RecordedPaceTest : public testing::Test, public IReplayListener
{
protected:
    bool onTick(const RecordedTick* pRecorded) override
    {
        m_recorded.push_back(pRecorded != nullptr);
        return m_recorded.size() != m_nLastTick;
    }

    bool onGap(std::uint64_t nSteps, std::uint64_t nNextUs) override
    {
        m_gaps.emplace_back(nSteps, nNextUs);
        if (nSteps == m_nSlowerAfter && m_pPace != nullptr) {
            m_pPace->setInterval(std::chrono::milliseconds(10));
        }
        return true;
    }

    /** @param ticks time, number of the step, and skipped deadlines so far; goes through them at 6 ms */
    void follow(std::vector<RecordedTick> ticks)
    {
        std::size_t nNext = 0;
        RecordedPace pace(
            [&ticks, &nNext](RecordedTick& tick) {
                if (nNext == ticks.size()) {
                    return false;
                }
                tick = ticks[nNext++];
                return true;
            },
            *this);
        m_pPace = &pace;
        CommandQueue commands;
        pace.begin(std::chrono::milliseconds(6));
        while (pace.wait()) {
            m_timesUs.push_back(pace.elapsedNs() / 1000);
            m_skipped.push_back(pace.next());
            pace.serve(commands);
        }
        m_nTaken = pace.takenTicks();
        m_nMissing = pace.missingTicks();
        m_sTrouble = pace.trouble();
    }

    std::size_t m_nLastTick = 0;
    std::uint64_t m_nSlowerAfter = 1000;
    RecordedPace* m_pPace = nullptr;
    std::vector<bool> m_recorded;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> m_gaps;
    std::vector<std::int64_t> m_timesUs;
    std::vector<std::uint64_t> m_skipped;
    std::uint64_t m_nTaken = 0;
    std::uint64_t m_nMissing = 0;
    std::string m_sTrouble;
};
} // namespace

TEST_F(RecordedPaceTest, FollowsRecordedDeadlinesAndTheirSkippedOnes)
{
    follow({{0, 1, 0, {}}, {6000, 2, 0, {}}, {24000, 3, 2, {}}, {30000, 4, 2, {}}});
    EXPECT_THAT(m_timesUs, ElementsAre(0, 6000, 24000, 30000));
    EXPECT_THAT(m_skipped, ElementsAre(0, 2, 0, 0));
    EXPECT_THAT(m_recorded, ElementsAre(true, true, true, true));
    EXPECT_EQ(m_nTaken, 4U);
    EXPECT_EQ(m_nMissing, 0U);
    EXPECT_EQ(m_sTrouble, "");
}

TEST_F(RecordedPaceTest, TellsOfTheTimeBetweenTwoStepsWithTheNumberOfThoseBefore)
{
    follow({{0, 1, 0, {}}, {6000, 2, 0, {}}, {12000, 3, 0, {}}});
    EXPECT_THAT(m_gaps, ElementsAre(testing::Pair(0, 0), testing::Pair(1, 6000), testing::Pair(2, 12000)));
}

TEST_F(RecordedPaceTest, TakesStepsThatAreNotRecordedAtTheInterval)
{
    follow({{18000, 4, 0, {}}, {24000, 5, 0, {}}, {42000, 8, 0, {}}});
    EXPECT_THAT(m_timesUs, ElementsAre(0, 6000, 12000, 18000, 24000, 30000, 36000, 42000));
    EXPECT_THAT(m_recorded, ElementsAre(false, false, false, true, true, false, false, true));
    EXPECT_EQ(m_nMissing, 5U);
    EXPECT_EQ(m_sTrouble, "");
}

TEST_F(RecordedPaceTest, TakesThemAtTheIntervalThatACommandHasSet)
{
    m_nSlowerAfter = 2; // the deadline after that still comes at the old one
    follow({{32000, 5, 0, {}}});
    EXPECT_THAT(m_timesUs, ElementsAre(0, 6000, 12000, 22000, 32000));
    EXPECT_EQ(m_sTrouble, "");
}

TEST_F(RecordedPaceTest, EndsWhereDeadlinesWereSkippedThatNobodyRecorded)
{
    follow({{0, 1, 0, {}}, {24000, 4, 1, {}}});
    EXPECT_THAT(m_timesUs, ElementsAre(0));
    EXPECT_EQ(m_sTrouble, "no steps are recorded from 0.006000 to 0.024000 s, and 1 deadline was skipped meanwhile: it "
                          "is not known which");
}

TEST_F(RecordedPaceTest, EndsWhereTheStepsThatAreNotRecordedDoNotFillTheTime)
{
    follow({{0, 1, 0, {}}, {20000, 4, 0, {}}});
    EXPECT_EQ(m_nTaken, 3U);
    EXPECT_EQ(m_sTrouble, "the steps that are not recorded before 0.020000 s do not end there, but at 0.018000 s");
}

TEST_F(RecordedPaceTest, EndsAtAStepThatIsRecordedOutOfOrder)
{
    follow({{0, 1, 0, {}}, {6000, 2, 0, {}}, {12000, 2, 0, {}}});
    EXPECT_EQ(m_nTaken, 2U);
    EXPECT_EQ(m_sTrouble, "step 2 at 0.012000 s is recorded after step 2");
}

TEST_F(RecordedPaceTest, EndsWhenItsListenerHasSeenEnough)
{
    m_nLastTick = 2;
    follow({{0, 1, 0, {}}, {6000, 2, 0, {}}, {12000, 3, 0, {}}});
    EXPECT_EQ(m_nTaken, 2U);
    EXPECT_EQ(m_sTrouble, "");
}

TEST_F(RecordedPaceTest, HasNothingToFollowInAnEmptyRecording)
{
    follow({});
    EXPECT_TRUE(m_timesUs.empty());
    EXPECT_TRUE(m_gaps.empty());
}
