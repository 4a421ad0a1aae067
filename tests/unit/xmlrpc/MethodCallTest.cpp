#include "Unit/TestServer/MethodTable.h"
#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/Messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{
/** A call of "Unit.Test" read from text. */
class ParsedCall
{
public:
    explicit ParsedCall(const std::string& sBody)
        : m_request(parseXmlRpc(sBody, EXmlRpcMessage::Call)), m_call("Unit.Test", m_request.get())
    {}

    const MethodCall* operator->() const { return &m_call; }

private:
    XmlRpcRequest m_request;
    MethodCall m_call;
};

ParsedCall withMember(const std::string& sContent)
{
    return ParsedCall(callWithValue("<struct><member><name>M</name><value>" + sContent + "</value></member></struct>"));
}

template <typename Call> void expectFault(Call call, int nCode, const std::string& sText)
{
    try {
        call();
        FAIL() << "no fault: " << sText;
    }
    catch (const XmlRpcFault& fault) {
        EXPECT_EQ(fault.code(), nCode);
        EXPECT_EQ(std::string(fault.what()), sText);
    }
}
} // namespace

TEST(MethodCall, ReadsMembers)
{
    EXPECT_EQ(withMember("<int>-3</int>")->integer("M"), -3);
    EXPECT_EQ(withMember("<double>1.5</double>")->number("M"), 1.5);
    EXPECT_EQ(withMember("<int>-3</int>")->number("M"), -3.0);
    EXPECT_EQ(withMember("<boolean>1</boolean>")->boolean("M"), true);
    EXPECT_EQ(withMember("<boolean>0</boolean>")->boolean("M"), false);
    EXPECT_EQ(withMember("<int>1</int>")->boolean("M"), true);
    EXPECT_EQ(withMember("<int>0</int>")->boolean("M"), false);
    EXPECT_EQ(withMember("a\xC3\xA9")->text("M"), "a\xC3\xA9");
    EXPECT_EQ(withMember("")->text("M"), "");
    EXPECT_TRUE(withMember("")->has("M"));
    EXPECT_EQ(withMember("")->method(), "Unit.Test");
}

TEST(MethodCall, ReadsRequiredMembers)
{
    EXPECT_EQ(withMember("<int>-3</int>")->requiredInteger("M"), -3);
    EXPECT_EQ(withMember("<double>1.5</double>")->requiredNumber("M"), 1.5);
    EXPECT_TRUE(withMember("<boolean>1</boolean>")->requiredBoolean("M"));
    EXPECT_EQ(withMember("text")->requiredText("M"), "text");
}

TEST(MethodCall, MembersOfOtherNamesAreMissing)
{
    const ParsedCall call = withMember("<int>1</int>");
    EXPECT_FALSE(call->has("m"));
    EXPECT_FALSE(call->has("N"));
    EXPECT_EQ(call->integer("m"), std::nullopt);
    EXPECT_EQ(call->number("N"), std::nullopt);
    EXPECT_EQ(call->boolean("N"), std::nullopt);
    EXPECT_EQ(call->text("N"), std::nullopt);
}

TEST(MethodCall, NamesWhatIsMissing)
{
    const std::string sText = "eTI_E_REQUIRED_INPUT_MISSING, Unit.Test failed due to missing tag N";
    const ParsedCall call = withMember("<int>1</int>");
    expectFault([&] { (void)call->requiredInteger("N"); }, eTI_E_REQUIRED_INPUT_MISSING, sText);
    expectFault([&] { (void)call->requiredNumber("N"); }, eTI_E_REQUIRED_INPUT_MISSING, sText);
    expectFault([&] { (void)call->requiredBoolean("N"); }, eTI_E_REQUIRED_INPUT_MISSING, sText);
    expectFault([&] { (void)call->requiredText("N"); }, eTI_E_REQUIRED_INPUT_MISSING, sText);
}

TEST(MethodCall, RefusesOtherTypes)
{
    for (const char* pContent : {"<double>1</double>", "<boolean>1</boolean>", "1", "<struct/>"}) {
        const ParsedCall call = withMember(pContent);
        expectFault([&] { (void)call->integer("M"); }, eXMLRPC_FAULT_INVALID_PARAMS, "Unit.Test: M must be an int");
        expectFault([&] { (void)call->requiredInteger("M"); }, eXMLRPC_FAULT_INVALID_PARAMS,
                    "Unit.Test: M must be an int");
    }
    for (const char* pContent : {"<boolean>1</boolean>", "1", "<array><data/></array>"}) {
        expectFault([&] { (void)withMember(pContent)->number("M"); }, eXMLRPC_FAULT_INVALID_PARAMS,
                    "Unit.Test: M must be a double");
    }
    for (const char* pContent : {"<int>2</int>", "<int>-1</int>", "<double>1</double>", "1", "<struct/>"}) {
        expectFault([&] { (void)withMember(pContent)->boolean("M"); }, eXMLRPC_FAULT_INVALID_PARAMS,
                    "Unit.Test: M must be a boolean");
    }
    for (const char* pContent : {"<int>2</int>", "<boolean>1</boolean>", "<base64/>", "<struct/>"}) {
        expectFault([&] { (void)withMember(pContent)->text("M"); }, eXMLRPC_FAULT_INVALID_PARAMS,
                    "Unit.Test: M must be a string");
    }
}

TEST(MethodCall, TakesACallWithoutAStructAsEmpty)
{
    for (const std::string& sBody : {callOf("a"), callWithParams(""), callWithValue("<struct/>"), callWithValue("1"),
                                     callWithValue("<array><data><value><int>1</int></value></data></array>")})
    {
        const ParsedCall call(sBody);
        EXPECT_FALSE(call->has("M")) << sBody;
        EXPECT_EQ(call->integer("M"), std::nullopt) << sBody;
        EXPECT_THROW((void)call->requiredText("M"), XmlRpcFault) << sBody;
    }
}

TEST(MethodCall, RefusesUnknownMembers)
{
    const ParsedCall call = withMember("<int>1</int>");
    EXPECT_NO_THROW(call->allowOnly({"M"}));
    EXPECT_NO_THROW(call->allowOnly({"A", "M"}));
    expectFault(
        [&] {
            call->allowOnly({"A", "B"});
        },
        eXMLRPC_FAULT_INVALID_PARAMS, "Unit.Test: unknown member \"M\"; known members: A, B");
    expectFault([&] { call->allowOnly({}); }, eXMLRPC_FAULT_INVALID_PARAMS,
                "Unit.Test: unknown member \"M\"; known members: none");
}

TEST(MethodCall, RefusesParametersThatAreNoSingleStruct)
{
    const std::string sText = "Unit.Test: the only parameter must be a struct";
    const std::string sStruct = "<param><value><struct/></value></param>";
    for (const std::string& sBody :
         {callWithValue("1"), callWithValue("<array><data/></array>"), callWithParams(sStruct + sStruct),
          callWithParams(sStruct + "<param><value/></param>")})
    {
        const ParsedCall call(sBody);
        expectFault([&] { call->allowOnly({"M"}); }, eXMLRPC_FAULT_INVALID_PARAMS, sText);
    }
    for (const std::string& sBody : {callOf("a"), callWithParams(""), callWithParams(sStruct)}) {
        EXPECT_NO_THROW(ParsedCall(sBody)->allowOnly({})) << sBody;
    }
}

TEST(MethodTable, FindsMethodsByName)
{
    MethodTable table;
    table.add({"b", "first", {}, {}});
    table.add({"a", "help", {}, {}});
    table.add({"b", "second", {}, {}});
    EXPECT_THAT(table.names(), testing::ElementsAre("a", "b"));
    ASSERT_NE(table.find("b"), nullptr);
    EXPECT_EQ(table.find("b")->sHelp, "second");
    EXPECT_EQ(table.find("B"), nullptr);
}
