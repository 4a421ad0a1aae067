#include "Unit/Http/private/LibraryMessages.h"

#include "Unit/Http/private/HeaderText.h"
#include "Unit/Http/private/SocketAddress.h"

#include <netinet/in.h>

#include <algorithm>
#include <exception>

namespace
{
MHD_Result takeHeader(void* pHeaders, MHD_ValueKind /*kind*/, const char* pKey, size_t nKey, const char* pValue,
                      size_t nValue)
{
    auto& headers = *static_cast<decltype(HttpRequest::headers)*>(pHeaders);
    try {
        headers.emplace_back(std::string(pKey, nKey), pValue == nullptr ? std::string() : std::string(pValue, nValue));
    }
    catch (const std::exception&) {
        headers.clear(); // out of memory: a request without headers is refused by whoever wants some
        return MHD_NO;
    }
    return MHD_YES;
}

void deleteText(void* pText)
{
    delete static_cast<std::string*>(pText);
}

bool hasHeader(const HttpResponse& response, const std::string& sName)
{
    return std::any_of(response.headers.begin(), response.headers.end(),
                       [&sName](const auto& header) { return lowerCase(header.first) == sName; });
}

void addUsualHeaders(HttpResponse& response, bool bClose)
{
    response.headers.emplace_back("Content-Type", response.sContentType);
    response.headers.emplace_back("X-Content-Type-Options", "nosniff");
    if (!hasHeader(response, "cache-control")) {
        response.headers.emplace_back("Cache-Control", "no-store");
    }
    if (bClose) {
        response.headers.emplace_back("Connection", "close");
    }
}
} // namespace

HttpRequest headOf(MHD_Connection* pConnection, const char* pUrl, const char* pMethod)
{
    HttpRequest head;
    head.sMethod = pMethod;
    head.sPath = pUrl;
    head.sClientAddress = clientAddress(pConnection);
    MHD_get_connection_values_n(pConnection, MHD_HEADER_KIND, &takeHeader, &head.headers);
    return head;
}

LibraryResponse libraryResponse(HttpResponse response, bool bClose)
{
    addUsualHeaders(response, bClose);
    auto pBody = std::make_unique<std::string>(std::move(response.sBody));
    LibraryResponse result(
        MHD_create_response_from_buffer_with_free_callback_cls(pBody->size(), pBody->data(), &deleteText, pBody.get()),
        &MHD_destroy_response);
    if (result == nullptr) {
        return result;
    }
    static_cast<void>(pBody.release()); // the response's now
    for (const auto& [sName, sValue] : response.headers) {
        if (MHD_add_response_header(result.get(), sName.c_str(), sValue.c_str()) == MHD_NO) {
            return {nullptr, &MHD_destroy_response};
        }
    }
    return result;
}

std::string refusalText(const HttpResponse& response, const std::string& sReason)
{
    HttpResponse complete = response;
    addUsualHeaders(complete, true);
    std::string sText = "HTTP/1.1 " + std::to_string(response.nStatus) + " " + sReason + "\r\n";
    for (const auto& [sName, sValue] : complete.headers) {
        sText.append(sName).append(": ").append(sValue).append("\r\n");
    }
    return sText + "Content-Length: " + std::to_string(response.sBody.size()) + "\r\n\r\n" + response.sBody;
}

std::string clientAddress(MHD_Connection* pConnection)
{
    const MHD_ConnectionInfo* pInfo = MHD_get_connection_info(pConnection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    if (pInfo == nullptr || pInfo->client_addr == nullptr) {
        return {};
    }
    const bool bIpv6 = pInfo->client_addr->sa_family == AF_INET6;
    return numericAddress(pInfo->client_addr, bIpv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in));
}

int socketOf(MHD_Connection* pConnection)
{
    const MHD_ConnectionInfo* pInfo = MHD_get_connection_info(pConnection, MHD_CONNECTION_INFO_CONNECTION_FD);
    return pInfo == nullptr ? -1 : pInfo->connect_fd;
}
