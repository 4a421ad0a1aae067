#include "tests/unit/xmlrpc/TestMethods.h"

#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/LibraryText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

namespace
{
XmlRpcLimits wideLimits()
{
    XmlRpcLimits limits;
    limits.nMaxBytes = std::numeric_limits<std::size_t>::max();
    limits.nMaxElements = std::numeric_limits<std::size_t>::max();
    return limits;
}

XmlRpcValue handled(const MethodCall& call)
{
    XMLRPC_VALUE members = XMLRPC_VectorRewind(XMLRPC_RequestGetData(call.request()));
    XMLRPC_VALUE option =
        XMLRPC_VectorGetValueWithID_Case(members, "RequestOption", XMLRPC_GetDefaultIdCaseComparison());
    if (XMLRPC_GetValueType(option) != xmlrpc_string) {
        return XmlRpcValue(XMLRPC_UtilityCreateFault(2, "eTI_E_REQUIRED_INPUT_MISSING, no RequestOption"));
    }
    XmlRpcValue result(XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct));
    XMLRPC_AddValueToVector(result.get(), XMLRPC_CreateValueString("Option", XMLRPC_GetValueString(option), 0));
    return result;
}

int parameterCount(const MethodCall& call)
{
    return XMLRPC_VectorSize(XMLRPC_RequestGetData(call.request()));
}
} // namespace

MethodTable testMethods()
{
    MethodTable table;
    table.add({"Test.Echo", "Gives back Value.", {{"string", "struct"}}, [](const MethodCall& call) {
                   return makeXmlRpcString(nullptr, call.text("Value").value_or("none"));
               }});
    table.add({"Test.Add", "Adds A and B.", {{"int", "struct"}}, [](const MethodCall& call) {
                   call.allowOnly({"A", "B"});
                   return makeXmlRpcInt(nullptr, static_cast<int>(std::int64_t{call.requiredInteger("A")} / 2 +
                                                                  std::int64_t{call.requiredInteger("B")} / 2));
               }});
    table.add({"Test.Samples", "Gives samples.", {{"struct", "struct"}}, [](const MethodCall& call) {
                   return logAnswer(std::min(call.integer("Count").value_or(200), 5000));
               }});
    table.add({"Test.Handler", "Reads by the library.", {{"struct", "struct"}}, handled});
    table.add({"Test.Parameters", "Counts parameters.", {}, [](const MethodCall& call) {
                   return makeXmlRpcInt(nullptr, parameterCount(call));
               }});
    table.add({"Test.Refuse", "Refuses.", {{"int"}}, [](const MethodCall&) -> XmlRpcValue {
                   throw XmlRpcFault(eTI_E_FAILED, "eTI_E_FAILED, refused");
               }});
    table.add({"Test.Throw", "Throws.", {{"int"}}, [](const MethodCall&) -> XmlRpcValue {
                   throw std::runtime_error("it broke");
               }});
    table.add({"Test.ThrowOther", "Throws no exception.", {{"int"}}, [](const MethodCall&) -> XmlRpcValue {
                   throw 5;
               }}); // NOLINT(hicpp-exception-baseclass)
    table.add({"Test.Nothing", "Gives nothing.", {{"int"}}, [](const MethodCall&) { return XmlRpcValue(); }});
    table.add({"Test.Named", "Gives a value with a name.", {{"int"}}, [](const MethodCall&) {
                   return makeXmlRpcInt("name", 6);
               }});
    return table;
}

std::string callWithStruct(const std::string& sMethod, XmlRpcValue members)
{
    const XmlRpcValue parameters = makeXmlRpcArray(nullptr);
    addXmlRpcValue(parameters.get(), std::move(members));
    return writeXmlRpcCall(sMethod, parameters.get());
}

XmlRpcRequest readAnswer(const std::string& sText)
{
    XmlRpcRequest response = parseXmlRpc(sText, EXmlRpcMessage::Response, wideLimits());
    EXPECT_EQ(XMLRPC_ResponseIsFault(response.get()), 0) << sText;
    return response;
}

void expectFault(const std::string& sText, int nCode, const std::string& sFaultText)
{
    const XmlRpcRequest response = parseXmlRpc(sText, EXmlRpcMessage::Response, wideLimits());
    XMLRPC_VALUE fault = XMLRPC_RequestGetData(response.get());
    ASSERT_NE(XMLRPC_ValueIsFault(fault), 0) << sText;
    EXPECT_EQ(XMLRPC_GetValueFaultCode(fault), nCode) << sText;
    EXPECT_EQ(std::string(XMLRPC_GetValueFaultString(fault)), sFaultText);
}
