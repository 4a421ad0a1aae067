#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/LibraryText.h"
#include "tests/unit/xmlrpc/Messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string_view>

namespace
{
constexpr std::string_view PROLOGUE = R"(<?xml version="1.0" encoding="UTF-8"?>)";

/** @return what stands in the only value of a response */
std::string contentOf(XMLRPC_VALUE value)
{
    const std::string sBefore = std::string(PROLOGUE) + "<methodResponse><params><param><value>";
    const std::string sAfter = "</value></param></params></methodResponse>";
    const std::string sText = writeXmlRpcResponse(value);
    EXPECT_THAT(sText, testing::StartsWith(sBefore));
    EXPECT_THAT(sText, testing::EndsWith(sAfter));
    return sText.substr(sBefore.size(), sText.size() - sBefore.size() - sAfter.size());
}

std::string textContent(const std::string& sText)
{
    return contentOf(makeXmlRpcString(nullptr, sText).get());
}

std::string doubleContent(double value)
{
    return contentOf(makeXmlRpcDouble(nullptr, value).get());
}

/** @return arrays within each other */
XmlRpcValue nest(int nVectors, bool bStructs)
{
    XmlRpcValue inner = makeXmlRpcInt(bStructs ? "m" : nullptr, 1);
    for (int i = 0; i < nVectors; ++i) {
        const char* pName = bStructs && i + 1 < nVectors ? "m" : nullptr;
        XmlRpcValue outer = bStructs ? makeXmlRpcStruct(pName) : makeXmlRpcArray(pName);
        addXmlRpcValue(outer.get(), std::move(inner));
        inner = std::move(outer);
    }
    return inner;
}
} // namespace

TEST(XmlRpcWriter, WritesDoublesWithEveryDigitAndNoExponent)
{
    EXPECT_EQ(doubleContent(1.0 / 3), "<double>0.3333333333333333</double>");
    EXPECT_EQ(doubleContent(1e-10), "<double>0.0000000001</double>");
    EXPECT_EQ(doubleContent(-20.123456789), "<double>-20.123456789</double>");
    EXPECT_EQ(doubleContent(0.1 + 0.2), "<double>0.30000000000000004</double>");
    EXPECT_EQ(doubleContent(5e-324), "<double>0." + std::string(323, '0') + "5</double>");
}

TEST(XmlRpcWriter, WritesWhatIsNoNumberAsText)
{
    EXPECT_EQ(doubleContent(std::numeric_limits<double>::quiet_NaN()), "<string>nan</string>");
    EXPECT_EQ(doubleContent(-std::numeric_limits<double>::quiet_NaN()), "<string>nan</string>");
    EXPECT_EQ(doubleContent(std::numeric_limits<double>::infinity()), "<string>inf</string>");
    EXPECT_EQ(doubleContent(-std::numeric_limits<double>::infinity()), "<string>-inf</string>");
}

TEST(XmlRpcWriter, KeepsCarriageReturns)
{
    EXPECT_EQ(textContent("a\r\nb\r"), "<string>a&#13;\nb&#13;</string>");
}

TEST(XmlRpcWriter, ReplacesWhatXmlCannotHold)
{
    struct Case
    {
        std::string sText;
        const char* pWritten;
    };
    const std::array cases = {
        Case{std::string("a\0b", 3), "a\uFFFDb"},
        Case{"\x01\x08\x0B\x1F", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        Case{"\t\n\x7F\xC2\x80", "\t\n\x7F\xC2\x80"},
        Case{"a\x80z", "a\uFFFDz"},
        Case{"a\xC3", "a\uFFFD"},
        Case{"a\xC3z", "a\uFFFDz"},
        Case{"\xC0\x80", "\uFFFD\uFFFD"},
        Case{"\xC1\xBF", "\uFFFD\uFFFD"},
        Case{"\xE0\x9F\xBF", "\uFFFD\uFFFD\uFFFD"},
        Case{"\xE0\xA0\x80", "\xE0\xA0\x80"},
        Case{"\xED\x9F\xBF", "\xED\x9F\xBF"},
        Case{"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
        Case{"\xEE\x80\x80", "\xEE\x80\x80"},
        Case{"\xEF\xBF\xBD", "\uFFFD"},
        Case{"\xEF\xBF\xBE", "\uFFFD\uFFFD\uFFFD"},
        Case{"\xEF\xBF\xBF", "\uFFFD\uFFFD\uFFFD"},
        Case{"\xE2\x82", "\uFFFD\uFFFD"},
        Case{"\xF0\x8F\xBF\xBF", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        Case{"\xF0\x90\x80\x80", "\xF0\x90\x80\x80"},
        Case{"\xF4\x8F\xBF\xBD", "\xF4\x8F\xBF\xBD"},
        Case{"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        Case{"\xF5\x80", "\uFFFD\uFFFD"},
        Case{"\xFF", "\uFFFD"},
    };
    for (const Case& text : cases) {
        EXPECT_EQ(textContent(text.sText), "<string>" + std::string(text.pWritten) + "</string>");
        EXPECT_FALSE(
            checkXmlRpc(writeXmlRpcResponse(makeXmlRpcString(nullptr, text.sText).get()), EXmlRpcMessage::Response));
    }
}

TEST(XmlRpcWriter, ReplacesInNames)
{
    XmlRpcValue value = makeXmlRpcStruct(nullptr);
    addXmlRpcValue(value.get(), makeXmlRpcInt("a\r\x01\xFF<", 1));
    EXPECT_EQ(contentOf(value.get()),
              "<struct><member><name>a&#13;\uFFFD\uFFFD&#60;</name><value><int>1</int></value></member></struct>");
}

TEST(XmlRpcWriter, WritesDatesThatOthersRead)
{
    const XmlRpcValue zoned(XMLRPC_CreateValueDateTime(nullptr, 1000000000));
    EXPECT_EQ(contentOf(zoned.get()), "<dateTime.iso8601>20010909T01:46:40</dateTime.iso8601>");
    const XmlRpcValue named(XMLRPC_CreateValueDateTime_ISO8601(nullptr, "20011309T01:46:40"));
    EXPECT_EQ(contentOf(named.get()), "<string>20011309T01:46:40</string>");
}

TEST(XmlRpcWriter, WritesAResponseWithoutAValueAsAnEmptyText)
{
    EXPECT_EQ(contentOf(nullptr), "<string/>");
    const XmlRpcValue none(XMLRPC_CreateVector(nullptr, xmlrpc_vector_none));
    EXPECT_EQ(contentOf(none.get()), "<string/>");
}

TEST(XmlRpcWriter, WrapsEveryParameter)
{
    // The library leaves param out around what looks like a fault, and around mixed vectors that do.
    XmlRpcValue parameters = makeXmlRpcArray(nullptr);
    addXmlRpcValue(parameters.get(), makeXmlRpcFault(4, "x"));
    EXPECT_FALSE(checkXmlRpc(writeXmlRpcCall("a", parameters.get()), EXmlRpcMessage::Call));
    const XmlRpcValue mixed(XMLRPC_CreateVector(nullptr, xmlrpc_vector_mixed));
    addXmlRpcValue(mixed.get(), makeXmlRpcInt("faultCode", 1));
    EXPECT_EQ(contentOf(mixed.get()),
              "<struct><member><name>faultCode</name><value><int>1</int></value></member></struct>");
}

TEST(XmlRpcWriter, EndsAtTheDepthThatTheGuardLetsIn)
{
    for (const bool bStructs : {false, true}) {
        for (int nVectors = 15; nVectors <= 19; ++nVectors) {
            const std::string sText = writeXmlRpcResponse(nest(nVectors, bStructs).get());
            EXPECT_EQ(sText, libraryResponse(nest(nVectors, bStructs))) << nVectors;
            EXPECT_FALSE(checkXmlRpc(sText, EXmlRpcMessage::Response)) << nVectors;
        }
        const std::string sDeepest = writeXmlRpcResponse(nest(20, bStructs).get());
        EXPECT_FALSE(checkXmlRpc(sDeepest, EXmlRpcMessage::Response));
        EXPECT_EQ(writeXmlRpcResponse(nest(21, bStructs).get()), sDeepest);
        EXPECT_EQ(writeXmlRpcResponse(nest(5000, bStructs).get()), sDeepest);
        EXPECT_THAT(sDeepest, testing::HasSubstr(bStructs ? "<struct/>" : "<array><data/></array>"));
        EXPECT_THAT(sDeepest, testing::Not(testing::HasSubstr("<int>")));
    }
}
