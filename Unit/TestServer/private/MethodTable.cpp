#include "Unit/TestServer/MethodTable.h"

#include "Unit/XmlRpc/XmlRpcFault.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace
{
XMLRPC_VALUE firstParameter(XMLRPC_REQUEST request)
{
    return XMLRPC_VectorRewind(XMLRPC_RequestGetData(request));
}

bool isStruct(XMLRPC_VALUE value)
{
    return XMLRPC_GetVectorType(value) == xmlrpc_vector_struct;
}

XMLRPC_VALUE memberOf(XMLRPC_VALUE members, const char* pMember)
{
    return members != nullptr ? XMLRPC_VectorGetValueWithID_Case(members, pMember, xmlrpc_case_sensitive) : nullptr;
}

[[noreturn]] void failType(const std::string& sMethod, const char* pMember, std::string_view sType)
{
    throw XmlRpcFault(eXMLRPC_FAULT_INVALID_PARAMS, sMethod + ": " + pMember + " must be " + std::string(sType));
}

[[noreturn]] void failMissing(const std::string& sMethod, const char* pMember)
{
    throw XmlRpcFault(eTI_E_REQUIRED_INPUT_MISSING,
                      "eTI_E_REQUIRED_INPUT_MISSING, " + sMethod + " failed due to missing tag " + pMember);
}

template <typename Value> Value required(std::optional<Value> value, const std::string& sMethod, const char* pMember)
{
    if (!value) {
        failMissing(sMethod, pMember);
    }
    return *std::move(value);
}

std::string joined(const std::vector<std::string>& texts)
{
    std::string sJoined;
    for (const std::string& sText : texts) {
        sJoined += (sJoined.empty() ? "" : ", ") + sText;
    }
    return sJoined.empty() ? "none" : sJoined;
}
} // namespace

MethodCall::MethodCall(std::string sMethod, XMLRPC_REQUEST request) : m_sMethod(std::move(sMethod)), m_request(request)
{
    XMLRPC_VALUE parameter = firstParameter(request);
    m_members = isStruct(parameter) ? parameter : nullptr;
}

bool MethodCall::has(const char* pMember) const
{
    return memberOf(m_members, pMember) != nullptr;
}

std::optional<int> MethodCall::integer(const char* pMember) const
{
    XMLRPC_VALUE value = memberOf(m_members, pMember);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (XMLRPC_GetValueType(value) != xmlrpc_int) {
        failType(m_sMethod, pMember, "an int");
    }
    return XMLRPC_GetValueInt(value);
}

std::optional<double> MethodCall::number(const char* pMember) const
{
    XMLRPC_VALUE value = memberOf(m_members, pMember);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (XMLRPC_GetValueType(value) == xmlrpc_int) {
        return XMLRPC_GetValueInt(value);
    }
    if (XMLRPC_GetValueType(value) != xmlrpc_double) {
        failType(m_sMethod, pMember, "a double");
    }
    return XMLRPC_GetValueDouble(value);
}

std::optional<bool> MethodCall::boolean(const char* pMember) const
{
    XMLRPC_VALUE value = memberOf(m_members, pMember);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (XMLRPC_GetValueType(value) == xmlrpc_boolean) {
        return XMLRPC_GetValueBoolean(value) != 0;
    }
    const bool bInt = XMLRPC_GetValueType(value) == xmlrpc_int;
    const int nValue = XMLRPC_GetValueInt(value);
    if (!bInt || (nValue != 0 && nValue != 1)) {
        failType(m_sMethod, pMember, "a boolean");
    }
    return nValue == 1;
}

std::optional<std::string> MethodCall::text(const char* pMember) const
{
    XMLRPC_VALUE value = memberOf(m_members, pMember);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (XMLRPC_GetValueType(value) != xmlrpc_string) {
        failType(m_sMethod, pMember, "a string");
    }
    return std::string(XMLRPC_GetValueString(value), static_cast<std::size_t>(XMLRPC_GetValueStringLen(value)));
}

int MethodCall::requiredInteger(const char* pMember) const
{
    return required(integer(pMember), m_sMethod, pMember);
}

double MethodCall::requiredNumber(const char* pMember) const
{
    return required(number(pMember), m_sMethod, pMember);
}

bool MethodCall::requiredBoolean(const char* pMember) const
{
    return required(boolean(pMember), m_sMethod, pMember);
}

std::string MethodCall::requiredText(const char* pMember) const
{
    return required(text(pMember), m_sMethod, pMember);
}

void MethodCall::allowOnly(const std::vector<std::string>& members) const
{
    const int nParameters = XMLRPC_VectorSize(XMLRPC_RequestGetData(m_request));
    if (nParameters > 1 || (nParameters == 1 && m_members == nullptr)) {
        throw XmlRpcFault(eXMLRPC_FAULT_INVALID_PARAMS, m_sMethod + ": the only parameter must be a struct");
    }
    if (m_members == nullptr) {
        return;
    }
    for (XMLRPC_VALUE value = XMLRPC_VectorRewind(m_members); value != nullptr; value = XMLRPC_VectorNext(m_members)) {
        const char* pName = XMLRPC_GetValueID(value);
        const std::string sName = pName != nullptr ? pName : "";
        if (std::find(members.begin(), members.end(), sName) == members.end()) {
            throw XmlRpcFault(eXMLRPC_FAULT_INVALID_PARAMS,
                              m_sMethod + ": unknown member \"" + sName + "\"; known members: " + joined(members));
        }
    }
}

void MethodTable::add(Method method)
{
    std::string sName = method.sName;
    m_methods.insert_or_assign(std::move(sName), std::move(method));
}

const Method* MethodTable::find(const std::string& sName) const
{
    const auto itMethod = m_methods.find(sName);
    return itMethod != m_methods.end() ? &itMethod->second : nullptr;
}

std::vector<std::string> MethodTable::names() const
{
    std::vector<std::string> names;
    names.reserve(m_methods.size());
    for (const auto& [sName, method] : m_methods) {
        names.push_back(sName);
    }
    return names;
}
