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

XmlRpcService::XmlRpcService(MethodTable methods, const XmlRpcLimits& limits)
    : m_methods(std::move(methods)), m_limits(limits)
{
    addSystemMethods();
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
        return makeXmlRpcFault(eXMLRPC_FAULT_UNKNOWN_METHOD, "unknown method " + sMethod);
    }
    return carryOut(*pMethod, sMethod, request);
}
