#include "Unit/XmlRpc/JsonXmlRpc.h"

#include "Unit/XmlRpc/XmlRpcText.h"

#include <gtest/gtest.h>

#include <stdexcept>

using nlohmann::ordered_json;

namespace
{
/** @return what comes back after JSON has gone over the wire as an answer */
ordered_json overTheWire(const ordered_json& value)
{
    const XmlRpcValue answer = xmlRpcFromJson(nullptr, value);
    const XmlRpcRequest response = parseXmlRpc(writeXmlRpcResponse(answer.get()), EXmlRpcMessage::Response);
    return jsonFromXmlRpc(XMLRPC_RequestGetData(response.get()));
}

ordered_json answerWith(const std::string& sValue)
{
    const XmlRpcRequest response = parseXmlRpc("<?xml version=\"1.0\"?><methodResponse><params><param><value>" +
                                                   sValue + "</value></param></params></methodResponse>",
                                               EXmlRpcMessage::Response);
    return jsonFromXmlRpc(XMLRPC_RequestGetData(response.get()));
}
} // namespace

TEST(JsonXmlRpc, KeepsValuesAndTheirTypes)
{
    for (const char* pText :
         {"0", "-2147483648", "2147483647", "2.0", "-0.1", "1e-300", "12345678901.5", "true", "false", "\"\"",
          "\"gr\\u00fcn <&>\\n\\t\"", "{}", "[]", "{\"b\":1,\"a\":{\"x\":[1,2.5,\"3\",[],{}]},\"c\":false}"})
    {
        const ordered_json value = ordered_json::parse(pText);
        const ordered_json result = overTheWire(value);
        EXPECT_EQ(result.dump(), value.dump());
        EXPECT_EQ(result.is_number_float(), value.is_number_float()) << pText;
    }
}

TEST(JsonXmlRpc, SendsWholeNumbersThatAreTooWideForAnIntAsDoubles)
{
    for (const char* pText : {"2147483648", "-2147483649", "4000000000000"}) {
        const ordered_json result = overTheWire(ordered_json::parse(pText));
        EXPECT_TRUE(result.is_number_float()) << pText;
        EXPECT_EQ(result.get<double>(), std::stod(pText));
    }
}

TEST(JsonXmlRpc, RefusesWhatACallCannotCarry)
{
    EXPECT_THROW(xmlRpcFromJson(nullptr, nullptr), std::invalid_argument);
    EXPECT_THROW(xmlRpcFromJson(nullptr, {{"a", {1, nullptr}}}), std::invalid_argument);
    EXPECT_THROW(xmlRpcFromJson(nullptr, ordered_json::binary({1, 2})), std::invalid_argument);
}

TEST(JsonXmlRpc, TakesDatesAsTextAndBase64AsBytes)
{
    EXPECT_EQ(answerWith("<dateTime.iso8601>20260102T03:04:05</dateTime.iso8601>"), "20260102T03:04:05");
    EXPECT_EQ(answerWith("<base64>AP8=</base64>"), ordered_json::binary({0, 255}));
    EXPECT_EQ(answerWith("<base64></base64>"), ordered_json::binary({}));
}

TEST(JsonXmlRpc, TakesTextWithoutATypeAsAString)
{
    EXPECT_EQ(answerWith("plain"), "plain");
    EXPECT_EQ(answerWith("<i4>5</i4>"), 5);
}
