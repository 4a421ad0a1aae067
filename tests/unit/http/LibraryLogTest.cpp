#include "Unit/Http/private/LibraryLog.h"

#include <gtest/gtest.h>

TEST(LibraryLog, TellsTheStatusOfAnAnswerThatTheLibraryGave)
{
    EXPECT_EQ(turnedAwayText("Error processing request (HTTP response code is 431 ('<html>..</html>')). Closing.\n"),
              "malformed request refused with status 431");
}

TEST(LibraryLog, PassesOnWhatTellsOfLackingRoom)
{
    EXPECT_EQ(turnedAwayText("Error accepting connection: Too many open files\n"),
              "Error accepting connection: Too many open files");
}

TEST(LibraryLog, KeepsQuietAboutTheRest)
{
    EXPECT_EQ(turnedAwayText("Socket has been disconnected when reading request.\n"), std::nullopt);
    EXPECT_EQ(turnedAwayText(""), std::nullopt);
}
