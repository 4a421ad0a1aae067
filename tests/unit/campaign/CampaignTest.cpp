#include "Unit/Campaign/Campaign.h"

#include "tests/unit/campaign/FakeCampaign.h"

#include <gmock/gmock.h>

#include <cmath>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace
{
std::string errorOf(FakeCampaign& campaign)
{
    try {
        (void)campaign.run();
        return "none";
    }
    catch (const std::exception& error) {
        return error.what();
    }
}
} // namespace

TEST(CampaignTest, MakesEveryRunOnce)
{
    FakeCampaign campaign;
    const CampaignOutcome outcome = campaign.run();
    EXPECT_EQ(outcome.nTotal, 20U);
    EXPECT_EQ(outcome.nDone, 20U);
    EXPECT_EQ(outcome.nFailed, 0U);
    EXPECT_EQ(outcome.nUnsafe, 0U);
    std::uint64_t nNumber = 0;
    ResultsFile::openToRead(campaign.options.sResultsFile).forEach([&](const ResultRow& row) {
        EXPECT_EQ(row.nNumber, nNumber);
        const RunPlan plan = planRun(campaign.definition, nNumber++);
        EXPECT_EQ(row.nSeed, plan.nSeed);
        EXPECT_EQ(row.measures.steps, *plan.values[0].number + 10.0 * *plan.values[1].number);
        EXPECT_EQ(row.measures.settlingMaxMs, static_cast<double>(plan.nSeed));
        EXPECT_TRUE(std::isnan(row.measures.overshootDb)); // none stays none
    });
    EXPECT_EQ(nNumber, 20U);
}

TEST(CampaignTest, TheNumberOfJobsAndStopsDoNotShowInTheResults)
{
    FakeCampaign two;
    (void)two.run();
    FakeCampaign one;
    one.options.nJobs = 1;
    for (const std::uint64_t nStop : {3U, 4U, 11U}) {
        one.observer.nStopAfter = nStop;
        const CampaignOutcome outcome = one.run();
        EXPECT_GE(outcome.nDone, nStop);
        EXPECT_LT(outcome.nDone, 20U);
    }
    one.observer.nStopAfter = 1000;
    EXPECT_EQ(one.run().nDone, 20U);
    EXPECT_GE(one.observer.nDoneAtStart, 11U);
    EXPECT_EQ(linesOf(one.options.sResultsFile), linesOf(two.options.sResultsFile));
}

TEST(CampaignTest, RunsThatFailAreKeptWithWhatHappened)
{
    FakeCampaign campaign("1, 13, 66, 99, 2");
    const CampaignOutcome outcome = campaign.run();
    EXPECT_EQ(outcome.nDone, 20U);
    EXPECT_EQ(outcome.nFailed, 12U);
    std::vector<std::string> errors;
    ResultsFile::openToRead(campaign.options.sResultsFile).forEach([&](const ResultRow& row) {
        EXPECT_EQ(row.failed(), std::isnan(row.measures.steps)) << row.nNumber;
        if (row.nNumber % 4 == 0) {
            errors.push_back(row.sError);
        }
    });
    EXPECT_THAT(errors, ElementsAre("", "the run failed", "the process of the run died of signal 9 (SIGKILL)",
                                    "bad combination", ""));
    EXPECT_THAT(campaign.observer.deaths, SizeIs(4));
    EXPECT_THAT(campaign.observer.deaths.front(), HasSubstr("SIGKILL): last words"));
}

TEST(CampaignTest, CountsRunsThatBrokeASafetyRuleAlsoThoseOfBefore)
{
    FakeCampaign campaign("1, 7, 13");
    campaign.observer.nStopAfter = 6;
    (void)campaign.run();
    campaign.observer.nStopAfter = 1000;
    const CampaignOutcome outcome = campaign.run();
    EXPECT_EQ(outcome.nUnsafe, 4U);
    EXPECT_EQ(outcome.nFailed, 4U);
    EXPECT_EQ(ResultsFile::openToRead(campaign.options.sResultsFile).unsafeRuns(), 4U);
}

TEST(CampaignTest, FailedRunsAreMadeAgainOnRequestOnly)
{
    FakeCampaign campaign("1, 66");
    EXPECT_EQ(campaign.run().nFailed, 4U);
    campaign.observer.deaths.clear();
    EXPECT_EQ(campaign.run().nFailed, 4U);
    EXPECT_THAT(campaign.observer.deaths, IsEmpty());
    campaign.options.bRetryFailed = true;
    EXPECT_EQ(campaign.run().nFailed, 4U);
    EXPECT_THAT(campaign.observer.deaths, SizeIs(4));
}

TEST(CampaignTest, ShardsHaveEachRunOnce)
{
    FakeCampaign campaign;
    std::vector<std::string> lines;
    for (const std::uint64_t nIndex : {1U, 2U, 3U}) {
        campaign.options.shard = {nIndex, 3};
        campaign.options.sResultsFile = campaign.folder.path("shard" + std::to_string(nIndex) + ".db");
        EXPECT_EQ(campaign.run().nDone, nIndex == 3 ? 6U : 7U);
        for (const std::string& sLine : linesOf(campaign.options.sResultsFile)) {
            EXPECT_EQ(std::stoull(sLine) % 3, nIndex - 1);
            lines.push_back(sLine);
        }
    }
    EXPECT_THAT(lines, SizeIs(20));
}

TEST(CampaignTest, BadInputIsFoundBeforeTheFirstRun)
{
    FakeCampaign path;
    path.definition.parameters[1].sPath = "c";
    EXPECT_EQ(errorOf(path), "no such key: c");
    FakeCampaign start;
    start.runner.bCannotStart = true;
    EXPECT_EQ(errorOf(start), "module is missing");
    EXPECT_FALSE(std::filesystem::exists(path.options.sResultsFile));
    EXPECT_FALSE(std::filesystem::exists(start.options.sResultsFile));
}

TEST(CampaignTest, WhatIsFinishedIsInTheFileWhileTheCampaignGoesOn)
{
    FakeCampaign campaign;
    campaign.options.nJobs = 1;
    campaign.runner.nMicroseconds = 200'000;
    std::size_t nSeen = 0;
    struct Reader final : FakeObserver
    {
        void onProgress(std::uint64_t nDone) override
        {
            FakeObserver::onProgress(nDone);
            if (nDone >= 8) {
                *pSeen = linesOf(sFile).size();
            }
        }
        bool wantsStop() override { return *pSeen > 0; }
        std::string sFile;
        std::size_t* pSeen = nullptr;
    } observer;
    observer.sFile = campaign.options.sResultsFile;
    observer.pSeen = &nSeen;
    (void)runCampaign(campaign.definition, campaign.runner, campaign.options, observer);
    EXPECT_GE(nSeen, 4U); // half a second of work may still be on its way
}
