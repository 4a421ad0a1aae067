#include "Unit/TestServer/XmlRpcService.h"

#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"

#include <exception>
#include <utility>

namespace
{
XmlRpcValue internalFault(const std::string& sMethod, const std::string& sText)
{
    return makeXmlRpcFault(eXMLRPC_FAULT_INTERNAL, sMethod + ": " + sText);
}

XmlRpcValue carryOut(const Method& method, const std::string& sMethod, XMLRPC_REQUEST request)
{
    try {
        XmlRpcValue value = method.call(MethodCall(sMethod, request));
        return value != nullptr ? std::move(value) : internalFault(sMethod, "no result");
    }
    catch (const XmlRpcFault& fault) {
        return makeXmlRpcFault(fault.code(), fault.what());
    }
    catch (const std::exception& exception) {
        return internalFault(sMethod, exception.what());
    }
    catch (...) {
        return internalFault(sMethod, "an unknown exception");
    }
}
} // namespace

XmlRpcService::XmlRpcService(MethodTable methods, const XmlRpcLimits& limits, CallListener onCall)
    : m_methods(std::move(methods)), m_limits(limits), m_onCall(std::move(onCall))
{
    addSystemMethods();
    m_calls.expect(m_methods.names());
}

std::string XmlRpcService::answer(const std::string& sBody, const RefusalListener& onRefusal) const
{
    try {
        const XmlRpcRequest request = parseXmlRpc(sBody, EXmlRpcMessage::Call, m_limits);
        const std::lock_guard<std::mutex> turn(m_turn); // until the value has been released
        const XmlRpcValue value = dispatch(XMLRPC_RequestGetMethodName(request.get()), request.get());
        return writeXmlRpcResponse(value.get());
    }
    catch (const XmlRpcFault& refusal) {
        m_calls.countFault(CallCounter::NO_CALL, refusal.code());
        if (onRefusal) {
            onRefusal(refusal.what());
        }
        return writeXmlRpcResponse(makeXmlRpcFault(refusal.code(), refusal.what()).get());
    }
    catch (const std::exception& exception) {
        return writeXmlRpcResponse(makeXmlRpcFault(eXMLRPC_FAULT_INTERNAL, exception.what()).get());
    }
}

XmlRpcValue XmlRpcService::dispatch(const std::string& sMethod, XMLRPC_REQUEST request) const
{
    const Method* pMethod = m_methods.find(sMethod);
    if (pMethod == nullptr) {
        m_calls.countFault(CallCounter::UNKNOWN_METHOD, eXMLRPC_FAULT_UNKNOWN_METHOD);
        return makeXmlRpcFault(eXMLRPC_FAULT_UNKNOWN_METHOD, "unknown method " + sMethod);
    }
    XmlRpcValue value = carryOut(*pMethod, sMethod, request);
    if (XMLRPC_ValueIsFault(value.get()) != 0) {
        m_calls.countFault(sMethod, XMLRPC_GetValueFaultCode(value.get()));
        const char* const pText = XMLRPC_GetValueFaultString(value.get());
        tell(*pMethod, request, pText == nullptr || *pText == '\0' ? "no reason given" : pText);
        return value;
    }
    m_calls.countResult(sMethod);
    tell(*pMethod, request, "");
    return value;
}

void XmlRpcService::tell(const Method& method, XMLRPC_REQUEST request, const std::string& sFault) const
{
    if (m_onCall) {
        m_onCall(method, request, sFault);
    }
}
