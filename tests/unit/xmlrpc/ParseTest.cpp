#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/Messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

namespace
{
XMLRPC_VALUE firstParameter(const XmlRpcRequest& request)
{
    return XMLRPC_VectorRewind(XMLRPC_RequestGetData(request.get()));
}

std::string textOf(const std::string& sContent)
{
    const XmlRpcRequest request = parseXmlRpc(callWithValue(sContent), EXmlRpcMessage::Call);
    XMLRPC_VALUE value = firstParameter(request);
    EXPECT_EQ(XMLRPC_GetValueType(value), xmlrpc_string);
    return {XMLRPC_GetValueString(value), static_cast<std::size_t>(XMLRPC_GetValueStringLen(value))};
}
} // namespace

TEST(XmlRpcParser, ReadsCalls)
{
    const XmlRpcRequest request = parseXmlRpc(callWithValue("<int>-5</int>"), EXmlRpcMessage::Call);
    EXPECT_STREQ(XMLRPC_RequestGetMethodName(request.get()), "Test.Method");
    EXPECT_EQ(XMLRPC_RequestGetRequestType(request.get()), xmlrpc_request_call);
    EXPECT_EQ(XMLRPC_VectorSize(XMLRPC_RequestGetData(request.get())), 1);
    EXPECT_EQ(XMLRPC_GetValueInt(firstParameter(request)), -5);
}

TEST(XmlRpcParser, ReadsCallsWithoutParameters)
{
    for (const std::string& sText : {callOf("a"), callWithParams("")}) {
        const XmlRpcRequest request = parseXmlRpc(sText, EXmlRpcMessage::Call);
        EXPECT_EQ(firstParameter(request), nullptr) << sText;
    }
}

TEST(XmlRpcParser, ReadsTexts)
{
    EXPECT_EQ(textOf(""), "");
    EXPECT_EQ(textOf("plain"), "plain");
    EXPECT_EQ(textOf("<string/>"), "");
    EXPECT_EQ(textOf("  "), "  ");
    EXPECT_EQ(textOf("<string> a&#13;\n\xC3\xA9 ]]&gt; <![CDATA[<b>]]></string>"), " a\r\n\xC3\xA9 ]]> <b>");
    EXPECT_EQ(textOf("a<!-- between -->b"), "ab");
}

TEST(XmlRpcParser, ReadsScalarsAsTheGuardUnderstandsThem)
{
    const auto value = [](const std::string& sContent) {
        return parseXmlRpc(callWithValue(sContent), EXmlRpcMessage::Call);
    };
    EXPECT_EQ(XMLRPC_GetValueInt(firstParameter(value("<int>+2147483647</int>"))), 2147483647);
    EXPECT_EQ(XMLRPC_GetValueInt(firstParameter(value("<i4>-2147483648</i4>"))), -2147483647 - 1);
    EXPECT_EQ(XMLRPC_GetValueInt(firstParameter(value("<int>010</int>"))), 10);
    EXPECT_EQ(XMLRPC_GetValueDouble(firstParameter(value("<double>-.5e3</double>"))), -500.0);
    EXPECT_EQ(XMLRPC_GetValueDouble(firstParameter(value("<double>+5.</double>"))), 5.0);
    EXPECT_EQ(XMLRPC_GetValueBoolean(firstParameter(value(" <boolean>1</boolean> "))), 1);
    EXPECT_STREQ(XMLRPC_GetValueDateTime_ISO8601(
                     firstParameter(value("<dateTime.iso8601>20240229T23:59:59</dateTime.iso8601>"))),
                 "20240229T23:59:59");
    const XmlRpcRequest request = value("<base64> aGVs\r\nbG8= </base64>");
    EXPECT_EQ(std::string(XMLRPC_GetValueBase64(firstParameter(request)),
                          static_cast<std::size_t>(XMLRPC_GetValueStringLen(firstParameter(request)))),
              "hello");
}

TEST(XmlRpcParser, ReadsResponses)
{
    const XmlRpcRequest request = parseXmlRpc(
        responseWith("<params><param><value><struct><member><name>a</name><value><int>3</int></value></member></struct>"
                     "</value></param></params>"),
        EXmlRpcMessage::Response);
    XMLRPC_VALUE data = XMLRPC_RequestGetData(request.get());
    EXPECT_EQ(XMLRPC_GetValueInt(XMLRPC_VectorGetValueWithID_Case(data, "a", xmlrpc_case_sensitive)), 3);
    EXPECT_EQ(XMLRPC_ResponseIsFault(request.get()), 0);
}

TEST(XmlRpcParser, ReadsFaults)
{
    const XmlRpcValue fault = makeXmlRpcFault(77, "a < b");
    const XmlRpcRequest request = parseXmlRpc(writeXmlRpcResponse(fault.get()), EXmlRpcMessage::Response);
    XMLRPC_VALUE data = XMLRPC_RequestGetData(request.get());
    ASSERT_NE(XMLRPC_ValueIsFault(data), 0);
    EXPECT_EQ(XMLRPC_GetValueFaultCode(data), 77);
    EXPECT_STREQ(XMLRPC_GetValueFaultString(data), "a < b");
}

TEST(XmlRpcParser, ThrowsTheRefusal)
{
    try {
        (void)parseXmlRpc("\n<oops>", EXmlRpcMessage::Call);
        FAIL();
    }
    catch (const XmlRpcFault& fault) {
        EXPECT_EQ(fault.code(), eXMLRPC_FAULT_NOT_XMLRPC);
        EXPECT_STREQ(fault.what(), "line 2: element <oops> has no place here");
    }
    XmlRpcLimits limits;
    limits.nMaxBytes = 10;
    EXPECT_THROW((void)parseXmlRpc(callOf("a"), EXmlRpcMessage::Call, limits), XmlRpcFault);
}

TEST(XmlRpcParser, KeepsNothingOfRefusedTexts)
{
    const std::string sWhole =
        callWithValue(repeated("<array><data><value>", 10) + "text" + repeated("</value></data></array>", 10));
    const auto refuseAll = [&] {
        for (int i = 0; i < 500; ++i) {
            EXPECT_THROW((void)parseXmlRpc(sWhole.substr(0, sWhole.size() - 1 - static_cast<std::size_t>(i) % 300),
                                           EXmlRpcMessage::Call),
                         XmlRpcFault);
        }
    };
    refuseAll();
    const auto nBefore = mallinfo2().uordblks;
    for (int i = 0; i < 10; ++i) {
        refuseAll();
    }
    EXPECT_LT(mallinfo2().uordblks, nBefore + 50000); // 10 bytes a text
}
