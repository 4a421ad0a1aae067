#include "Unit/Clock/DeadlineSchedule.h"
#include "Unit/Clock/DeadlineTimer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ostream>
#include <thread>

namespace
{
constexpr std::int64_t START_NS = 5'000'000'000;
constexpr std::int64_t INTERVAL_NS = 6'000'000;

struct Advance
{
    const char* pWhat;
    std::int64_t nNowNs; // after the first deadline
    std::uint64_t nIndex;
    std::uint64_t nSkipped;
};

void PrintTo(const Advance& advance, std::ostream* pStream)
{
    *pStream << advance.pWhat;
}

class DeadlineAdvance : public testing::TestWithParam<Advance>
{
};
} // namespace

TEST_P(DeadlineAdvance, GoesToTheFirstDeadlineThatHasNotPassed)
{
    DeadlineSchedule schedule(START_NS, INTERVAL_NS);
    EXPECT_EQ(schedule.deadlineNs(), START_NS);
    EXPECT_EQ(schedule.advance(START_NS + GetParam().nNowNs), GetParam().nSkipped);
    EXPECT_EQ(schedule.index(), GetParam().nIndex);
    EXPECT_EQ(schedule.deadlineNs(), START_NS + static_cast<std::int64_t>(GetParam().nIndex) * INTERVAL_NS);
}

INSTANTIATE_TEST_SUITE_P(Times, DeadlineAdvance,
                         testing::Values(Advance{"AtOnce", 0, 1, 0}, Advance{"BeforeTheStart", -1, 1, 0},
                                         Advance{"InTime", 1'000'000, 1, 0}, Advance{"JustInTime", INTERVAL_NS, 1, 0},
                                         Advance{"JustTooLate", INTERVAL_NS + 1, 2, 1},
                                         Advance{"OnTheSecond", 2 * INTERVAL_NS, 2, 1},
                                         Advance{"FarTooLate", 1000 * INTERVAL_NS + 1, 1001, 1000}),
                         [](const auto& information) { return std::string(information.param.pWhat); });

TEST(DeadlineSchedule, NeverBunchesCallsAfterALateOne)
{
    DeadlineSchedule schedule(0, INTERVAL_NS);
    std::int64_t nNowNs = 10 * INTERVAL_NS + INTERVAL_NS / 2; // the first step took ten and a half intervals
    EXPECT_EQ(schedule.advance(nNowNs), 10U);
    EXPECT_EQ(schedule.deadlineNs(), 11 * INTERVAL_NS);
    nNowNs = 11 * INTERVAL_NS + 1000;
    EXPECT_EQ(schedule.advance(nNowNs), 0U);
    EXPECT_EQ(schedule.deadlineNs(), 12 * INTERVAL_NS);
}

TEST(DeadlineSchedule, GoesOnAtANewIntervalFromTheCurrentDeadline)
{
    DeadlineSchedule schedule(START_NS, INTERVAL_NS);
    schedule.advance(START_NS);
    schedule.setInterval(1'000'000);
    EXPECT_EQ(schedule.elapsedNs(), INTERVAL_NS);
    EXPECT_EQ(schedule.advance(START_NS + INTERVAL_NS), 0U);
    EXPECT_EQ(schedule.elapsedNs(), INTERVAL_NS + 1'000'000);
    EXPECT_EQ(schedule.advance(START_NS + INTERVAL_NS + 3'500'000), 2U);
    EXPECT_EQ(schedule.elapsedNs(), INTERVAL_NS + 4'000'000);
    EXPECT_EQ(schedule.index(), 5U);
}

TEST(DeadlineTimer, WaitsOutItsIntervals)
{
    const auto begin = std::chrono::steady_clock::now();
    DeadlineTimer timer(std::chrono::milliseconds(2));
    std::uint64_t nSkipped = 0;
    while (timer.index() < 20) {
        timer.wait();
        EXPECT_GE(timer.latenessNs(), 0);
        nSkipped += timer.next();
    }
    timer.wait();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(40));
    EXPECT_EQ(timer.statistics().count(), timer.index() + 1 - nSkipped);
}

TEST(DeadlineTimer, SkipsWhatPassedDuringALongStep)
{
    DeadlineTimer timer(std::chrono::milliseconds(5));
    timer.wait();
    std::this_thread::sleep_for(std::chrono::milliseconds(22));
    const std::uint64_t nSkipped = timer.next();
    EXPECT_GE(nSkipped, 4U);
    EXPECT_EQ(timer.index(), nSkipped + 1);
}
