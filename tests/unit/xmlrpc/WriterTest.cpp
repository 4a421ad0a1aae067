#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/unit/xmlrpc/LibraryText.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

namespace
{
using Maker = std::function<XmlRpcValue()>;

/** The same bytes as the library's, which needs a value of its own. */
void expectLibraryBytes(const Maker& make)
{
    EXPECT_EQ(writeXmlRpcResponse(make().get()), libraryResponse(make()));
}

XmlRpcValue base64(const std::string& bytes)
{
    // The library measures a text of no length.
    return XmlRpcValue(XMLRPC_CreateValueBase64(nullptr, bytes.c_str(), static_cast<int>(bytes.size())));
}

std::string allBytes(std::size_t nBytes)
{
    std::string bytes;
    for (std::size_t i = 0; i < nBytes; ++i) {
        bytes += static_cast<char>((i * 37 + 11) & 0xFFU);
    }
    return bytes;
}

/** @return a vector that holds one of everything */
XmlRpcValue filled(XMLRPC_VECTOR_TYPE eType, const char* pName, int nLevels)
{
    const bool bNames = eType != xmlrpc_vector_array;
    const auto name = [&](const char* pMember) { return bNames ? pMember : nullptr; };
    XmlRpcValue vector(XMLRPC_CreateVector(pName, eType));
    addXmlRpcValue(vector.get(), makeXmlRpcInt(name("int"), -7));
    addXmlRpcValue(vector.get(), makeXmlRpcDouble(name("double"), -31.25));
    addXmlRpcValue(vector.get(), makeXmlRpcBoolean(name("boolean"), true));
    addXmlRpcValue(vector.get(), makeXmlRpcString(name("a <b> & \"c\" d's"), "e <f> & \"g\" h's \xC3\xA9"));
    addXmlRpcValue(vector.get(), makeXmlRpcString(name("empty"), ""));
    addXmlRpcValue(vector.get(), makeXmlRpcStruct(name("no members")));
    addXmlRpcValue(vector.get(), makeXmlRpcArray(name("no elements")));
    addXmlRpcValue(vector.get(), XmlRpcValue(XMLRPC_CreateValueEmpty()));
    if (nLevels > 0) {
        addXmlRpcValue(vector.get(), filled(xmlrpc_vector_struct, name("inner struct"), nLevels - 1));
        addXmlRpcValue(vector.get(), filled(xmlrpc_vector_array, name("inner array"), nLevels - 1));
    }
    return vector;
}
} // namespace

TEST(XmlRpcWriter, WritesScalarsAsTheLibraryDoes)
{
    for (const int nValue : {0, 1, -1, 42, INT_MAX, INT_MIN}) {
        expectLibraryBytes([&] { return makeXmlRpcInt(nullptr, nValue); });
    }
    for (const bool bValue : {false, true}) {
        expectLibraryBytes([&] { return makeXmlRpcBoolean(nullptr, bValue); });
    }
    for (const char* pText :
         {"", "a", "  ", "a<b>&\"c'd", "]]>", "\t\n x", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xB6", "\x7F"}) {
        expectLibraryBytes([&] { return makeXmlRpcString(nullptr, pText); });
    }
    expectLibraryBytes([] { return XmlRpcValue(XMLRPC_CreateValueDateTime_ISO8601(nullptr, "19980717T14:08:55")); });
    expectLibraryBytes([] { return XmlRpcValue(XMLRPC_CreateValueEmpty()); });
    expectLibraryBytes([] { return makeXmlRpcInt("name that does not show", 1); });
}

TEST(XmlRpcWriter, WritesDoublesAsTheLibraryDoesWhereItIsExact)
{
    for (const double value : {0.0, -0.0, 1.5, -31.25, 0.1, 100.0, 2147483648.0, 123456.789, 1e-6, 0.000001, 1e22,
                               1e300, -DBL_MAX, 9007199254740993.0})
    {
        expectLibraryBytes([&] { return makeXmlRpcDouble(nullptr, value); });
    }
}

TEST(XmlRpcWriter, WritesBase64AsTheLibraryDoes)
{
    for (const std::size_t nBytes : std::initializer_list<std::size_t>{0,  1,  2,   3,   4,   5,   51,  52,  53,  54,
                                                                       55, 57, 106, 107, 108, 109, 160, 161, 200, 1000})
    {
        if (nBytes == 0) {
            expectLibraryBytes([] { return base64(""); });
            continue;
        }
        const std::string bytes = allBytes(nBytes);
        expectLibraryBytes([&] { return base64(bytes); });
    }
}

TEST(XmlRpcWriter, WritesVectorsAsTheLibraryDoes)
{
    for (const XMLRPC_VECTOR_TYPE eType : {xmlrpc_vector_struct, xmlrpc_vector_array, xmlrpc_vector_mixed}) {
        expectLibraryBytes([&] { return XmlRpcValue(XMLRPC_CreateVector(nullptr, eType)); });
        expectLibraryBytes([&] { return XmlRpcValue(XMLRPC_CreateVector("named", eType)); });
        expectLibraryBytes([&] { return filled(eType, nullptr, 0); });
        expectLibraryBytes([&] { return filled(eType, "named", 3); });
    }
}

TEST(XmlRpcWriter, WritesUnnamedMembersAsTheLibraryDoes)
{
    for (const XMLRPC_VECTOR_TYPE eType : {xmlrpc_vector_struct, xmlrpc_vector_mixed}) {
        expectLibraryBytes([&] {
            XmlRpcValue vector(XMLRPC_CreateVector(nullptr, eType));
            addXmlRpcValue(vector.get(), makeXmlRpcInt(nullptr, 1));
            addXmlRpcValue(vector.get(), makeXmlRpcInt("a", 2));
            addXmlRpcValue(vector.get(), makeXmlRpcInt("", 3));
            return vector;
        });
    }
}

TEST(XmlRpcWriter, WritesFaultsAsTheLibraryDoes)
{
    expectLibraryBytes([] { return XmlRpcValue(XMLRPC_UtilityCreateFault(4, "eTI_E_FAILED, a < b")); });
    expectLibraryBytes([] { return XmlRpcValue(XMLRPC_UtilityCreateFault(-32601, "more")); });
    expectLibraryBytes([] { return makeXmlRpcFault(77, ""); });
    expectLibraryBytes([] {
        XmlRpcValue odd = makeXmlRpcStruct(nullptr);
        addXmlRpcValue(odd.get(), makeXmlRpcString("other", "x"));
        addXmlRpcValue(odd.get(), makeXmlRpcString("faultCode", "x"));
        return odd;
    });
    expectLibraryBytes([] {
        XmlRpcValue noFault = makeXmlRpcStruct(nullptr);
        addXmlRpcValue(noFault.get(), makeXmlRpcInt("FaultCode", 1));
        addXmlRpcValue(noFault.get(), makeXmlRpcInt("faultString", 1));
        return noFault;
    });
    expectLibraryBytes([] {
        XmlRpcValue outer = makeXmlRpcArray(nullptr);
        addXmlRpcValue(outer.get(), makeXmlRpcFault(4, "inner"));
        return outer;
    });
}

TEST(XmlRpcWriter, WritesALogAsTheLibraryDoes)
{
    const std::string sText = writeXmlRpcResponse(logAnswer(200).get());
    EXPECT_EQ(sText, libraryResponse(logAnswer(200)));
    EXPECT_GT(sText.size(), 60000U);
    EXPECT_FALSE(checkXmlRpc(sText, EXmlRpcMessage::Response));
}

TEST(XmlRpcWriter, WritesCallsAsTheLibraryDoes)
{
    const auto parameters = [] {
        XmlRpcValue array = makeXmlRpcArray(nullptr);
        addXmlRpcValue(array.get(), filled(xmlrpc_vector_struct, nullptr, 1));
        addXmlRpcValue(array.get(), makeXmlRpcString(nullptr, "x"));
        return array;
    };
    EXPECT_EQ(writeXmlRpcCall("Unit.Status", parameters().get()), libraryCall("Unit.Status", parameters()));
    EXPECT_EQ(writeXmlRpcCall("a<&b", makeXmlRpcArray(nullptr).get()), libraryCall("a<&b", makeXmlRpcArray(nullptr)));
    EXPECT_EQ(writeXmlRpcCall("Unit.Status", nullptr), libraryCall("Unit.Status", nullptr));
}
