#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/LibraryText.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <utility>

namespace
{
std::string bytesOf(XMLRPC_VALUE value, const char* pBytes)
{
    return {pBytes != nullptr ? pBytes : "", static_cast<std::size_t>(XMLRPC_GetValueStringLen(value))};
}

std::string nameOf(XMLRPC_VALUE value)
{
    const char* pName = XMLRPC_GetValueID(value);
    return pName != nullptr ? pName : "";
}

bool same(XMLRPC_VALUE left, XMLRPC_VALUE right);

bool sameElements(XMLRPC_VALUE left, XMLRPC_VALUE right)
{
    XMLRPC_VALUE first = XMLRPC_VectorRewind(left);
    XMLRPC_VALUE second = XMLRPC_VectorRewind(right);
    while (first != nullptr && second != nullptr) {
        if (nameOf(first) != nameOf(second) || !same(first, second)) {
            return false;
        }
        first = XMLRPC_VectorNext(left);
        second = XMLRPC_VectorNext(right);
    }
    return first == nullptr && second == nullptr;
}

bool same(XMLRPC_VALUE left, XMLRPC_VALUE right)
{
    if (XMLRPC_GetValueTypeEasy(left) != XMLRPC_GetValueTypeEasy(right)) {
        return false;
    }
    switch (XMLRPC_GetValueType(left)) {
    case xmlrpc_int:
        return XMLRPC_GetValueInt(left) == XMLRPC_GetValueInt(right);
    case xmlrpc_boolean:
        return XMLRPC_GetValueBoolean(left) == XMLRPC_GetValueBoolean(right);
    case xmlrpc_double: {
        const double first = XMLRPC_GetValueDouble(left);
        const double second = XMLRPC_GetValueDouble(right);
        return std::signbit(first) == std::signbit(second) && !(first < second) && !(first > second);
    }
    case xmlrpc_string:
        return bytesOf(left, XMLRPC_GetValueString(left)) == bytesOf(right, XMLRPC_GetValueString(right));
    case xmlrpc_base64:
        return bytesOf(left, XMLRPC_GetValueBase64(left)) == bytesOf(right, XMLRPC_GetValueBase64(right));
    case xmlrpc_vector:
        return sameElements(left, right);
    default:
        return false;
    }
}

/** @return a text that XML can hold, rich in what needs escapes */
std::string anyText()
{
    const auto piece = rc::gen::element<std::string>("a", "Z", "0", " ", "\n", "\r", "\t", "<", ">", "&", "\"", "'",
                                                     "]]>", "<![CDATA[", "&#38;", "\x7F", "\xC3\xA9", "\xE2\x82\xAC",
                                                     "\xF0\x9F\x93\xB6", "\xEF\xBF\xBD");
    std::string sText;
    for (const std::string& sPiece : *rc::gen::container<std::vector<std::string>>(piece)) {
        sText += sPiece;
    }
    return sText;
}

double anyDouble()
{
    double value = 0;
    const auto nBits = *rc::gen::arbitrary<std::uint64_t>();
    std::memcpy(&value, &nBits, sizeof value);
    return std::isfinite(value) ? value : *rc::gen::arbitrary<double>();
}

XmlRpcValue anyValue(const char* pName, int nLevels);

XmlRpcValue anyVector(const char* pName, int nLevels, bool bStruct)
{
    XmlRpcValue vector = bStruct ? makeXmlRpcStruct(pName) : makeXmlRpcArray(pName);
    std::set<std::string> names;
    const int nElements = *rc::gen::inRange(0, 5);
    for (int i = 0; i < nElements; ++i) {
        const std::string sName = bStruct ? anyText() : std::string();
        if (!bStruct || (sName != "faultCode" && names.insert(sName).second)) {
            addXmlRpcValue(vector.get(), anyValue(sName.c_str(), nLevels - 1));
        }
    }
    return vector;
}

XmlRpcValue anyValue(const char* pName, int nLevels)
{
    switch (*rc::gen::inRange(0, nLevels > 0 ? 7 : 5)) {
    case 0:
        return makeXmlRpcInt(pName, *rc::gen::arbitrary<int>());
    case 1:
        return makeXmlRpcDouble(pName, anyDouble());
    case 2:
        return makeXmlRpcBoolean(pName, *rc::gen::arbitrary<bool>());
    case 3:
        return makeXmlRpcString(pName, anyText());
    case 4: {
        const std::string bytes = *rc::gen::nonEmpty(rc::gen::string<std::string>());
        return XmlRpcValue(XMLRPC_CreateValueBase64(pName, bytes.data(), static_cast<int>(bytes.size())));
    }
    case 5:
        return anyVector(pName, nLevels, true);
    default:
        return anyVector(pName, nLevels, false);
    }
}
} // namespace

TEST(XmlRpcRoundTrip, ResponsesReadBackAsTheyWere)
{
    EXPECT_TRUE(rc::check("a written response reads back", [] {
        const XmlRpcValue value = anyValue(nullptr, 3);
        const XmlRpcRequest read = parseXmlRpc(writeXmlRpcResponse(value.get()), EXmlRpcMessage::Response);
        RC_ASSERT(same(value.get(), XMLRPC_RequestGetData(read.get())));
    }));
}

TEST(XmlRpcRoundTrip, CallsReadBackAsTheyWere)
{
    EXPECT_TRUE(rc::check("a written call reads back", [] {
        const XmlRpcValue parameters = anyVector(nullptr, 3, false);
        const XmlRpcRequest read = parseXmlRpc(writeXmlRpcCall("Test.Method", parameters.get()), EXmlRpcMessage::Call);
        RC_ASSERT(std::string(XMLRPC_RequestGetMethodName(read.get())) == "Test.Method");
        RC_ASSERT(same(parameters.get(), XMLRPC_RequestGetData(read.get())));
    }));
}

TEST(XmlRpcRoundTrip, ResponsesPassTheGuardWhateverTheBytes)
{
    EXPECT_TRUE(rc::check("any bytes can be written", [](const std::string& sText) {
        const XmlRpcValue value = makeXmlRpcString(nullptr, sText);
        RC_ASSERT(!checkXmlRpc(writeXmlRpcResponse(value.get()), EXmlRpcMessage::Response));
    }));
}

TEST(XmlRpcRoundTrip, DoublesReadBackToTheLastBit)
{
    EXPECT_TRUE(rc::check("a double reads back", [] {
        const XmlRpcValue value = makeXmlRpcDouble(nullptr, anyDouble());
        const XmlRpcRequest read = parseXmlRpc(writeXmlRpcResponse(value.get()), EXmlRpcMessage::Response);
        RC_ASSERT(same(value.get(), XMLRPC_RequestGetData(read.get())));
    }));
}
