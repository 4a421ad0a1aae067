#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcGuard.h"
#include "tests/unit/xmlrpc/Messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
/** @return a call whose innermost element is at this depth, 5 and then every third */
std::string deepCall(int nArrays)
{
    return callWithValue(repeated("<array><data><value>", nArrays) + "<int>1</int>" +
                         repeated("</value></data></array>", nArrays));
}
} // namespace

TEST(XmlRpcGuard, LimitsBytesExactly)
{
    const std::string sCall = callOf("a");
    XmlRpcLimits limits;
    limits.nMaxBytes = sCall.size();
    EXPECT_FALSE(checkXmlRpc(sCall, EXmlRpcMessage::Call, limits));
    limits.nMaxBytes = sCall.size() - 1;
    const auto refusal = checkXmlRpc(sCall, EXmlRpcMessage::Call, limits);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->nFaultCode, eXMLRPC_FAULT_NOT_XMLRPC);
    EXPECT_THAT(refusal->sText, testing::HasSubstr("more than " + std::to_string(limits.nMaxBytes) + " bytes"));
}

TEST(XmlRpcGuard, TakesTheDefaultOfBytesExactly)
{
    const std::size_t nMaxBytes = std::size_t{256} * 1024;
    const std::string sCall = callOf("a");
    EXPECT_FALSE(checkXmlRpc(sCall + std::string(nMaxBytes - sCall.size(), ' '), EXmlRpcMessage::Call));
    EXPECT_TRUE(checkXmlRpc(sCall + std::string(nMaxBytes - sCall.size() + 1, ' '), EXmlRpcMessage::Call));
}

TEST(XmlRpcGuard, LimitsDepthExactly)
{
    // methodCall, params, param, value and int are 5, each array 3 more.
    XmlRpcLimits limits;
    limits.nMaxDepth = 5 + 3 * 4;
    EXPECT_FALSE(checkXmlRpc(deepCall(4), EXmlRpcMessage::Call, limits));
    limits.nMaxDepth -= 1;
    const auto refusal = checkXmlRpc(deepCall(4), EXmlRpcMessage::Call, limits);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->nFaultCode, eXMLRPC_FAULT_NOT_XMLRPC);
    EXPECT_THAT(refusal->sText, testing::HasSubstr("more than 16 deep"));
}

TEST(XmlRpcGuard, TakesTheDefaultOfDepthExactly)
{
    EXPECT_FALSE(checkXmlRpc(deepCall(19), EXmlRpcMessage::Call)); // 62
    EXPECT_FALSE(
        checkXmlRpc(callWithValue(repeated("<array><data><value>", 20) + repeated("</value></data></array>", 20)),
                    EXmlRpcMessage::Call));                       // 64
    EXPECT_TRUE(checkXmlRpc(deepCall(20), EXmlRpcMessage::Call)); // 65
}

TEST(XmlRpcGuard, LimitsElementsExactly)
{
    // methodCall, methodName and params are 3, each parameter 2 more.
    XmlRpcLimits limits;
    limits.nMaxElements = 3 + 2 * 5;
    const std::string sCall = callWithParams(repeated("<param><value/></param>", 5));
    EXPECT_FALSE(checkXmlRpc(sCall, EXmlRpcMessage::Call, limits));
    limits.nMaxElements -= 1;
    const auto refusal = checkXmlRpc(sCall, EXmlRpcMessage::Call, limits);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->nFaultCode, eXMLRPC_FAULT_NOT_XMLRPC);
    EXPECT_THAT(refusal->sText, testing::HasSubstr("more than 12 elements"));
}

TEST(XmlRpcGuard, TakesTheDefaultOfElementsExactly)
{
    // methodCall to the outer value are 5, array and data 2 more.
    EXPECT_FALSE(checkXmlRpc(callWithValue("<array><data>" + repeated("<value/>", 19993) + "</data></array>"),
                             EXmlRpcMessage::Call));
    EXPECT_TRUE(checkXmlRpc(callWithValue("<array><data>" + repeated("<value/>", 19994) + "</data></array>"),
                            EXmlRpcMessage::Call));
}

TEST(XmlRpcGuard, TakesUtf8AndAscii)
{
    const std::string sCall = callWithValue("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xB6");
    const std::string sAscii = callWithValue("a&#233;");
    for (const std::string& sText :
         {sCall, "<?xml version=\"1.0\"?>" + sCall, "<?xml version='1.0' encoding='UTF-8'?>\n" + sCall,
          "<?xml version='1.0' encoding='utf-8' standalone='yes'?>" + sCall, "\xEF\xBB\xBF" + sCall,
          "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>" + sCall,
          "<?xml version='1.0' encoding='US-ASCII'?>" + sAscii, "<?xml version='1.0' encoding='us-ascii'?>" + sAscii})
    {
        const auto refusal = checkXmlRpc(sText, EXmlRpcMessage::Call);
        EXPECT_FALSE(refusal) << sText << "\n" << refusal->sText;
    }
}

TEST(XmlRpcGuard, RefusesOtherEncodings)
{
    const std::string sCall = callOf("a");
    for (const std::string& sText :
         {"<?xml version='1.0' encoding='ISO-8859-1'?>" + sCall, "<?xml version='1.0' encoding='UTF-16'?>" + sCall,
          "<?xml version='1.0' encoding='UTF-7'?>" + sCall,
          "<?xml version='1.0' encoding='US-ASCII'?>" + callWithValue("\xC3\xA9"), callWithValue("\xE9"),
          callWithValue("\xC0\x80"), callWithValue("\xED\xA0\x80"), callWithValue("\xF4\x90\x80\x80"),
          callWithValue("\xEF\xBF\xBE"), callWithValue("a\xC3"), std::string("<methodCall><methodName>a\xE2\x82")})
    {
        const auto refusal = checkXmlRpc(sText, EXmlRpcMessage::Call);
        ASSERT_TRUE(refusal) << sText;
        EXPECT_EQ(refusal->nFaultCode, eXMLRPC_FAULT_BAD_ENCODING) << sText << "\n" << refusal->sText;
    }
}

TEST(XmlRpcGuard, RefusesByteOrderMarksOfOtherEncodings)
{
    for (const std::string& sText : {"\xFF\xFE" + callOf("a"), "\xFE\xFF" + callOf("a"), "\xFF\xFE" + callOf("ab"),
                                     std::string("\xFF\xFE"), std::string("\xEF\xBB\xBF")})
    {
        EXPECT_TRUE(checkXmlRpc(sText, EXmlRpcMessage::Call)) << sText;
    }
}
