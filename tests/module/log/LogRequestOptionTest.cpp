#include "tests/module/log/LogTest.h"

namespace
{
static_assert(sizeof(OutputPowerControlLog::EOPCLogRequestOption) == 4);

struct Option
{
    std::string sText;
    int nValue;
};

class LogRequestOptionTest : public LogTest
{
protected:
    void expectAll(const std::vector<Option>& options)
    {
        for (const Option& option : options) {
            EXPECT_EQ(m_log.convertRequestStringToRequestEnum(option.sText), option.nValue)
                << "\"" << option.sText << "\"";
        }
    }
};

TEST_F(LogRequestOptionTest, KnowsSevenStrings)
{
    expectAll({{"Start", 0},
               {"Enable", 1},
               {"Stop", 2},
               {"Disable", 3},
               {"Read", 4},
               {"ReadAndReset", 5},
               {"SaveToSysLog", 6}});
}

TEST_F(LogRequestOptionTest, RefusesOtherCase)
{
    expectAll({{"start", 7},
               {"START", 7},
               {"enable", 7},
               {"sTOP", 7},
               {"DISABLE", 7},
               {"read", 7},
               {"Readandreset", 7},
               {"SaveToSyslog", 7}});
}

TEST_F(LogRequestOptionTest, RefusesBlanksPrefixesAndLongerStrings)
{
    expectAll({{"", 7},
               {" ", 7},
               {"Read ", 7},
               {" Read", 7},
               {"Read\t", 7},
               {"Read\n", 7},
               {"Rea", 7},
               {"ReadAnd", 7},
               {"ReadAndResetX", 7},
               {"S", 7},
               {"Stopped", 7},
               {"EnableDisable", 7},
               {"Invalid", 7},
               {"7", 7},
               {"4", 7}});
}

TEST_F(LogRequestOptionTest, ComparesTheWholeStringBeyondItsFirstNul)
{
    expectAll({{std::string("Read\0", 5), 7},
               {std::string("Read\0Reset", 10), 7},
               {std::string("\0Read", 5), 7},
               {std::string("\0", 1), 7},
               {std::string("Re\0ad", 5), 7}});
}

TEST_F(LogRequestOptionTest, RefusesBytesBeyondAscii)
{
    expectAll({{"Re\xC3\xA4"
                "d",
                7},
               {"\xFF", 7},
               {std::string(100000, 'R'), 7}});
}
} // namespace
