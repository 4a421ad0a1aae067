#include "Unit/Client/UnitClient.h"

#include "Unit/Client/private/HttpPost.h"
#include "Unit/Client/private/UnitAddress.h"
#include "Unit/Text/OneLine.h"
#include "Unit/XmlRpc/JsonXmlRpc.h"
#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"

#include <fmt/format.h>

#include <utility>

namespace
{
constexpr long HTTP_OK = 200;
constexpr long HTTP_UNAUTHORIZED = 401;
constexpr std::size_t MAX_REPLY_ELEMENTS = 200'000;
constexpr std::size_t LONGEST_STATUS_TEXT = 200;

XmlRpcLimits replyLimits()
{
    XmlRpcLimits limits;
    limits.nMaxBytes = MAX_REPLY_BYTES;
    limits.nMaxElements = MAX_REPLY_ELEMENTS;
    return limits;
}

std::string callText(const std::string& sMethod, const nlohmann::ordered_json& members)
{
    if (members.empty()) {
        return writeXmlRpcCall(sMethod, nullptr);
    }
    const XmlRpcValue parameters = makeXmlRpcArray(nullptr);
    addXmlRpcValue(parameters.get(), xmlRpcFromJson(nullptr, members));
    return writeXmlRpcCall(sMethod, parameters.get());
}

[[noreturn]] void refuseStatus(const std::string& sUrl, const HttpReply& reply)
{
    const std::string sText = oneLine(reply.sBody, LONGEST_STATUS_TEXT);
    throw UnitRefused(
        fmt::format("{} refused the request: HTTP status {}{}{}{}", sUrl, reply.nStatus, sText.empty() ? "" : ", ",
                    sText, reply.nStatus == HTTP_UNAUTHORIZED ? "; give the unit's token with --token-file" : ""));
}

XmlRpcRequest parseReply(const std::string& sUrl, const std::string& sBody)
{
    try {
        return parseXmlRpc(sBody, EXmlRpcMessage::Response, replyLimits());
    }
    catch (const XmlRpcFault& fault) {
        throw UnitUnreachable(fmt::format("what answers at {} is no unit: its answer is no XML-RPC response ({}); is "
                                          "this the address of a unit's test interface?",
                                          sUrl, oneLine(fault.what())));
    }
}
} // namespace

UnitClient::UnitClient(Settings settings)
    : m_settings(std::move(settings)), m_sUrl(testInterfaceUrl(m_settings.sAddress))
{}

nlohmann::ordered_json UnitClient::call(const std::string& sMethod, const nlohmann::ordered_json& members) const
{
    const HttpReply reply = postXml(
        {m_sUrl, m_settings.sToken, callText(sMethod, members), m_settings.answerSeconds, m_settings.stopRequested});
    if (reply.nStatus != HTTP_OK) {
        refuseStatus(m_sUrl, reply);
    }
    const XmlRpcRequest response = parseReply(m_sUrl, reply.sBody);
    XMLRPC_VALUE value = XMLRPC_RequestGetData(response.get());
    if (XMLRPC_ValueIsFault(value) != 0) {
        const char* pText = XMLRPC_GetValueFaultString(value);
        throw UnitRefused(fmt::format("{} was refused: {} (fault {})", sMethod, oneLine(pText == nullptr ? "" : pText),
                                      XMLRPC_GetValueFaultCode(value)));
    }
    return jsonFromXmlRpc(value);
}
