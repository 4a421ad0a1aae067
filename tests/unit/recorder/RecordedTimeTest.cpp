#include "Unit/Recorder/RecordedTime.h"

#include "Unit/Text/IsoTime.h"
#include "tests/unit/recorder/RecordedSteps.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
struct Text
{
    const char* pText;
    std::optional<std::int64_t> nTimeUs;
};
} // namespace

TEST(RecordedTime, IsReadAsSecondsOfTheRunOrAsATimeOfDay)
{
    const std::vector<Text> texts = {
        {"0", 0},
        {"12.5", 12'500'000},
        {"-3", -3'000'000},
        {"2026-11-21T15:00:00Z", 0},
        {"2026-11-21 15:00", 0},
        {"2026-11-21T15:00:01.25", 1'250'000},
        {"2026-11-21T15:00:01.123456789Z", 1'123'456},
        {"2026-11-21T16:30:00+01:30", 0},
        {"2026-11-21T14:00:00-0100", 0},
        {"2026-11-20T15:00Z", -86'400'000'000},
        {"", std::nullopt},
        {"12.5s", std::nullopt},
        {"nan", std::nullopt},
        {"1e300", std::nullopt},
        {"2026-11-21", std::nullopt},
        {"2026-02-30T15:00Z", std::nullopt},
        {"2026-11-21T24:00Z", std::nullopt},
        {"2026-11-21T15:60Z", std::nullopt},
        {"2026-11-21T15:00:00.Z", std::nullopt},
        {"2026-11-21T15:00:00Zulu", std::nullopt},
    };
    for (const Text& text : texts) {
        EXPECT_EQ(parseRunTime(text.pText, STARTED_UNIX_US), text.nTimeUs) << text.pText;
    }
}

TEST(RecordedTime, IsWrittenToTheMicrosecond)
{
    EXPECT_EQ(isoTime(STARTED_UNIX_US), "2026-11-21T15:00:00.000000Z");
    EXPECT_EQ(isoTime(STARTED_UNIX_US - 1), "2026-11-21T14:59:59.999999Z");
    EXPECT_EQ(isoTime(0), "1970-01-01T00:00:00.000000Z");
}
