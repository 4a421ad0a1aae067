#include "Unit/XmlRpc/XmlRpcText.h"

#include "Unit/XmlRpc/XmlRpcFault.h"

#include <optional>

XmlRpcRequest parseXmlRpc(const std::string& sText, EXmlRpcMessage eMessage, const XmlRpcLimits& limits)
{
    if (const std::optional<XmlRpcRefusal> refusal = checkXmlRpc(sText, eMessage, limits)) {
        throw XmlRpcFault(refusal->nFaultCode, refusal->sText);
    }
    // The library reads one byte more than the length, the text's terminator here.
    XmlRpcRequest request(XMLRPC_REQUEST_FromXML(sText.c_str(), static_cast<int>(sText.size()), nullptr));
    const XMLRPC_REQUEST_TYPE eType = eMessage == EXmlRpcMessage::Call ? xmlrpc_request_call : xmlrpc_request_response;
    if (request == nullptr || XMLRPC_RequestGetRequestType(request.get()) != eType ||
        XMLRPC_RequestGetData(request.get()) == nullptr)
    {
        throw XmlRpcFault(eXMLRPC_FAULT_NOT_XMLRPC, "the XML-RPC library cannot read the message");
    }
    return request;
}
