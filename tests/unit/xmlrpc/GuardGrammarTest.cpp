#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcGuard.h"
#include "tests/unit/xmlrpc/Messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace
{
constexpr const char* PARAM = "<param><value/></param>";
constexpr const char* CODE = "<member><name>faultCode</name><value><int>4</int></value></member>";
constexpr const char* TEXT = "<member><name>faultString</name><value><string>no</string></value></member>";

std::string member(const std::string& sName)
{
    return "<member><name>" + sName + "</name><value/></member>";
}

std::string fault(const std::string& sMembers)
{
    return responseWith("<fault><value><struct>" + sMembers + "</struct></value></fault>");
}

void expectAllowed(const std::vector<std::string>& texts, EXmlRpcMessage eMessage)
{
    for (const std::string& sText : texts) {
        const auto refusal = checkXmlRpc(sText, eMessage);
        EXPECT_FALSE(refusal) << sText << "\n" << refusal->sText;
    }
}

struct Refused
{
    std::string sText;
    const char* pComplaint;
};

void expectRefused(const std::vector<Refused>& cases, EXmlRpcMessage eMessage, int nCode)
{
    for (const Refused& refused : cases) {
        const auto refusal = checkXmlRpc(refused.sText, eMessage);
        ASSERT_TRUE(refusal) << refused.sText;
        EXPECT_EQ(refusal->nFaultCode, nCode) << refused.sText << "\n" << refusal->sText;
        EXPECT_THAT(refusal->sText, testing::HasSubstr(refused.pComplaint)) << refused.sText;
        EXPECT_THAT(refusal->sText, testing::StartsWith("line ")) << refused.sText;
        EXPECT_THAT(refusal->sText, testing::Not(testing::HasSubstr("\n"))) << refused.sText;
    }
}
} // namespace

TEST(XmlRpcGuard, AllowsCalls)
{
    expectAllowed(
        {
            callOf("a"),
            callOf("system.listMethods"),
            callOf("A_z.0:9/x"),
            callOf(std::string(256, 'm')),
            callWithParams(""),
            callWithParams(PARAM),
            callWithParams(repeated(PARAM, 3)),
            " \n" + callOf("a") + "\n ",
            callWithParams("\n <param>\n <value>\t<int>1</int>\r\n</value>\n </param>\n "),
            "<methodCall>\n <methodName>a</methodName>\n <params>\n </params>\n</methodCall>",
            "<!-- before --><methodCall><!-- in --><methodName>a<!-- within -->b</methodName></methodCall>",
            "<methodCall><methodName>a</methodName><params/></methodCall>",
        },
        EXmlRpcMessage::Call);
}

TEST(XmlRpcGuard, AllowsEveryKindOfValue)
{
    expectAllowed(
        {
            callWithValue(""),
            callWithValue("text"),
            callWithValue("  "),
            callWithValue("a &lt;&#98;&#x63;&amp; <![CDATA[<int>]]>"),
            callWithValue("<string> a\r\nb </string>"),
            callWithValue("<string/>"),
            callWithValue("<int>1</int>"),
            callWithValue("<i4>1</i4>"),
            callWithValue("<boolean>1</boolean>"),
            callWithValue("<double>1.5</double>"),
            callWithValue("<dateTime.iso8601>19980717T14:08:55</dateTime.iso8601>"),
            callWithValue("<base64>aGVsbG8=</base64>"),
            callWithValue("<struct/>"),
            callWithValue("<struct>" + member("a") + " " + member("b") + member("") + "</struct>"),
            callWithValue("<array><data/></array>"),
            callWithValue("<array>\n<data>\n<value/> <value><int>1</int></value>\n</data>\n</array>"),
            callWithValue("<array><data><value><struct>" + member("a") + "</struct></value><value><struct>" +
                          member("a") + "</struct></value></data></array>"),
        },
        EXmlRpcMessage::Call);
}

TEST(XmlRpcGuard, RefusesOtherCalls)
{
    expectRefused(
        {
            {responseWith("<params>" + std::string(PARAM) + "</params>"), "<methodResponse> has no place"},
            {"<a/>", "<a> has no place"},
            {"<methodcall/>", "<methodcall> has no place"},
            {"<methodCall/>", "before it is complete"},
            {"<methodCall><params/></methodCall>", "<params> has no place"},
            {"<methodCall><params/><methodName>a</methodName></methodCall>", "<params> has no place"},
            {"<methodCall><methodName>a</methodName><params/><params/></methodCall>", "<params> has no place"},
            {"<methodCall><methodName>a</methodName><methodName>a</methodName></methodCall>", "<methodName> has no"},
            {"<methodCall><methodName>a</methodName><x/></methodCall>", "<x> has no place"},
            {"<methodCall>a<methodName>a</methodName></methodCall>", "text beside"},
            {"<methodCall><methodName>a</methodName>a</methodCall>", "text beside"},
            {"<methodCall><methodName><a/></methodName></methodCall>", "<a> has no place"},
            {callOf(""), "methodName must be"},
            {callOf(" a"), "methodName must be"},
            {callOf("a b"), "methodName must be"},
            {callOf("a-b"), "methodName must be"},
            {callOf("a\xC3\xA9"), "methodName must be"},
            {callOf(std::string(257, 'm')), "methodName must be"},
            {callWithParams("<value/>"), "<value> has no place"},
            {callWithParams("<param/>"), "before it is complete"},
            {callWithParams("<param><value/><value/></param>"), "<value> has no place"},
            {callWithParams("<param><int>1</int></param>"), "<int> has no place"},
            {callWithParams("<param>1<value/></param>"), "text beside"},
        },
        EXmlRpcMessage::Call, eXMLRPC_FAULT_NOT_XMLRPC);
}

TEST(XmlRpcGuard, RefusesOtherValues)
{
    expectRefused(
        {
            {callWithValue("<nil/>"), "<nil> has no place"},
            {callWithValue("<i8>1</i8>"), "<i8> has no place"},
            {callWithValue("<INT>1</INT>"), "<INT> has no place"},
            {callWithValue("<x:int>1</x:int>"), "<x:int> has no place"},
            {callWithValue("<None/>"), "<None> has no place"},
            {callWithValue("<int>1</int><int>1</int>"), "<int> has no place"},
            {callWithValue("<int>1<int>1</int></int>"), "<int> has no place"},
            {callWithValue("<string><b/></string>"), "<b> has no place"},
            {callWithValue("a<int>1</int>"), "text beside"},
            {callWithValue("<int>1</int>a"), "text beside"},
            {callWithValue("<struct/>a"), "text beside"},
            {callWithValue("<struct>a</struct>"), "text beside"},
            {callWithValue("<struct><member/></struct>"), "before it is complete"},
            {callWithValue("<struct><member><name>a</name></member></struct>"), "before it is complete"},
            {callWithValue("<struct><member><value/></member></struct>"), "<value> has no place"},
            {callWithValue("<struct><member><value/><name>a</name></member></struct>"), "<value> has no place"},
            {callWithValue("<struct><member><name>a</name>b<value/></member></struct>"), "text beside"},
            {callWithValue("<struct><member><name>a</name><value/><value/></member></struct>"), "<value> has no"},
            {callWithValue("<struct><member><name>a</name><name>b</name><value/></member></struct>"), "<name> has no"},
            {callWithValue("<struct><member><name><b/></name><value/></member></struct>"), "<b> has no place"},
            {callWithValue("<struct><value/></struct>"), "<value> has no place"},
            {callWithValue("<array/>"), "before it is complete"},
            {callWithValue("<array><value/></array>"), "<value> has no place"},
            {callWithValue("<array><data/><data/></array>"), "<data> has no place"},
            {callWithValue("<array><data>a</data></array>"), "text beside"},
            {callWithValue("<array><data><int>1</int></data></array>"), "<int> has no place"},
        },
        EXmlRpcMessage::Call, eXMLRPC_FAULT_NOT_XMLRPC);
}

TEST(XmlRpcGuard, RefusesTwoMembersOfOneName)
{
    expectRefused(
        {
            {callWithValue("<struct>" + member("a") + member("b") + member("a") + "</struct>"), "two members \"a\""},
            {callWithValue("<struct>" + member("") + member("") + "</struct>"), "two members \"\""},
            {callWithValue("<struct>" + member("a") + member("<![CDATA[a]]>") + "</struct>"), "two members \"a\""},
            {callWithValue("<struct>" + member("a\nb") + member("a\nb") + "</struct>"), "two members \"a?b\""},
        },
        EXmlRpcMessage::Call, eXMLRPC_FAULT_NOT_XMLRPC);
    expectAllowed({callWithValue("<struct>" + member("a") + member("A") + member(" a") + "</struct>")},
                  EXmlRpcMessage::Call);
}

TEST(XmlRpcGuard, AllowsResponses)
{
    expectAllowed(
        {
            responseWith("<params>" + std::string(PARAM) + "</params>"),
            responseWith("<params><param><value><struct>" + std::string(CODE) + "</struct></value></param></params>"),
            fault(std::string(CODE) + TEXT),
            fault(std::string(TEXT) + CODE),
            fault("<member><name>faultCode</name><value><i4>-1</i4></value></member>"
                  "<member><name>faultString</name><value>plain</value></member>"),
        },
        EXmlRpcMessage::Response);
}

TEST(XmlRpcGuard, RefusesOtherResponses)
{
    expectRefused(
        {
            {callOf("a"), "<methodCall> has no place"},
            {responseWith(""), "before it is complete"},
            {responseWith("<params/>"), "before it is complete"},
            {responseWith("<params>" + repeated(PARAM, 2) + "</params>"), "<param> has no place"},
            {responseWith("<params>" + std::string(PARAM) + "</params><fault/>"), "<fault> has no place"},
            {responseWith("<fault/>"), "before it is complete"},
            {responseWith("<fault><value/></fault>"), "before it is complete"},
            {responseWith("<fault><value>a</value></fault>"), "text beside"},
            {responseWith("<fault><value><int>1</int></value></fault>"), "<int> has no place"},
            {fault(""), "needs faultCode and faultString"},
            {fault(CODE), "needs faultCode and faultString"},
            {fault(TEXT), "needs faultCode and faultString"},
            {fault(std::string(CODE) + TEXT + member("more")), "only faultCode and faultString"},
            {fault(std::string(CODE) + CODE), "two members"},
            {fault(std::string(TEXT) + member("faultCode")), "faultCode must be an int"},
            {fault(std::string(CODE) + "<member><name>faultString</name><value><int>1</int></value></member>"),
             "faultString must be a string"},
        },
        EXmlRpcMessage::Response, eXMLRPC_FAULT_NOT_XMLRPC);
}

TEST(XmlRpcGuard, RefusesWhatIsNotWellFormed)
{
    expectRefused(
        {
            {"", "no element found"},
            {" ", "no element found"},
            {"text", "syntax error"},
            {"<methodCall>", "no element found"},
            {"<methodCall><methodName>a</methodCall>", "mismatched tag"},
            {callOf("a") + callOf("a"), "junk after document element"},
            {callOf("a") + "x", "junk after document element"},
            {callOf("&nbsp;"), "undefined entity"},
            {callWithValue("a & b"), "not well-formed"},
            {callWithValue("a ]]> b"), "not well-formed"},
            {callWithValue("&#0;"), "invalid character number"},
            {callWithValue("&#1;"), "invalid character number"},
            {callWithValue("\x01"), "not well-formed"},
            {callWithValue(std::string("a\n\0b", 4)), "line 2: a NUL"},
            {callOf("a") + std::string(1, '\0'), "line 1: a NUL"},
            {std::string("\0<\0a\0/\0>", 8), "a NUL"},
            {std::string("\xFF\xFE<\0a\0/\0>\0", 10), "a NUL"},
            {" <?xml version=\"1.0\"?>" + callOf("a"), "not at start"},
        },
        EXmlRpcMessage::Call, eXMLRPC_FAULT_NOT_WELL_FORMED);
}

TEST(XmlRpcGuard, RefusesWhatCouldHideSomething)
{
    expectRefused(
        {
            {"<!DOCTYPE methodCall>" + callOf("a"), "document type"},
            {"<!DOCTYPE methodCall [<!ENTITY e \"e\">]>" + callWithValue("&e;"), "document type"},
            {"<!DOCTYPE methodCall SYSTEM \"file:///etc/hostname\">" + callOf("a"), "document type"},
            {"<?php echo ?>" + callOf("a"), "processing instruction"},
            {callOf("a") + "<?x?>", "processing instruction"},
            {"<methodCall a=\"b\"><methodName>a</methodName></methodCall>", "<methodCall> has attributes"},
            {callWithValue("<int xmlns=\"x\">1</int>"), "<int> has attributes"},
        },
        EXmlRpcMessage::Call, eXMLRPC_FAULT_NOT_XMLRPC);
}

TEST(XmlRpcGuard, ShowsNamesOnOneShortLine)
{
    const auto refusal = checkXmlRpc("<methodCall>\n\n<" + std::string(40, 'x') + "\xC3\xA9/>", EXmlRpcMessage::Call);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->sText, "line 3: element <" + std::string(32, 'x') + "...> has no place here");
    const auto foreign = checkXmlRpc("<\xC3\xA9/>", EXmlRpcMessage::Call);
    ASSERT_TRUE(foreign);
    EXPECT_EQ(foreign->sText, "line 1: element <?\?> has no place here");
}
