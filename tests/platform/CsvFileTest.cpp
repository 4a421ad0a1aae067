#include "Platform/Csv/CsvFile.h"

#include "tests/platform/TestFile.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ConfigurationErrorTest, NamesFileAndLine)
{
    EXPECT_STREQ(ConfigurationError::atLine("unit.toml", 12, "is wrong").what(), "unit.toml:12: is wrong");
    EXPECT_STREQ(ConfigurationError::atLine("unit.toml", 0, "is wrong").what(), "unit.toml: is wrong");
}

TEST(CsvFile, ReadsRowsAndTheirLines)
{
    const TestFile content("time,power\n# a comment, with a comma\n\n1,2\n   \n3,4");
    const CsvFile file(content.path());
    EXPECT_EQ(file.path(), content.path());
    ASSERT_EQ(file.rows().size(), 3U);
    EXPECT_THAT(file.rows()[0].fields, ElementsAre("time", "power"));
    EXPECT_EQ(file.rows()[0].nLine, 1U);
    EXPECT_THAT(file.rows()[1].fields, ElementsAre("1", "2"));
    EXPECT_EQ(file.rows()[1].nLine, 4U);
    EXPECT_THAT(file.rows()[2].fields, ElementsAre("3", "4"));
    EXPECT_EQ(file.rows()[2].nLine, 6U);
}

TEST(CsvFile, ReadsEveryKindOfLineEnd)
{
    const TestFile content("\xEF\xBB\xBF"
                           "1,2\r\n#x\r\n\r\n3,4\r5,6\n\r\n7\r\n");
    const CsvFile file(content.path());
    ASSERT_EQ(file.rows().size(), 4U);
    EXPECT_THAT(file.rows()[0].fields, ElementsAre("1", "2"));
    EXPECT_EQ(file.rows()[1].nLine, 4U);
    EXPECT_THAT(file.rows()[2].fields, ElementsAre("5", "6"));
    EXPECT_EQ(file.rows()[2].nLine, 5U);
    EXPECT_EQ(file.rows()[3].nLine, 7U);
}

TEST(CsvFile, ReadsQuotedFields)
{
    const TestFile content(" a b ,\t\"c, d\" ,\"say \"\"so\"\"\",\n\"two\n#lines\",x\nend\n");
    const CsvFile file(content.path());
    ASSERT_EQ(file.rows().size(), 3U);
    EXPECT_THAT(file.rows()[0].fields, ElementsAre("a b", "c, d", "say \"so\"", ""));
    EXPECT_THAT(file.rows()[1].fields, ElementsAre("two\n#lines", "x"));
    EXPECT_EQ(file.rows()[1].nLine, 2U);
    EXPECT_THAT(file.rows()[2].fields, ElementsAre("end"));
    EXPECT_EQ(file.rows()[2].nLine, 4U);
}

TEST(CsvFile, FindsColumnsByTheirNames)
{
    const TestFile content("# sweep\ntime, power ,Power\n1,2,3\n");
    const CsvFile file(content.path());
    EXPECT_EQ(file.column("time"), 0U);
    EXPECT_EQ(file.column("power"), 1U);
    EXPECT_EQ(file.column("Power"), 2U);
    EXPECT_EQ(file.column("1"), std::nullopt);
    const TestFile nothing("");
    EXPECT_EQ(CsvFile(nothing.path()).column("time"), std::nullopt);
}

TEST(CsvFile, RefusesAColumnThatIsThereTwice)
{
    const TestFile content("\npower,time,power\n1,2,3\n");
    const CsvFile file(content.path());
    EXPECT_EQ(file.column("time"), 1U);
    EXPECT_EQ(errorOf([&file] { file.column("power"); }),
              content.path() + ":2: column power is there twice; take one of them out");
}

TEST(CsvFile, ReadsFilesWithoutRows)
{
    for (const char* const pContent : {"", "\n\n", "# nothing", "\xEF\xBB\xBF", " \t"}) {
        const TestFile content(pContent);
        EXPECT_THAT(CsvFile(content.path()).rows(), IsEmpty());
    }
}

TEST(CsvFile, TellsWhereAFileIsNotCsv)
{
    const std::string sInside = " a quotation mark stands inside a field; put the whole field in quotation marks and "
                                "write those inside it twice";
    const struct
    {
        std::string sContent;
        std::string sError;
    } cases[] = {
        {"1,2\n3,a\"b\n", ":2:" + sInside},
        {"1,2\n\n\"a\"b,3\n", ":3:" + sInside},
        {"1,2\n3,\"a\n\n4,5\n",
         ":2: a quoted field of the row that begins here has no end; add the closing quotation mark"},
        {std::string("1,2\n3,\0004\n", 9), ":2: holds a NUL byte; save the file as plain text in UTF-8"},
        {std::string("1,2\n#\0\n", 7), ":2: holds a NUL byte; save the file as plain text in UTF-8"},
    };
    for (const auto& bad : cases) {
        const TestFile content(bad.sContent);
        EXPECT_EQ(errorOf([&content] { const CsvFile file(content.path()); }), content.path() + bad.sError);
    }
}

TEST(CsvFile, TellsThatAFileCannotBeRead)
{
    EXPECT_EQ(errorOf([] { const CsvFile file("/tmp/no/such.csv"); }),
              "/tmp/no/such.csv: cannot be read (No such file or directory); give the path of a file that this user "
              "may read");
}

TEST(CsvFile, ReadsNumbers)
{
    const TestFile content("-3.5,0,1e3,\" 2.25\",.5\n");
    const CsvFile file(content.path());
    const CsvRow& row = file.rows().front();
    EXPECT_EQ(file.number(row, 0), -3.5);
    EXPECT_EQ(file.number(row, 1), 0.0);
    EXPECT_EQ(file.number(row, 2), 1000.0);
    EXPECT_EQ(file.number(row, 4), 0.5);
}

TEST(CsvFile, ReadsIntegers)
{
    const TestFile content("-2147483648,2147483647,0,\"7\"\n");
    const CsvFile file(content.path());
    const CsvRow& row = file.rows().front();
    EXPECT_EQ(file.integer(row, 0), INT32_MIN);
    EXPECT_EQ(file.integer(row, 1), INT32_MAX);
    EXPECT_EQ(file.integer(row, 2), 0);
    EXPECT_EQ(file.integer(row, 3), 7);
}

TEST(CsvFile, TellsWhatIsNotANumber)
{
    for (const char* const pField : {"abc", "inf", "-inf", "nan", "infinity", "3.5 dB", "0x10", "1,", "--1", "+", ""}) {
        const std::string sField = std::string(pField).substr(0, std::string(pField).find(','));
        if (sField == "1") {
            continue;
        }
        const TestFile content("# power\n1,2," + sField + "\n");
        const CsvFile file(content.path());
        EXPECT_EQ(errorOf([&file] { file.number(file.rows().front(), 2); }),
                  content.path() + ":2: column 3: '" + sField +
                      "' is not a number; write a decimal number such as -3.5");
    }
}

TEST(CsvFile, TellsWhatIsNotAnInteger)
{
    const std::string sNoInteger = " is not an integer; write a whole number such as -350";
    const std::string sTooLarge = " does not fit 32 bits; write a number from -2147483648 to 2147483647";
    const struct
    {
        std::string sField;
        std::string sError;
    } cases[] = {{"abc", "'abc'" + sNoInteger},
                 {"3.5", "'3.5'" + sNoInteger},
                 {"7 dB", "'7 dB'" + sNoInteger},
                 {"1e3", "'1e3'" + sNoInteger},
                 {"\"1\n2\"", "'1?2'" + sNoInteger},
                 {"2147483648", "'2147483648'" + sTooLarge},
                 {"-2147483649", "'-2147483649'" + sTooLarge},
                 {"99999999999999999999x", "'99999999999999999999x'" + sNoInteger},
                 {std::string(50, 'x'), "'" + std::string(40, 'x') + "...'" + sNoInteger},
                 {std::string(39, 'x') + "\xC3\xA4", "'" + std::string(39, 'x') + "...'" + sNoInteger}};
    for (const auto& bad : cases) {
        const TestFile content("1\n" + bad.sField + "\n");
        const CsvFile file(content.path());
        EXPECT_EQ(errorOf([&file] { file.integer(file.rows()[1], 0); }),
                  content.path() + ":2: column 1: " + bad.sError);
    }
}

TEST(CsvFile, TellsThatANumberIsBeyondItsRange)
{
    const TestFile content("1e999\n");
    const CsvFile file(content.path());
    EXPECT_EQ(errorOf([&file] { file.number(file.rows().front(), 0); }),
              content.path() + ":1: column 1: '1e999' is too large or too small; write a decimal number such as -3.5");
}

TEST(CsvFile, TellsThatAFieldIsMissing)
{
    const TestFile content("1,2\n");
    const CsvFile file(content.path());
    const std::string sError = content.path() + ":1: column 3: is missing in a row of 2; add a value";
    EXPECT_EQ(errorOf([&file] { file.number(file.rows().front(), 2); }), sError);
    EXPECT_EQ(errorOf([&file] { file.integer(file.rows().front(), 2); }), sError);
}

TEST(CsvFile, KnowsWhereFieldsStand)
{
    const TestFile content("\xC3\xA4,b\n\n \"x,y\" ,\t\"two\nlines\",z\n1,\n");
    const CsvFile file(content.path());
    const struct
    {
        std::size_t nRow;
        std::vector<std::vector<std::size_t>> places; // line and column, the end of the row last
    } cases[] = {{0, {{1, 1}, {1, 3}, {1, 4}}}, {1, {{3, 2}, {3, 10}, {4, 8}, {4, 9}}}, {2, {{5, 1}, {5, 3}, {5, 3}}}};
    ASSERT_EQ(file.rows().size(), std::size(cases));
    for (const auto& row : cases) {
        std::vector<CsvPlace> places = file.rows()[row.nRow].places;
        EXPECT_EQ(places.size(), file.rows()[row.nRow].fields.size());
        places.push_back(file.rows()[row.nRow].end);
        std::vector<std::vector<std::size_t>> found(places.size());
        std::transform(places.begin(), places.end(), found.begin(), [](const CsvPlace& place) {
            return std::vector<std::size_t>{place.nLine, place.nColumn};
        });
        EXPECT_EQ(found, row.places) << row.nRow;
    }
}

TEST(CsvFile, TellsTheCharacterWhereAFileBreaksStrictRules)
{
    const std::string sLineEnds = "; end every line by LF, or every line by CRLF";
    const std::string sMark = ":1:1: begins with a byte-order mark; save the file as UTF-8 without one";
    const struct
    {
        std::string sContent;
        std::string sError;
    } cases[] = {
        {"\xEF\xBB\xBF", sMark},
        {"\xFF\xFE"
         "1",
         sMark},
        {"\xFE\xFF"
         "1",
         sMark},
        {"a,b\r\n1,2\r\n\r\n3,4\n", ":4:4: the line ends by LF, those before by CRLF" + sLineEnds},
        {"a,b\n1,2\n\r\n", ":3:1: the line ends by CRLF, those before by LF" + sLineEnds},
        {"a,b\n\"1\r\n\",2\n", ":2:3: the line ends by CRLF, those before by LF" + sLineEnds},
        {"a,b\r", ":1:4: a CR stands without an LF" + sLineEnds},
        {"a,b\n1\r,2\n", ":2:2: a CR stands without an LF" + sLineEnds},
        {"a,b\r\r\n", ":1:4: a CR stands without an LF" + sLineEnds},
        {"\xC3\xA4,b\n\xC3\xA4,\n", ":2:3: column b: is empty; add a value"},
        {"a,b\n\"\",2\n", ":2:1: column a: is empty; add a value"},
        {"a,\n1,2\n", ":1:3: column 2: is empty; add a value"},
        {"a,b,c\n1\n", ":2:2: column b: is missing in a row of 1; add a value"},
        {"a,b\n1,2,\n",
         ":2:5: '' is field 3 of a row that may have 2, as the first row has; take it out or name its column"},
        {"a,b\n\"1\n\",2,3\n",
         ":3:5: '3' is field 3 of a row that may have 2, as the first row has; take it out or name its column"},
        {std::string("a,b\n1,\0\n", 8), ":2:3: holds a NUL byte; save the file as plain text in UTF-8"},
        {"a,b\n1,2\"3\n", ":2:4: a quotation mark stands inside a field; put the whole field in quotation marks and "
                          "write those inside it twice"},
        {"a,b\n 1,\"2\n", ":2:2: a quoted field of the row that begins here has no end; add the closing quotation "
                          "mark"},
    };
    for (const auto& bad : cases) {
        const TestFile content(bad.sContent);
        EXPECT_EQ(errorOf([&content] { const CsvFile file(content.path(), ECsvRules::Strict); }),
                  content.path() + bad.sError);
    }
}

TEST(CsvFile, NamesTheColumnOfAValueThatStrictRulesRefuse)
{
    const TestFile content("time,\"po\nwer\",time\nnow, x,1.5\n");
    const CsvFile file(content.path(), ECsvRules::Strict);
    const CsvRow& row = file.rows()[1];
    EXPECT_EQ(errorOf([&] { file.number(row, 0); }),
              content.path() + ":3:1: column time: 'now' is not a number; write a decimal number such as -3.5");
    EXPECT_EQ(errorOf([&] { file.number(row, 1); }),
              content.path() + ":3:6: column po?wer: 'x' is not a number; write a decimal number such as -3.5");
    EXPECT_EQ(errorOf([&] { file.integer(row, 2); }),
              content.path() + ":3:8: column time: '1.5' is not an integer; write a whole number such as -350");
    EXPECT_EQ(errorOf([&] { file.column("time"); }),
              content.path() + ":2:6: column time is there twice; take one of them out");
}

} // namespace
