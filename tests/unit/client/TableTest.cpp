#include "Unit/Text/Table.h"

#include <gtest/gtest.h>

TEST(Table, AlignsTheFirstColumnLeftAndTheOthersRight)
{
    EXPECT_EQ(alignedText({{"name", "v", "long"}, {{"a", "1", "2"}, {"longer", "100", ""}}}), "name      v  long\n"
                                                                                              "a         1     2\n"
                                                                                              "longer  100\n");
}

TEST(Table, AlignsCharactersAndNotBytes)
{
    EXPECT_EQ(alignedText({{"x", "y"}, {{"gr\xc3\xbcn", "1"}}}), "x     y\ngr\xc3\xbcn  1\n");
}

TEST(Table, WithoutRowsIsItsHeading)
{
    EXPECT_EQ(alignedText({{"a", "b"}, {}}), "a  b\n");
}

TEST(Csv, QuotesWhereItMust)
{
    EXPECT_EQ(csvLine({"a", "1.5", ""}), "a,1.5,\n");
    EXPECT_EQ(csvLine({"", "a"}), ",a\n");
    EXPECT_EQ(csvLine({"a,b", "say \"x\"", "two\nlines"}), "\"a,b\",\"say \"\"x\"\"\",\"two\nlines\"\n");
}
