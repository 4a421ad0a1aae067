#include "Unit/XmlRpc/XmlRpcGuard.h"
#include "Unit/XmlRpc/private/XmlRpcScalars.h"
#include "tests/unit/xmlrpc/Messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <initializer_list>

namespace
{
using Check = bool (*)(std::string_view);

void expectBoth(Check isRight, std::initializer_list<std::string> right, std::initializer_list<std::string> wrong)
{
    for (const std::string& sText : right) {
        EXPECT_TRUE(isRight(sText)) << '"' << sText << '"';
    }
    for (const std::string& sText : wrong) {
        EXPECT_FALSE(isRight(sText)) << '"' << sText << '"';
    }
}
} // namespace

TEST(XmlRpcScalars, KnowsInts)
{
    expectBoth(isXmlRpcInt,
               {"0", "-0", "+0", "1", "+1", "-1", "007", "2147483647", "+2147483647", "-2147483648",
                std::string(1000, '0') + "1"},
               {"", "+", "-", "+-1", "--1", " 1", "1 ", "1 2", "\n1", "1.0", "1e3", "0x10", "a", "1a", "2147483648",
                "+2147483648", "-2147483649", "99999999999999999999", "\xD9\xA1"});
}

TEST(XmlRpcScalars, KnowsDoubles)
{
    expectBoth(isXmlRpcDouble,
               {"0", "-0.0", "+1.5", "-1.5", ".5", "-.5", "5.", "1e3", "1E3", "1e+3", "1.5e-3", "1e308",
                "1.7976931348623157e308", "5e-324", std::string(400, '0') + "1." + std::string(400, '0')},
               {"",      "+",     "-",     ".",     "+.",     "e3",     ".e3", "1e",  "1e+",
                "1e3.5", "1.2.3", "--1",   "+-1",   " 1",     "1 ",     "1,5", "inf", "nan",
                "-inf",  "INF",   "0x1p3", "1e309", "-1e309", "1e-400", "1d3", "1f",  std::string(400, '9')});
}

TEST(XmlRpcScalars, KnowsBooleans)
{
    expectBoth(isXmlRpcBoolean, {"0", "1"}, {"", "2", "-1", "+1", "01", "true", "false", " 1", "1 "});
}

TEST(XmlRpcScalars, KnowsDates)
{
    expectBoth(isXmlRpcDate,
               {"19980717T14:08:55", "00010101T00:00:00", "99991231T23:59:59", "20240229T00:00:00", "20000229T00:00:00",
                "20230131T00:00:00", "20230430T00:00:00"},
               {"",
                "19980717T14:08:5",
                "19980717T14:08:555",
                "19980717 14:08:55",
                "19980717T14:08:55Z",
                "1998-07-17T14:08:55",
                "19980717t14:08:55",
                "19980717T14-08-55",
                "1998071aT14:08:55",
                "00000101T00:00:00",
                "19981317T14:08:55",
                "19980017T14:08:55",
                "19980700T14:08:55",
                "19980732T14:08:55",
                "20230229T00:00:00",
                "19000229T00:00:00",
                "20230431T00:00:00",
                "19980717T24:00:00",
                "19980717T14:60:55",
                "19980717T14:08:60",
                "-9980717T14:08:55"});
}

TEST(XmlRpcScalars, KnowsBase64)
{
    expectBoth(isXmlRpcBase64, {"", "\n", "AAAA", "AA==", "AAA=", "+/09", "aGVs\r\n bG8=\t\n", "A A A A"},
               {"A", "AA", "AAA", "AAAAA", "A===", "====", "=AAA", "AA=A", "AA==AAAA", "AAA-", "AAA_", "AA!A",
                "AAA\xC3\xA9", "AAAA="});
}

TEST(XmlRpcScalars, KnowsMethodNames)
{
    expectBoth(isXmlRpcMethodName, {"a", "TI.ManageLogs", "a_b:c/d.0Z", std::string(256, 'x')},
               {"", " a", "a ", "a-b", "a\n", "a&b", "\xC3\xA9", std::string(257, 'x')});
}

TEST(XmlRpcGuard, ChecksEachScalarInItsElement)
{
    struct Case
    {
        const char* pElement;
        const char* pRight;
        const char* pWrong;
        const char* pComplaint;
    };
    constexpr std::array CASES = {
        Case{"int", "-2147483648", "2147483648", "an int must be"},
        Case{"i4", "2147483647", "-2147483649", "an int must be"},
        Case{"int", "+5", "", "an int must be"},
        Case{"double", "1e308", "1e309", "a double must be"},
        Case{"double", "0", "", "a double must be"},
        Case{"boolean", "1", "true", "a boolean must be"},
        Case{"dateTime.iso8601", "19980717T14:08:55", "19980717T14:08:55Z", "a dateTime.iso8601 must be"},
        Case{"base64", "", "AAA", "a base64 must be"},
    };
    for (const Case& scalar : CASES) {
        const auto content = [&](const char* pText) {
            return callWithValue(std::string("<") + scalar.pElement + ">" + pText + "</" + scalar.pElement + ">");
        };
        EXPECT_FALSE(checkXmlRpc(content(scalar.pRight), EXmlRpcMessage::Call)) << content(scalar.pRight);
        const auto refusal = checkXmlRpc(content(scalar.pWrong), EXmlRpcMessage::Call);
        ASSERT_TRUE(refusal) << content(scalar.pWrong);
        EXPECT_THAT(refusal->sText, testing::HasSubstr(scalar.pComplaint));
    }
}

TEST(XmlRpcGuard, JoinsTheTextOfAScalar)
{
    EXPECT_FALSE(checkXmlRpc(callWithValue("<int>4<!-- and -->2</int>"), EXmlRpcMessage::Call));
    EXPECT_FALSE(checkXmlRpc(callWithValue("<int>&#52;<![CDATA[2]]></int>"), EXmlRpcMessage::Call));
    EXPECT_TRUE(checkXmlRpc(callWithValue("<int>4<!-- and -->x</int>"), EXmlRpcMessage::Call));
}
