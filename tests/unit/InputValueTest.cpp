#include "Unit/Process/InputValue.h"

#include <gtest/gtest.h>

TEST(InputValue, IsTheUnitFilesWhereTheProfileSaysNothing)
{
    InputValue input(7.5);
    EXPECT_EQ(input.value(), 7.5);
    EXPECT_EQ(input.next(std::nullopt), 7.5);
    EXPECT_EQ(input.source(), EInputSource::Constant);
    EXPECT_EQ(input.next(3.0), 3.0);
    EXPECT_EQ(input.source(), EInputSource::Profile);
}

TEST(InputValue, IsWhatWasSetUntilReleased)
{
    InputValue input(7.5);
    input.set(1.0);
    EXPECT_EQ(input.next(3.0), 1.0);
    EXPECT_EQ(input.source(), EInputSource::Set);
    EXPECT_EQ(input.next(std::nullopt), 1.0);
    input.release();
    EXPECT_EQ(input.next(3.0), 3.0);
    EXPECT_EQ(input.source(), EInputSource::Profile);
}
