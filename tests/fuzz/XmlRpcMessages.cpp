// Any text through the guard: what it lets through, the library parses, our writer writes, and both are stable.
#include "Unit/XmlRpc/JsonXmlRpc.h"
#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <array>

namespace
{
void checkRefusal(const XmlRpcRefusal& refusal)
{
    constexpr std::array<int, 3> CODES = {eXMLRPC_FAULT_NOT_WELL_FORMED, eXMLRPC_FAULT_BAD_ENCODING,
                                          eXMLRPC_FAULT_NOT_XMLRPC};
    require(std::find(CODES.begin(), CODES.end(), refusal.nFaultCode) != CODES.end(), "an unknown fault code");
    require(refusal.sText.starts_with("line "), "a refusal without a line: " + refusal.sText);
    requireOneLine(refusal.sText);
}

std::string written(XMLRPC_REQUEST request, EXmlRpcMessage eMessage)
{
    XMLRPC_VALUE data = XMLRPC_RequestGetData(request);
    return eMessage == EXmlRpcMessage::Call ? writeXmlRpcCall(XMLRPC_RequestGetMethodName(request), data)
                                            : writeXmlRpcResponse(data);
}

/** A response with a member of that name goes out as a fault, which may have no other members. */
bool looksLikeFault(XMLRPC_REQUEST request, EXmlRpcMessage eMessage)
{
    XMLRPC_VALUE data = XMLRPC_RequestGetData(request);
    return eMessage == EXmlRpcMessage::Response && XMLRPC_ValueIsFault(data) == 0 &&
           XMLRPC_VectorGetValueWithID_Case(data, "faultCode", xmlrpc_case_sensitive) != nullptr;
}

void checkMessage(const std::string& sText, EXmlRpcMessage eMessage)
{
    if (const auto refusal = checkXmlRpc(sText, eMessage)) {
        checkRefusal(*refusal);
        return;
    }
    const XmlRpcRequest request = parseXmlRpc(sText, eMessage); // a fault ends the process
    if (looksLikeFault(request.get(), eMessage)) {
        return;
    }
    const std::string sWritten = written(request.get(), eMessage);
    const XmlRpcRequest again = parseXmlRpc(sWritten, eMessage);
    require(written(again.get(), eMessage) == sWritten, "what is written reads as something else: " + sWritten);
    const nlohmann::ordered_json before = jsonFromXmlRpc(XMLRPC_RequestGetData(request.get()));
    const nlohmann::ordered_json after = jsonFromXmlRpc(XMLRPC_RequestGetData(again.get()));
    const bool bNothing = before.is_null() && after.empty(); // a call without params, which may also be empty
    require(before == after || bNothing, "a value has changed: " + sWritten);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    checkMessage(sText, EXmlRpcMessage::Call);
    checkMessage(sText, EXmlRpcMessage::Response);
    return 0;
}
