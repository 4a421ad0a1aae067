#include "Unit/Client/private/OutputText.h"

#include <gtest/gtest.h>

TEST(FitToScreen, CutsLinesAndTheirNumber)
{
    EXPECT_EQ(fitToScreen("abcdef\nab\n\nlast\n", 3, 4), "abcd\nab\n\n");
    EXPECT_EQ(fitToScreen("abcd\n", 3, 4), "abcd\n");
    EXPECT_EQ(fitToScreen("abc", 3, 2), "ab");
    EXPECT_EQ(fitToScreen("abc\n", 0, 2), "");
}

TEST(FitToScreen, CountsCharactersAndNotBytes)
{
    EXPECT_EQ(fitToScreen("\xc3\xbc\xc3\xbc\xc3\xbc\n", 1, 2), "\xc3\xbc\xc3\xbc\n");
}
