#include "Unit/Client/private/ArgumentChecks.h"

#include <gtest/gtest.h>

namespace
{
/** An option of a program, checked in some way. */
class CheckedOption : public testing::Test
{
protected:
    bool takes(const std::string& sText)
    {
        std::vector<std::string> arguments = {sText, "--value"}; // taken from the back
        try {
            m_app.parse(arguments);
            return true;
        }
        catch (const CLI::ParseError&) {
            return false;
        }
    }

    CLI::App m_app;
    CLI::Option& m_option = *m_app.add_option("--value", "A value");
};
} // namespace

TEST_F(CheckedOption, TakesItsWordsOnly)
{
    onlyWords(m_option, {"on", "off"});
    EXPECT_EQ(m_option.get_type_name(), "{on,off}");
    EXPECT_TRUE(takes("on"));
    EXPECT_TRUE(takes("off"));
    for (const char* pText : {"On", "o", "on,off", "onn", ""}) {
        EXPECT_FALSE(takes(pText)) << pText;
    }
}

TEST_F(CheckedOption, TakesWholeNumbersInItsRangeOnly)
{
    onlyWholeNumbers(m_option, "N", -5, 10);
    for (const auto& [pText, nValue] :
         std::vector<std::pair<const char*, int>>{{"-5", -5}, {"10", 10}, {"010", 10}, {"+3", 3}, {"0", 0}})
    {
        ASSERT_TRUE(takes(pText)) << pText;
        EXPECT_EQ(wholeNumberOf(m_option), nValue) << pText;
    }
    for (const char* pText : {"-6", "11", "1.0", "1e1", "0x3", "three", "", " 1", "1 ", "+-1", "99999999999"}) {
        EXPECT_FALSE(takes(pText)) << pText;
    }
}

TEST_F(CheckedOption, TakesFiniteNumbersAndItsWordOnly)
{
    onlyNumbers(m_option, "DBM", "unit-file");
    EXPECT_EQ(m_option.get_type_name(), "DBM|{unit-file}");
    EXPECT_TRUE(takes("unit-file"));
    for (const auto& [pText, value] :
         std::vector<std::pair<const char*, double>>{{"1", 1.0}, {"-0.25", -0.25}, {"1e3", 1000.0}, {"+.5", 0.5}})
    {
        ASSERT_TRUE(takes(pText)) << pText;
        EXPECT_EQ(numberOf(m_option), value) << pText;
    }
    for (const char* pText : {"nan", "inf", "-inf", "1e999", "1,5", "10dBm", "", "unit", "0x1p3"}) {
        EXPECT_FALSE(takes(pText)) << pText;
    }
}
