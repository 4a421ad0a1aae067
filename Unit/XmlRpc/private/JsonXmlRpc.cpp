#include "Unit/XmlRpc/JsonXmlRpc.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

using nlohmann::ordered_json;

namespace
{
/** @return an int where it fits */
XmlRpcValue fromInteger(const char* pName, const ordered_json& value)
{
    const bool bFits = value.is_number_unsigned()
                           ? value.get<std::uint64_t>() <= std::numeric_limits<std::int32_t>::max()
                           : value.get<std::int64_t>() >= std::numeric_limits<std::int32_t>::min() &&
                                 value.get<std::int64_t>() <= std::numeric_limits<std::int32_t>::max();
    return bFits ? makeXmlRpcInt(pName, value.get<int>()) : makeXmlRpcDouble(pName, value.get<double>());
}

XmlRpcValue fromObject(const char* pName, const ordered_json& value)
{
    XmlRpcValue members = makeXmlRpcStruct(pName);
    for (const auto& item : value.items()) {
        addXmlRpcValue(members.get(), xmlRpcFromJson(item.key().c_str(), item.value()));
    }
    return members;
}

XmlRpcValue fromArray(const char* pName, const ordered_json& value)
{
    XmlRpcValue elements = makeXmlRpcArray(pName);
    for (const ordered_json& element : value) {
        addXmlRpcValue(elements.get(), xmlRpcFromJson(nullptr, element));
    }
    return elements;
}

ordered_json fromVector(XMLRPC_VALUE vector)
{
    const bool bStruct = XMLRPC_GetValueTypeEasy(vector) == xmlrpc_type_struct;
    ordered_json result = bStruct ? ordered_json::object() : ordered_json::array();
    for (XMLRPC_VALUE value = XMLRPC_VectorRewind(vector); value != nullptr; value = XMLRPC_VectorNext(vector)) {
        if (bStruct) {
            const char* pName = XMLRPC_GetValueID(value);
            result[pName == nullptr ? "" : pName] = jsonFromXmlRpc(value);
        }
        else {
            result.push_back(jsonFromXmlRpc(value));
        }
    }
    return result;
}

ordered_json fromBase64(XMLRPC_VALUE value)
{
    const char* pBytes = XMLRPC_GetValueBase64(value);
    const int nBytes = XMLRPC_GetValueStringLen(value);
    return ordered_json::binary(pBytes == nullptr || nBytes <= 0 ? std::vector<std::uint8_t>()
                                                                 : std::vector<std::uint8_t>(pBytes, pBytes + nBytes));
}

std::string textOf(const char* pText)
{
    return pText == nullptr ? "" : pText;
}
} // namespace

XmlRpcValue xmlRpcFromJson(const char* pName, const ordered_json& value)
{
    switch (value.type()) {
    case ordered_json::value_t::object:
        return fromObject(pName, value);
    case ordered_json::value_t::array:
        return fromArray(pName, value);
    case ordered_json::value_t::string:
        return makeXmlRpcString(pName, value.get<std::string>());
    case ordered_json::value_t::boolean:
        return makeXmlRpcBoolean(pName, value.get<bool>());
    case ordered_json::value_t::number_integer:
    case ordered_json::value_t::number_unsigned:
        return fromInteger(pName, value);
    case ordered_json::value_t::number_float:
        return makeXmlRpcDouble(pName, value.get<double>());
    default:
        throw std::invalid_argument(std::string("a call cannot carry ") + value.type_name());
    }
}

ordered_json jsonFromXmlRpc(XMLRPC_VALUE value)
{
    switch (XMLRPC_GetValueType(value)) {
    case xmlrpc_int:
        return XMLRPC_GetValueInt(value);
    case xmlrpc_double:
        return XMLRPC_GetValueDouble(value);
    case xmlrpc_boolean:
        return XMLRPC_GetValueBoolean(value) != 0;
    case xmlrpc_string:
        return textOf(XMLRPC_GetValueString(value));
    case xmlrpc_datetime:
        return textOf(XMLRPC_GetValueDateTime_ISO8601(value));
    case xmlrpc_base64:
        return fromBase64(value);
    case xmlrpc_vector:
        return fromVector(value);
    default:
        return nullptr;
    }
}
