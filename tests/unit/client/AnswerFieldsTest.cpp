#include "Unit/Client/private/AnswerFields.h"

#include "Unit/Text/OneLine.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

using nlohmann::ordered_json;

TEST(AnswerFields, ShowsNumbersWithTheirDecimals)
{
    struct Case
    {
        ordered_json value;
        const char* pTwoDecimals;
        const char* pPlain;
    };
    const std::vector<Case> cases = {
        {1.0, "1.00", "1"},     {-0.001, "0.00", "-0.001"},           {-0.006, "-0.01", "-0.006"},
        {40, "40.00", "40"},    {5e9, "5000000000.00", "5000000000"}, {"text", "text", "text"},
        {true, "true", "true"}, {{1, 2}, "[1,2]", "[1,2]"},           {"a\x1b[2J\nb", "a [2J b", "a [2J b"},
    };
    for (const Case& value : cases) {
        const ordered_json object = {{"Member", value.value}};
        const AnswerFields fields(object, "-");
        EXPECT_EQ(fields.number("Member", 2), value.pTwoDecimals);
        EXPECT_EQ(fields.plain("Member"), value.pPlain);
    }
}

TEST(AnswerFields, ShowsHundredthsInDecibels)
{
    struct Case
    {
        ordered_json value;
        const char* pPower;
        const char* pProgramPower;
        const char* pGain;
    };
    const std::vector<Case> cases = {
        {-5, "-0.05", "-0.05", "-0.05"},
        {3995, "39.95", "39.95", "39.95"},
        {0, "0.00", "0.00", "0.00"},
        {-9900, "off", "", "-99.00"},
        {-10000, "unknown", "", "-100.00"},
        {"odd", "odd", "odd", "odd"},
        {-9901, "-99.01", "-99.01", "-99.01"},
        {std::numeric_limits<int>::min(), "-21474836.48", "-21474836.48", "-21474836.48"},
    };
    for (const Case& value : cases) {
        const ordered_json object = {{"Member", value.value}};
        EXPECT_EQ(AnswerFields(object, "-").power("Member"), value.pPower);
        EXPECT_EQ(AnswerFields(object, "").power("Member"), value.pProgramPower);
        EXPECT_EQ(AnswerFields(object, "").gain("Member"), value.pGain);
    }
}

TEST(AnswerFields, ShowsWhatIsMissingAsSuch)
{
    for (const ordered_json& object :
         {ordered_json::object(), ordered_json(5), ordered_json::array({1}), ordered_json()}) {
        const AnswerFields fields(object, "-");
        EXPECT_FALSE(fields.has("Member"));
        EXPECT_EQ(fields.plain("Member"), "-");
        EXPECT_EQ(fields.number("Member", 1), "-");
        EXPECT_EQ(fields.power("Member"), "-");
        EXPECT_EQ(fields.gain("Member"), "-");
    }
}

TEST(AnswerFields, FindsArraysOrSaysWhichIsMissing)
{
    const ordered_json answer = {{"List", {1, 2}}, {"Number", 5}};
    EXPECT_EQ(arrayOf(answer, "List").size(), 2U);
    for (const char* pMember : {"Number", "Other"}) {
        try {
            (void)arrayOf(answer, pMember);
            FAIL() << pMember;
        }
        catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find(pMember), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW((void)arrayOf(ordered_json(5), "List"), std::runtime_error);
}

TEST(OneLine, MakesTextSafeToShow)
{
    EXPECT_EQ(oneLine(""), "");
    EXPECT_EQ(oneLine(" \r\n "), "");
    EXPECT_EQ(oneLine(" a\r\n\tb \x7f c "), "a b c");
    EXPECT_EQ(oneLine("\x1b]0;title\x07"), "]0;title");
    EXPECT_EQ(oneLine("a\xc2\x9b"
                      "2J\xc2\x80"),
              "a 2J");
    EXPECT_EQ(oneLine("1\xc2\xb5s\xc2"), "1\xc2\xb5s\xc2");
    EXPECT_EQ(oneLine("gr\xc3\xbcn"), "gr\xc3\xbcn");
}

TEST(OneLine, CutsBetweenCharacters)
{
    EXPECT_EQ(oneLine("abcd", 4), "abcd");
    EXPECT_EQ(oneLine("abcde", 4), "abcd...");
    EXPECT_EQ(oneLine("ab\xc3\xbc", 3), "ab...");
    EXPECT_EQ(oneLine("ab\xc3\xbcx", 4), "ab\xc3\xbc...");
    EXPECT_EQ(oneLine("--set \xa7\xa7\xa7\xa7\xa7\xa7", 11), "--set \xa7\xa7\xa7\xa7\xa7...") << "no character at all";
}
