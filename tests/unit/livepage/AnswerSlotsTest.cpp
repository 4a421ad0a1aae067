#include "Unit/LivePage/private/AnswerSlots.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

using std::chrono::milliseconds;

TEST(AnswerSlots, AreThereUntilAllAreTaken)
{
    AnswerSlots slots(2);
    const auto pFirst = slots.take(milliseconds(0));
    auto pSecond = slots.take(milliseconds(0));
    EXPECT_NE(pFirst, nullptr);
    EXPECT_NE(pSecond, nullptr);
    EXPECT_EQ(slots.take(milliseconds(10)), nullptr);
    pSecond.reset();
    EXPECT_NE(slots.take(milliseconds(0)), nullptr);
}

TEST(AnswerSlots, AreWaitedFor)
{
    AnswerSlots slots(1);
    auto pTaken = slots.take(milliseconds(0));
    std::jthread other([&pTaken] {
        std::this_thread::sleep_for(milliseconds(50));
        pTaken.reset();
    });
    EXPECT_NE(slots.take(std::chrono::seconds(10)), nullptr);
}

TEST(AnswerSlots, MayBeGoneBeforeTheLastAnswerIsOut)
{
    std::optional<AnswerSlots> slots(std::in_place, 1);
    auto pTaken = slots->take(milliseconds(0));
    slots.reset();
    pTaken.reset();
    EXPECT_EQ(pTaken, nullptr);
}
