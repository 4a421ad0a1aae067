#include "Unit/Recorder/private/Retention.h"

#include "Unit/Recorder/private/RecordingSchema.h"
#include "Unit/Recorder/private/RecordingWriter.h"
#include "tests/unit/recorder/RecordedSteps.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{
constexpr std::uint64_t ONE_SECOND_US = 1'000'000;
constexpr std::uint64_t ONE_HOUR_US = 3600 * ONE_SECOND_US;
constexpr std::int64_t NOTHING_BUT_JOURNAL_MB = JOURNAL_BYTES / 1'000'000;

std::vector<StepSample> stepsEvery(std::uint64_t nEveryUs, std::uint64_t nLengthUs)
{
    std::vector<StepSample> made;
    for (std::uint64_t nTimeUs = 0; nTimeUs < nLengthUs; nTimeUs += nEveryUs) {
        made.push_back(makeStep(nTimeUs));
    }
    return made;
}

class RetentionTest : public testing::Test
{
protected:
    RetentionTest()
    {
        m_database.exec("PRAGMA synchronous = OFF"); // these files need not last
        m_configuration.stepsHours = 1.0;
        m_configuration.secondsHours = 4.0;
        m_configuration.minutesDays = 0.25;
    }

    /** Adds a run with steps, and an event at the time of each. */
    void add(const std::vector<StepSample>& steps, std::int64_t nStartedUnixUs = STARTED_UNIX_US)
    {
        RecordedRun run = makeRun();
        run.nStartedUnixUs = nStartedUnixUs;
        SQLite::Transaction transaction(m_database);
        FeedBatch batch;
        batch.samples = steps;
        for (const StepSample& step : steps) {
            batch.events.emplace_back();
            batch.events.back().nTimeUs = step.nTimeUs;
        }
        m_now.nRun = addRun(m_database, run);
        m_now.nStartedUnixUs = nStartedUnixUs;
        m_now.nTimeUs = steps.empty() ? 0 : static_cast<std::int64_t>(steps.back().nTimeUs);
        RecordingWriter(m_database, m_now.nRun).write(batch);
        transaction.commit();
    }

    void apply(int nTimes)
    {
        const Retention retention(m_configuration);
        for (int nTime = 0; nTime < nTimes; ++nTime) {
            SQLite::Transaction transaction(m_database);
            retention.apply(m_database, m_now);
            transaction.commit();
        }
    }

    std::int64_t ask(const std::string& sQuery) { return m_database.execAndGet(sQuery).getInt64(); }

    std::int64_t usedBytes()
    {
        return (ask("PRAGMA page_count") - ask("PRAGMA freelist_count")) * ask("PRAGMA page_size");
    }

    TemporaryFolder m_folder;
    RecorderConfiguration m_configuration;
    SQLite::Database m_database = openToRecord(m_folder.path("unit.db"));
    RecordingMoment m_now;
};
} // namespace

TEST_F(RetentionTest, LetsEachKindOfRowsGoWhenItIsOldEnough)
{
    add(stepsEvery(10 * ONE_SECOND_US, 10 * ONE_HOUR_US + ONE_SECOND_US)); // the last at ten hours
    apply(4000);
    EXPECT_EQ(ask("SELECT min(time_us) FROM step"), 9 * ONE_HOUR_US);
    EXPECT_EQ(ask("SELECT min(time_us) FROM second"), 6 * ONE_HOUR_US);
    EXPECT_EQ(ask("SELECT min(time_us) FROM minute"), 4 * ONE_HOUR_US);
    EXPECT_EQ(ask("SELECT min(time_us) FROM event"), 4 * ONE_HOUR_US);
    EXPECT_EQ(ask("SELECT max(time_us) FROM step"), 10 * ONE_HOUR_US);
}

TEST_F(RetentionTest, TakesOutAPartAtATime)
{
    add(stepsEvery(ONE_SECOND_US, 2 * ONE_HOUR_US));
    apply(1);
    EXPECT_EQ(ask("SELECT min(time_us) FROM step"), 10 * ONE_SECOND_US);
    apply(1);
    EXPECT_EQ(ask("SELECT min(time_us) FROM step"), 20 * ONE_SECOND_US);
}

TEST_F(RetentionTest, TakesOutOldRunsWithTheirFilesButNeverTheOneThatGoesOn)
{
    add(stepsEvery(60 * ONE_SECOND_US, ONE_HOUR_US));
    add({}, STARTED_UNIX_US + 8 * static_cast<std::int64_t>(ONE_HOUR_US));
    ASSERT_EQ(ask("SELECT count(*) FROM run"), 2);
    apply(400);
    EXPECT_EQ(ask("SELECT min(id) FROM run"), 2);
    EXPECT_EQ(ask("SELECT count(*) FROM file WHERE run = 1"), 0);
    EXPECT_EQ(ask("SELECT count(*) FROM channel"), 2);
    EXPECT_EQ(ask("SELECT count(*) FROM content"), 2);
}

TEST_F(RetentionTest, LetsTheOldestStepsGoFirstWhenTheFileIsTooLarge)
{
    m_configuration.maxMb = NOTHING_BUT_JOURNAL_MB + 2;
    add(stepsEvery(100'000, ONE_HOUR_US)); // 36,000 steps and 3,600 seconds
    ASSERT_GT(usedBytes(), 4'000'000);
    apply(20);
    EXPECT_LE(usedBytes(), 2'000'000);
    EXPECT_GT(ask("SELECT min(time_us) FROM step"), 1800 * ONE_SECOND_US);
    EXPECT_EQ(ask("SELECT min(time_us) FROM second"), 0);
    EXPECT_EQ(ask("PRAGMA page_count") * ask("PRAGMA page_size") <= 2'000'000, true) << "pages are given back";
}

TEST_F(RetentionTest, KeepsTheLastMinuteOfStepsHoweverSmallTheFileShouldBe)
{
    m_configuration.maxMb = NOTHING_BUT_JOURNAL_MB;
    add(stepsEvery(100'000, ONE_HOUR_US));
    apply(100);
    EXPECT_EQ(ask("SELECT min(time_us) FROM step"), m_now.nTimeUs - 60 * static_cast<std::int64_t>(ONE_SECOND_US));
    EXPECT_EQ(ask("SELECT count(*) FROM second"), 3600);
}

TEST(RetentionOfRecorder, UsesFreedPagesAgain)
{
    const TemporaryFolder folder;
    RecorderConfiguration configuration = recorderOf(folder.path("unit.db"));
    configuration.maxMb = NOTHING_BUT_JOURNAL_MB + 1;
    record(configuration, stepsEvery(6000, 1200 * ONE_SECOND_US)); // 200,000 steps, which would take 17 MB
    EXPECT_LT(std::filesystem::file_size(folder.path("unit.db")), 5'000'000U);
    const auto times = Recording(folder.path("unit.db")).times(EResolution::Steps, 1);
    ASSERT_TRUE(times);
    EXPECT_EQ(times->nLastUs, 1200 * ONE_SECOND_US - 6000);
}
