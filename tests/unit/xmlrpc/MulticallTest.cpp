#include "Unit/TestServer/XmlRpcService.h"
#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/Messages.h"
#include "tests/unit/xmlrpc/TestMethods.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace
{
const char* const INNER_FORM =
    "system.multicall: each call must be a struct with a string methodName and an array params";

std::string inner(const std::string& sMethod, const std::string& sParameters = "")
{
    return "<value><struct><member><name>methodName</name><value>" + sMethod +
           "</value></member><member><name>params</name><value><array><data>" + sParameters +
           "</data></array></value></member></struct></value>";
}

std::string member(const std::string& sName, const std::string& sContent)
{
    return "<value><struct><member><name>" + sName + "</name><value>" + sContent + "</value></member></struct></value>";
}

std::string multicall(const std::string& sCalls)
{
    return "<methodCall><methodName>system.multicall</methodName><params><param><value><array><data>" + sCalls +
           "</data></array></value></param></params></methodCall>";
}

class Multicall : public testing::Test
{
protected:
    /** @return the results, an empty array when it is a fault as a whole */
    std::vector<XMLRPC_VALUE> results(const std::string& sCalls)
    {
        m_answer = readAnswer(m_service.answer(multicall(sCalls)));
        std::vector<XMLRPC_VALUE> values;
        XMLRPC_VALUE data = XMLRPC_RequestGetData(m_answer.get());
        for (XMLRPC_VALUE value = XMLRPC_VectorRewind(data); value != nullptr; value = XMLRPC_VectorNext(data)) {
            values.push_back(value);
        }
        return values;
    }

    static void expectInnerFault(XMLRPC_VALUE value, int nCode, const std::string& sText)
    {
        ASSERT_NE(XMLRPC_ValueIsFault(value), 0);
        EXPECT_EQ(XMLRPC_GetValueFaultCode(value), nCode);
        EXPECT_EQ(std::string(XMLRPC_GetValueFaultString(value)), sText);
    }

    XmlRpcService m_service{testMethods()};
    XmlRpcRequest m_answer;
};
} // namespace

TEST_F(Multicall, GivesEachResultInAnArray)
{
    const auto values = results(inner("Test.Echo", member("Value", "first")) + inner("Test.Named") +
                                inner("Test.Handler", member("RequestOption", "Read")));
    ASSERT_EQ(values.size(), 3U);
    for (XMLRPC_VALUE value : values) {
        EXPECT_EQ(XMLRPC_GetValueTypeEasy(value), xmlrpc_type_array);
        EXPECT_EQ(XMLRPC_VectorSize(value), 1);
    }
    EXPECT_STREQ(XMLRPC_GetValueString(XMLRPC_VectorRewind(values[0])), "first");
    EXPECT_EQ(XMLRPC_GetValueInt(XMLRPC_VectorRewind(values[1])), 6);
    EXPECT_STREQ(XMLRPC_GetValueString(XMLRPC_VectorRewind(XMLRPC_VectorRewind(values[2]))), "Read");
}

TEST_F(Multicall, GivesFaultsAmongResults)
{
    const auto values = results(inner("Test.Refuse") + inner("Test.Throw") + inner("Test.Nothing") +
                                inner("Test.Unknown") + inner("system.multicall") + inner("Test.Named"));
    ASSERT_EQ(values.size(), 6U);
    expectInnerFault(values[0], eTI_E_FAILED, "eTI_E_FAILED, refused");
    expectInnerFault(values[1], eXMLRPC_FAULT_INTERNAL, "Test.Throw: it broke");
    expectInnerFault(values[2], eXMLRPC_FAULT_INTERNAL, "Test.Nothing: no result");
    expectInnerFault(values[3], eXMLRPC_FAULT_UNKNOWN_METHOD, "unknown method Test.Unknown");
    expectInnerFault(values[4], eXMLRPC_FAULT_INVALID_PARAMS, "system.multicall: cannot hold another system.multicall");
    EXPECT_EQ(XMLRPC_GetValueInt(XMLRPC_VectorRewind(values[5])), 6);
}

TEST_F(Multicall, PassesEveryParameter)
{
    const auto values = results(inner("Test.Parameters") + inner("Test.Parameters", "<value/>") +
                                inner("Test.Parameters", repeated("<value><struct/></value>", 3)));
    ASSERT_EQ(values.size(), 3U);
    EXPECT_EQ(XMLRPC_GetValueInt(XMLRPC_VectorRewind(values[0])), 0);
    EXPECT_EQ(XMLRPC_GetValueInt(XMLRPC_VectorRewind(values[1])), 1);
    EXPECT_EQ(XMLRPC_GetValueInt(XMLRPC_VectorRewind(values[2])), 3);
}

TEST_F(Multicall, RefusesCallsOfAnotherFormOneByOne)
{
    const std::string sNoParameters = member("methodName", "Test.Named");
    const auto values = results("<value/><value><struct/></value>" + member("methodName", "<int>1</int>") +
                                sNoParameters + inner("Test.Named"));
    ASSERT_EQ(values.size(), 5U);
    for (std::size_t i = 0; i < 3; ++i) {
        expectInnerFault(values[i], eXMLRPC_FAULT_INVALID_PARAMS, INNER_FORM);
    }
    expectInnerFault(values[3], eXMLRPC_FAULT_INVALID_PARAMS,
                     "system.multicall: params of Test.Named must be an array");
    EXPECT_EQ(XMLRPC_GetValueInt(XMLRPC_VectorRewind(values[4])), 6);
}

TEST_F(Multicall, NeedsOneArray)
{
    const std::string sText = "system.multicall: the only parameter must be an array of calls";
    const std::string sEmpty = "<param><value><array><data/></array></value></param>";
    for (const std::string& sParameters : {std::string(), std::string("<param><value/></param>"),
                                           std::string("<param><value><struct/></value></param>"), sEmpty + sEmpty})
    {
        expectFault(m_service.answer("<methodCall><methodName>system.multicall</methodName><params>" + sParameters +
                                     "</params></methodCall>"),
                    eXMLRPC_FAULT_INVALID_PARAMS, sText);
    }
    EXPECT_TRUE(results("").empty());
}

TEST_F(Multicall, LimitsCallsExactly)
{
    const std::string sCall = inner("Test.Named");
    EXPECT_EQ(results(repeated(sCall, static_cast<int>(XmlRpcService::MAX_CALLS))).size(), XmlRpcService::MAX_CALLS);
    expectFault(m_service.answer(multicall(repeated(sCall, static_cast<int>(XmlRpcService::MAX_CALLS) + 1))),
                eXMLRPC_FAULT_INVALID_PARAMS, "system.multicall: more than 1000 calls");
}

TEST_F(Multicall, LeavesCallsOutOnceTheAnswersAreLong)
{
    const std::string sLong = inner("Test.Samples", member("Count", "<int>5000</int>"));
    const std::size_t nBytes = m_service
                                   .answer("<methodCall><methodName>Test.Samples</methodName><params><param>" +
                                           member("Count", "<int>5000</int>") + "</param></params></methodCall>")
                                   .size();
    const std::size_t nCarriedOut = XmlRpcService::MAX_MULTICALL_BYTES / nBytes + 1;
    const std::string sAnswer =
        m_service.answer(multicall(repeated(sLong, static_cast<int>(nCarriedOut)) + repeated(inner("Test.Named"), 2)));
    EXPECT_LT(sAnswer.size(), XmlRpcService::MAX_MULTICALL_BYTES + nBytes);
    m_answer = readAnswer(sAnswer);
    XMLRPC_VALUE data = XMLRPC_RequestGetData(m_answer.get());
    EXPECT_EQ(XMLRPC_VectorSize(data), static_cast<int>(nCarriedOut) + 2);
    std::size_t nAt = 0;
    for (XMLRPC_VALUE value = XMLRPC_VectorRewind(data); value != nullptr; value = XMLRPC_VectorNext(data)) {
        if (nAt++ < nCarriedOut) {
            EXPECT_EQ(XMLRPC_GetValueTypeEasy(value), xmlrpc_type_array);
        }
        else {
            expectInnerFault(value, eTI_E_FAILED,
                             "eTI_E_FAILED, system.multicall left this call out: the answers before it came to more "
                             "than 4194304 bytes");
        }
    }
}
