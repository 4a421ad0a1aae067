#include "Unit/Campaign/ResultsFile.h"

#include "tests/unit/campaign/FakeCampaign.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

using testing::AllOf;
using testing::HasSubstr;

namespace
{
template <class TAction> std::string errorOf(const TAction& action)
{
    try {
        action();
        return "none";
    }
    catch (const std::exception& error) {
        return error.what();
    }
}

/** Makes a complete campaign, then tries to go on with another one. */
std::string errorOfOther(const std::string& sValuesOfA, const std::string& sKeys,
                         const std::string& sScenario = "duration_s = 1\n")
{
    FakeCampaign campaign;
    (void)campaign.run();
    FakeCampaign other(sValuesOfA, sKeys);
    other.folder.write("base.toml", sScenario);
    other.options.sResultsFile = campaign.options.sResultsFile;
    return errorOf([&other] { (void)other.run(); });
}

constexpr const char* SAME = "1, 2, 3, 4, 5";
} // namespace

TEST(ResultsFileTest, AnotherCampaignIsRefusedWithWhatDiffers)
{
    EXPECT_THAT(
        errorOfOther(SAME, "seed = 2\n"),
        AllOf(HasSubstr("has results of another campaign: seed was 1 and is 2; name another file with --results")));
    EXPECT_THAT(errorOfOther(SAME, "repeats = 2\n"),
                HasSubstr("number of runs was 20 and is 40; repeats was 1 and is 2"));
    EXPECT_THAT(errorOfOther(SAME, "duration_s = 3\n"), HasSubstr("duration_s was the scenario's and is 3"));
    EXPECT_THAT(errorOfOther("1, 2, 3, 4, 6", ""),
                HasSubstr("parameter 1 was a of 1, 2, 3, 4, 5 and is a of 1, 2, 3, 4, 6"));
    EXPECT_THAT(errorOfOther(SAME, "", "duration_s = 2\n"), HasSubstr("scenario was "));
}

TEST(ResultsFileTest, TitleAndMeasuresMayChange)
{
    EXPECT_EQ(errorOfOther(SAME, "title = \"Other\"\nmeasures = [\"steps\"]\n"), "none");
}

TEST(ResultsFileTest, AnotherShardIsRefused)
{
    FakeCampaign campaign;
    (void)campaign.run();
    campaign.options.shard = {1, 2};
    EXPECT_THAT(errorOf([&] { (void)campaign.run(); }), HasSubstr("it is for all runs, not shard 1/2"));
}

TEST(ResultsFileTest, FilesOfOthersAreRefusedAndLeftAlone)
{
    FakeCampaign campaign;
    const std::string sText(10'000, 'x');
    campaign.folder.write("results.db", sText);
    EXPECT_THAT(errorOf([&] { (void)campaign.run(); }), HasSubstr("is not a results file of opc sweep"));
    EXPECT_EQ(TemporaryFolder::read(campaign.options.sResultsFile), sText);

    campaign.options.sResultsFile = campaign.folder.path("other.db");
    SQLite::Database(campaign.options.sResultsFile, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
        .exec("CREATE TABLE t(x)");
    const std::string sDatabase = TemporaryFolder::read(campaign.options.sResultsFile);
    EXPECT_THAT(errorOf([&] { (void)campaign.run(); }), HasSubstr("is not a results file of opc sweep"));
    EXPECT_EQ(TemporaryFolder::read(campaign.options.sResultsFile), sDatabase);
    EXPECT_THAT(errorOf([&] { (void)ResultsFile::openToRead(campaign.options.sResultsFile); }),
                HasSubstr("is not a results file of opc sweep"));
}

TEST(ResultsFileTest, AnEmptyFileBecomesAResultsFile)
{
    FakeCampaign campaign;
    campaign.folder.write("results.db", "");
    EXPECT_EQ(campaign.run().nDone, 20U);
}

TEST(ResultsFileTest, ASecondProcessIsRefused)
{
    FakeCampaign campaign;
    (void)campaign.run();
    const CampaignDescription description = ResultsFile::openToRead(campaign.options.sResultsFile).description();
    const ResultsFile held = ResultsFile::openForRuns(campaign.options.sResultsFile, description);
    const pid_t process = fork();
    if (process == 0) {
        const std::string sError =
            errorOf([&] { (void)ResultsFile::openForRuns(campaign.options.sResultsFile, description); });
        const std::string sWanted = ": another process is at work on it";
        _exit(sError.find(sWanted) == std::string::npos ? 1 : 0);
    }
    int nStatus = 0;
    ASSERT_EQ(waitpid(process, &nStatus, 0), process);
    EXPECT_EQ(nStatus, 0);
}

TEST(ResultsFileTest, AFinishedFileStandsAlone)
{
    FakeCampaign campaign;
    (void)campaign.run();
    EXPECT_FALSE(std::filesystem::exists(campaign.options.sResultsFile + "-wal"));
    EXPECT_FALSE(std::filesystem::exists(campaign.options.sResultsFile + "-journal"));
}

TEST(ResultsFileTest, AFolderThatIsNotThereIsNamed)
{
    FakeCampaign campaign;
    campaign.options.sResultsFile = "/nowhere/results.db";
    EXPECT_THAT(errorOf([&] { (void)campaign.run(); }),
                HasSubstr("/nowhere/results.db: cannot be written: No such file or directory"));
    EXPECT_THAT(errorOf([&] { (void)ResultsFile::openToRead("/nowhere/results.db"); }), HasSubstr("does not exist"));
}

TEST(ResultsFileTest, RunsAndParametersCanBeAskedForBySql)
{
    FakeCampaign campaign;
    (void)campaign.run();
    SQLite::Database database(campaign.options.sResultsFile);
    EXPECT_EQ(database.execAndGet("SELECT count(*) FROM run WHERE a = 3 AND b > 1 AND status = 'ok'").getInt(), 3);
    EXPECT_EQ(database.execAndGet("SELECT typeof(a) || typeof(b) || typeof(overshoot_db) FROM run").getString(),
              "integerrealnull");
}

TEST(ResultsFileTest, RunsAreAddedAllOrNone)
{
    FakeCampaign campaign;
    campaign.observer.nStopAfter = 0;
    (void)campaign.run();
    const CampaignDescription description = ResultsFile::openToRead(campaign.options.sResultsFile).description();
    ResultsFile file = ResultsFile::openForRuns(campaign.options.sResultsFile, description);
    ResultRow row;
    row.values = planRun(campaign.definition, 0).values;
    EXPECT_NE(errorOf([&] { file.add({row, row}); }), "none"); // the same number twice
    EXPECT_TRUE(linesOf(campaign.options.sResultsFile).empty());
    file.add({row});
    EXPECT_EQ(linesOf(campaign.options.sResultsFile).size(), 1U);
}
