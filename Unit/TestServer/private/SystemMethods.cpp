#include "Unit/TestServer/XmlRpcService.h"
#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"

#include <new>
#include <utility>

namespace
{
constexpr const char* MULTICALL = "system.multicall";

XmlRpcValue array(const std::vector<std::string>& texts)
{
    XmlRpcValue result = makeXmlRpcArray(nullptr);
    for (const std::string& sText : texts) {
        addXmlRpcValue(result.get(), makeXmlRpcString(nullptr, sText));
    }
    return result;
}

[[noreturn]] void failParameters(const std::string& sMethod, const std::string& sText)
{
    throw XmlRpcFault(eXMLRPC_FAULT_INVALID_PARAMS, sMethod + ": " + sText);
}

/** @return the only parameter, null when there is another number of them */
XMLRPC_VALUE onlyParameter(XMLRPC_REQUEST request)
{
    XMLRPC_VALUE parameters = XMLRPC_RequestGetData(request);
    return XMLRPC_VectorSize(parameters) == 1 ? XMLRPC_VectorRewind(parameters) : nullptr;
}

/** @return the method that the only parameter names */
const Method& namedMethod(const MethodTable& methods, const MethodCall& call)
{
    XMLRPC_VALUE name = onlyParameter(call.request());
    if (XMLRPC_GetValueType(name) != xmlrpc_string) {
        failParameters(call.method(), "the only parameter must be the name of a method");
    }
    const std::string sName(XMLRPC_GetValueString(name));
    const Method* pMethod = methods.find(sName);
    if (pMethod == nullptr) {
        throw XmlRpcFault(eXMLRPC_FAULT_UNKNOWN_METHOD, call.method() + ": unknown method " + sName);
    }
    return *pMethod;
}

XmlRpcValue signaturesOf(const Method& method)
{
    XmlRpcValue result = makeXmlRpcArray(nullptr);
    for (const std::vector<std::string>& signature : method.signatures) {
        addXmlRpcValue(result.get(), array(signature));
    }
    return result;
}

/** @return the name of the method that one element of a multicall names */
std::string innerMethod(XMLRPC_VALUE call)
{
    XMLRPC_VALUE name = XMLRPC_VectorGetValueWithID_Case(call, "methodName", xmlrpc_case_sensitive);
    if (XMLRPC_GetVectorType(call) != xmlrpc_vector_struct || XMLRPC_GetValueType(name) != xmlrpc_string) {
        failParameters(MULTICALL, "each call must be a struct with a string methodName and an array params");
    }
    std::string sMethod(XMLRPC_GetValueString(name));
    if (sMethod == MULTICALL) {
        failParameters(MULTICALL, "cannot hold another system.multicall");
    }
    return sMethod;
}

/** @return a request of its own for one element of a multicall; handlers read theirs by the library */
XmlRpcRequest innerRequest(XMLRPC_VALUE call, const std::string& sMethod)
{
    XMLRPC_VALUE parameters = XMLRPC_VectorGetValueWithID_Case(call, "params", xmlrpc_case_sensitive);
    if (XMLRPC_GetVectorType(parameters) != xmlrpc_vector_array) {
        failParameters(MULTICALL, "params of " + sMethod + " must be an array");
    }
    XmlRpcRequest request(XMLRPC_RequestNew());
    if (request == nullptr) {
        throw std::bad_alloc();
    }
    XMLRPC_RequestSetRequestType(request.get(), xmlrpc_request_call);
    XMLRPC_RequestSetMethodName(request.get(), sMethod.c_str());
    // The request counts one reference more and gives it back when it goes; the struct keeps its own.
    XMLRPC_RequestSetData(request.get(), parameters);
    return request;
}

/** @return what stands in a multicall's result for a method's: a fault itself, all else in an array of one */
XmlRpcValue wrapped(XmlRpcValue value)
{
    if (XMLRPC_ValueIsFault(value.get()) != 0) {
        return value;
    }
    XmlRpcValue result = makeXmlRpcArray(nullptr);
    XMLRPC_SetValueID_Case(value.get(), "", 0, xmlrpc_case_exact); // the library refuses names in an array
    addXmlRpcValue(result.get(), std::move(value));
    return result;
}

XmlRpcValue tooLong()
{
    return makeXmlRpcFault(eTI_E_FAILED, std::string("eTI_E_FAILED, ") + MULTICALL +
                                             " left this call out: the answers before it came to more than " +
                                             std::to_string(XmlRpcService::MAX_MULTICALL_BYTES) + " bytes");
}
} // namespace

void XmlRpcService::addSystemMethods()
{
    m_methods.add({"system.listMethods", "Names all methods.", {{"array"}}, [this](const MethodCall&) {
                       return array(m_methods.names());
                   }});
    m_methods.add(
        {"system.methodHelp", "Tells what a method does.", {{"string", "string"}}, [this](const MethodCall& call) {
             return makeXmlRpcString(nullptr, namedMethod(m_methods, call).sHelp);
         }});
    m_methods.add({"system.methodSignature",
                   "Gives the types of a method's result and parameters, an array for each way to call it.",
                   {{"array", "string"}},
                   [this](const MethodCall& call) { return signaturesOf(namedMethod(m_methods, call)); }});
    m_methods.add(
        {MULTICALL,
         "Carries out an array of calls, each a struct of methodName and params. Gives an array with an array "
         "of the one result, or a fault's struct, for each.",
         {{"array", "array"}},
         [this](const MethodCall& call) { return multicall(call.request()); }});
}

XmlRpcValue XmlRpcService::multicall(XMLRPC_REQUEST request) const
{
    XMLRPC_VALUE calls = onlyParameter(request);
    if (XMLRPC_GetVectorType(calls) != xmlrpc_vector_array) {
        failParameters(MULTICALL, "the only parameter must be an array of calls");
    }
    if (static_cast<std::size_t>(XMLRPC_VectorSize(calls)) > MAX_CALLS) {
        failParameters(MULTICALL, "more than " + std::to_string(MAX_CALLS) + " calls");
    }
    XmlRpcValue results = makeXmlRpcArray(nullptr);
    std::size_t nBytes = 0;
    for (XMLRPC_VALUE call = XMLRPC_VectorRewind(calls); call != nullptr; call = XMLRPC_VectorNext(calls)) {
        if (nBytes > MAX_MULTICALL_BYTES) {
            addXmlRpcValue(results.get(), tooLong());
            continue;
        }
        XmlRpcValue result = inner(call);
        nBytes += writeXmlRpcResponse(result.get()).size();
        addXmlRpcValue(results.get(), wrapped(std::move(result)));
    }
    return results;
}

XmlRpcValue XmlRpcService::inner(XMLRPC_VALUE call) const
{
    try {
        const std::string sMethod = innerMethod(call);
        const XmlRpcRequest request = innerRequest(call, sMethod);
        return dispatch(sMethod, request.get());
    }
    catch (const XmlRpcFault& fault) {
        return makeXmlRpcFault(fault.code(), fault.what());
    }
}
