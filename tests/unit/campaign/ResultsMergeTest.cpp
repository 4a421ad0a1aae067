#include "Unit/Campaign/ResultsMerge.h"

#include "Unit/Campaign/ResultsCsv.h"
#include "tests/unit/campaign/FakeCampaign.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <filesystem>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{
/** Remembers how far a merge has come, and stops it after a number of runs. */
class FakeMergeObserver : public IMergeObserver
{
public:
    virtual ~FakeMergeObserver() = default;

    void onProgress(std::uint64_t nDone, std::uint64_t nTotal) override
    {
        nDoneNow = nDone;
        nTotalNow = nTotal;
    }
    bool wantsStop() override { return nDoneNow >= nStopAfter; }

    std::uint64_t nDoneNow = 0;
    std::uint64_t nTotalNow = 0;
    std::uint64_t nStopAfter = ~std::uint64_t{0};
};

/** A campaign of 20 runs of which some shards are done. */
class ResultsMergeTest : public testing::Test
{
protected:
    /** @return the results file of shard nIndex of nCount */
    std::string makeShard(std::uint64_t nIndex, std::uint64_t nCount)
    {
        campaign.options.shard = {nIndex, nCount};
        campaign.options.sResultsFile =
            campaign.folder.path(std::to_string(nIndex) + "-of-" + std::to_string(nCount) + ".db");
        (void)campaign.run();
        return campaign.options.sResultsFile;
    }

    MergeOutcome merge(const std::vector<std::string>& files, bool bPartial = false)
    {
        return mergeResults({files, sOutput, bPartial}, observer);
    }

    std::string errorOf(const std::vector<std::string>& files)
    {
        try {
            (void)merge(files);
            return "none";
        }
        catch (const ConfigurationError& error) {
            return error.what();
        }
    }

    std::string csvOf(const std::string& sResults) const
    {
        const std::string sCsv = campaign.folder.path("runs.csv");
        writeResultsCsv(ResultsFile::openToRead(sResults), sCsv);
        return TemporaryFolder::read(sCsv);
    }

    static void change(const std::string& sResults, const std::string& sSql)
    {
        SQLite::Database(sResults, SQLite::OPEN_READWRITE).exec(sSql);
    }

    /** @return names of the folder's files that have to do with the output */
    std::vector<std::string> outputFiles() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(campaign.folder.path(""))) {
            if (entry.path().filename().string().find("whole") != std::string::npos) {
                names.push_back(entry.path().filename());
            }
        }
        return names;
    }

    FakeCampaign campaign{"1, 2, 13, 4, 5"}; // 13 fails
    FakeMergeObserver observer;
    std::string sOutput = campaign.folder.path("whole.db");
};
} // namespace

TEST_F(ResultsMergeTest, AllShardsComeToTheUndividedCampaign)
{
    const std::string sUndivided = makeShard(1, 1);
    const MergeOutcome outcome = merge({makeShard(3, 3), makeShard(1, 3), makeShard(2, 3)});
    EXPECT_EQ(outcome.nDone, 20U);
    EXPECT_EQ(outcome.nFailed, 4U);
    EXPECT_TRUE(outcome.bWritten);
    EXPECT_EQ(csvOf(sOutput), csvOf(sUndivided));
    EXPECT_THAT(outputFiles(), ElementsAre("whole.db"));
    EXPECT_EQ(observer.nDoneNow, 20U);
    EXPECT_EQ(observer.nTotalNow, 20U);
}

TEST_F(ResultsMergeTest, MissingRunsLeaveNoFileAndAreNamedWithTheCommandThatMakesThem)
{
    const MergeOutcome outcome = merge({makeShard(1, 4), makeShard(3, 4)});
    EXPECT_FALSE(outcome.bWritten);
    EXPECT_EQ(outcome.nDone, 10U);
    EXPECT_THAT(outputFiles(), IsEmpty());
    EXPECT_EQ(missingRunsText(outcome.finished, 3), "1, 3, 5 and 7 more");
    EXPECT_THAT(missingRunsCommands(outcome, sOutput, 10),
                ElementsAre("opc sweep sweep.toml --shard 2/4", "opc sweep sweep.toml --shard 4/4"));
    EXPECT_THAT(missingRunsCommands(outcome, sOutput, 1), ElementsAre("opc sweep sweep.toml --shard 2/4"));
}

TEST_F(ResultsMergeTest, AShardThatIsNotDoneIsNamedWithItsFile)
{
    campaign.observer.nStopAfter = 0;
    const std::string sEmpty = makeShard(2, 2);
    campaign.observer.nStopAfter = ~std::uint64_t{0};
    EXPECT_THAT(missingRunsCommands(merge({makeShard(1, 2), sEmpty}), sOutput, 10),
                ElementsAre("opc sweep sweep.toml --shard 2/2 --results " + sEmpty));
}

TEST_F(ResultsMergeTest, APartialFileIsGoneOnWith)
{
    const std::string sUndivided = makeShard(1, 1);
    const MergeOutcome outcome = merge({makeShard(2, 3)}, true);
    EXPECT_TRUE(outcome.bWritten);
    EXPECT_THAT(missingRunsCommands(outcome, "whole.db", 10), ElementsAre("opc sweep sweep.toml --results whole.db"));
    campaign.options.shard = {};
    campaign.options.sResultsFile = sOutput;
    EXPECT_EQ(campaign.run().nDone, 20U);
    EXPECT_EQ(campaign.observer.nDoneAtStart, 7U);
    EXPECT_EQ(csvOf(sOutput), csvOf(sUndivided));
}

TEST_F(ResultsMergeTest, DivisionsOfOtherNumbersGoTogetherWhereTheyAgree)
{
    const std::string sUndivided = makeShard(1, 1);
    const MergeOutcome some = merge({makeShard(1, 2), makeShard(1, 3)});
    EXPECT_EQ(some.nDone, 13U);
    EXPECT_THAT(missingRunsCommands(some, sOutput, 10), IsEmpty());
    EXPECT_TRUE(merge({makeShard(1, 2), makeShard(1, 3), sUndivided}).bWritten);
    EXPECT_EQ(csvOf(sOutput), csvOf(sUndivided));
}

TEST_F(ResultsMergeTest, TheInputsStayAsTheyAre)
{
    const std::vector<std::string> files = {makeShard(1, 2), makeShard(2, 2)};
    const std::vector<std::string> before = {TemporaryFolder::read(files[0]), TemporaryFolder::read(files[1])};
    (void)merge(files);
    EXPECT_EQ(TemporaryFolder::read(files[0]), before[0]);
    EXPECT_EQ(TemporaryFolder::read(files[1]), before[1]);
}

TEST_F(ResultsMergeTest, FilesThatContradictEachOtherAreRefused)
{
    struct Case
    {
        const char* pChange;
        const char* pError;
    };
    for (const Case& wrong :
         {Case{"UPDATE run SET overshoot_db = 7 WHERE number = 2", "run 2 is another one than in "},
          Case{"UPDATE run SET seed = 7 WHERE number = 4", "seed 7 here and "},
          Case{"UPDATE run SET status = 'failed', error = 'died' WHERE number = 6",
               "run 6 failed here and went well in "},
          Case{"UPDATE run SET error = 'died' WHERE number = 8", "\"died\" here and \"the run failed\" there"}})
    {
        const std::string sUndivided = makeShard(1, 1);
        const std::string sHalf = makeShard(1, 2);
        change(sHalf, wrong.pChange);
        const std::string sError = errorOf({sUndivided, sHalf});
        EXPECT_THAT(sError, HasSubstr(wrong.pError));
        EXPECT_THAT(sError, testing::StartsWith(sHalf + ": "));
        EXPECT_THAT(sError, HasSubstr(sUndivided));
        EXPECT_THAT(outputFiles(), IsEmpty());
        std::filesystem::remove(sHalf);
    }
}

TEST_F(ResultsMergeTest, ARunThatFailedInOneFileIsMadeAgainByTheCommandOfTheError)
{
    const std::string sUndivided = makeShard(1, 1);
    const std::string sHalf = makeShard(1, 2);
    change(sHalf, "UPDATE run SET status = 'failed', error = 'died' WHERE number = 0");
    EXPECT_THAT(
        errorOf({sHalf, sUndivided}),
        HasSubstr("make it again with opc sweep sweep.toml --shard 1/2 --results " + sHalf + " --retry-failed"));
    campaign.options.bRetryFailed = true;
    (void)makeShard(1, 2);
    EXPECT_TRUE(merge({sHalf, sUndivided}).bWritten);
}

TEST_F(ResultsMergeTest, FilesThatDoNotBelongAreRefused)
{
    const std::string sHalf = makeShard(1, 2);
    FakeCampaign other("1, 2", "seed = 5\n");
    (void)other.run();
    EXPECT_THAT(errorOf({sHalf, other.options.sResultsFile}),
                HasSubstr("has results of another campaign than " + sHalf + ": number of runs was 20 and is 8"));
    EXPECT_THAT(errorOf({sHalf, campaign.folder.path("./1-of-2.db")}), HasSubstr("is given twice, as " + sHalf));
    EXPECT_THAT(errorOf({sHalf, campaign.folder.path("absent.db")}), HasSubstr("absent.db: does not exist"));
    EXPECT_THAT(errorOf({campaign.folder.write("text.db", "text")}), HasSubstr("text.db: is not a results file"));
    EXPECT_THAT(outputFiles(), IsEmpty());
}

TEST_F(ResultsMergeTest, AnOutputThatCannotBeIsRefused)
{
    const std::string sHalf = makeShard(1, 2);
    campaign.folder.write("whole.db-wal", "");
    EXPECT_THAT(errorOf({sHalf}), HasSubstr("whole.db-wal: is left of another file"));
    campaign.folder.write("whole.db", "mine");
    EXPECT_THAT(errorOf({sHalf}), HasSubstr("whole.db: exists already"));
    EXPECT_EQ(TemporaryFolder::read(sOutput), "mine");
    sOutput = "/nowhere/whole.db";
    EXPECT_THAT(errorOf({sHalf}), HasSubstr("/nowhere/whole.db: cannot be written: No such file or directory"));
}

TEST_F(ResultsMergeTest, AFileThatASweepIsAtWorkOnIsRefused)
{
    const std::string sHalf = makeShard(1, 2);
    const CampaignDescription description = ResultsFile::openToRead(sHalf).description();
    const ResultsFile held = ResultsFile::openForRuns(sHalf, description);
    EXPECT_THAT(errorOf({sHalf}), HasSubstr("1-of-2.db: another process is at work on it; wait for its end"));
}

TEST_F(ResultsMergeTest, AStopLeavesNothing)
{
    observer.nStopAfter = 3;
    const MergeOutcome outcome = merge({makeShard(1, 1)});
    EXPECT_TRUE(outcome.bStopped);
    EXPECT_FALSE(outcome.bWritten);
    EXPECT_THAT(outputFiles(), IsEmpty());
}

TEST_F(ResultsMergeTest, TheScenarioIsToldFromTheFolderOfTheOutput)
{
    std::filesystem::create_directory(campaign.folder.path("there"));
    sOutput = campaign.folder.path("there/whole.db");
    (void)merge({makeShard(1, 1)});
    EXPECT_EQ(ResultsFile::openToRead(sOutput).description().sScenarioFile, "../base.toml");
}

TEST(MissingRunsText, GathersRanges)
{
    EXPECT_EQ(missingRunsText({false, false, true, false, true, false, false, false}, 10), "0-1, 3, 5-7");
    EXPECT_EQ(missingRunsText({false, false, true, false, true, false, false, false}, 1), "0-1 and 4 more");
    EXPECT_EQ(missingRunsText({true, true}, 1), "");
}
