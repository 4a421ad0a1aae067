#include "tests/module/log/XmlRpcText.h"

namespace
{
std::string membersOf(XMLRPC_VALUE xVector)
{
    std::string sMembers;
    for (XMLRPC_VALUE xMember = XMLRPC_VectorRewind(xVector); xMember != nullptr; xMember = XMLRPC_VectorNext(xVector))
    {
        sMembers += (sMembers.empty() ? "" : ", ") + textOf(xMember);
    }
    return sMembers;
}

/** @return whether this is a fault as the library makes it, whatever order it gives the two members */
bool isFault(XMLRPC_VALUE xValue)
{
    return XMLRPC_ValueIsFault(xValue) != 0 && XMLRPC_VectorSize(xValue) == 2 &&
           XMLRPC_GetValueType(XMLRPC_VectorGetValueWithID(xValue, "faultCode")) == xmlrpc_int &&
           XMLRPC_GetValueType(XMLRPC_VectorGetValueWithID(xValue, "faultString")) == xmlrpc_string;
}

std::string contentOf(XMLRPC_VALUE xValue)
{
    if (isFault(xValue)) {
        return faultText(XMLRPC_GetValueFaultCode(xValue), XMLRPC_GetValueFaultString(xValue));
    }
    switch (XMLRPC_GetValueTypeEasy(xValue)) {
    case xmlrpc_type_int:
        return std::to_string(XMLRPC_GetValueInt(xValue));
    case xmlrpc_type_string:
        return std::string("\"").append(XMLRPC_GetValueString(xValue)).append("\"");
    case xmlrpc_type_array:
        return std::string("[").append(membersOf(xValue)).append("]");
    case xmlrpc_type_struct:
        return inBraces(membersOf(xValue));
    default:
        return "unexpected type " + std::to_string(XMLRPC_GetValueTypeEasy(xValue));
    }
}
} // namespace

std::string textOf(XMLRPC_VALUE xValue)
{
    if (xValue == nullptr) {
        return "nothing";
    }
    const char* pName = XMLRPC_GetValueID(xValue);
    return (pName != nullptr ? std::string(pName) + ": " : std::string()) + contentOf(xValue);
}

std::string takeText(XMLRPC_VALUE xValue)
{
    std::string sText = textOf(xValue);
    XMLRPC_CleanupValue(xValue);
    return sText;
}

std::string inBraces(const std::string& sText)
{
    return std::string("{").append(sText).append("}");
}

std::string faultText(int nCode, const std::string& sText)
{
    return std::string("fault ").append(std::to_string(nCode)).append(": \"").append(sText).append("\"");
}
