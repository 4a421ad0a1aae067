#include "Unit/Http/private/LibraryMessages.h"

#include "Platform/Threads/ThreadRules.h"
#include "Unit/Http/private/HeaderText.h"
#include "Unit/Http/private/SocketAddress.h"

#include <netinet/in.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

namespace
{
using NamedTexts = std::vector<std::pair<std::string, std::string>>;

MHD_Result takeNamedText(void* pTexts, MHD_ValueKind /*kind*/, const char* pKey, size_t nKey, const char* pValue,
                         size_t nValue)
{
    auto& texts = *static_cast<NamedTexts*>(pTexts);
    try {
        texts.emplace_back(std::string(pKey, nKey), pValue == nullptr ? std::string() : std::string(pValue, nValue));
    }
    catch (const std::exception&) {
        texts.clear(); // out of memory: a request without headers is refused by whoever wants some
        return MHD_NO;
    }
    return MHD_YES;
}

/** Gives the library a stream's body piece by piece. */
class StreamSource
{
public:
    static constexpr std::size_t BLOCK_BYTES = std::size_t{16} * 1024;

    StreamSource(std::shared_ptr<IBodyStream> pStream, ConnectionBook& book, Connection& connection)
        : m_pStream(std::move(pStream)), m_book(book), m_connection(connection)
    {}

    // The library would spin on a reader that gives nothing, so this one waits.
    static ssize_t read(void* pThis, std::uint64_t /*nPosition*/, char* pBuffer, size_t nSize)
    {
        const ThreadRoleScope role(EThreadRole::Connection);
        try {
            return static_cast<StreamSource*>(pThis)->give(pBuffer, nSize);
        }
        catch (const std::exception&) {
            return MHD_CONTENT_READER_END_WITH_ERROR;
        }
    }

    static void destroy(void* pThis) { delete static_cast<StreamSource*>(pThis); }

private:
    ssize_t give(char* pBuffer, size_t nSize)
    {
        while (m_nGiven == m_sPart.size()) {
            auto part = m_book.isShutDown(m_connection) ? std::nullopt : m_pStream->next();
            if (!part.has_value()) {
                return MHD_CONTENT_READER_END_OF_STREAM;
            }
            m_sPart = std::move(*part);
            m_nGiven = 0;
        }
        const std::size_t nBytes = m_sPart.copy(pBuffer, nSize, m_nGiven);
        m_nGiven += nBytes;
        return static_cast<ssize_t>(nBytes);
    }

    std::shared_ptr<IBodyStream> m_pStream;
    ConnectionBook& m_book;
    Connection& m_connection;
    std::string m_sPart;
    std::size_t m_nGiven = 0;
};

/** A body while it goes out. */
struct SentBody
{
    std::string sText;
    std::shared_ptr<void> pKept;
};

void deleteBody(void* pBody)
{
    delete static_cast<SentBody*>(pBody);
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
    response.headers.emplace_back("Cross-Origin-Resource-Policy", "same-origin");
    if (!hasHeader(response, "content-security-policy")) {
        response.headers.emplace_back("Content-Security-Policy", "default-src 'none'; frame-ancestors 'none'");
    }
    if (!hasHeader(response, "cache-control")) {
        response.headers.emplace_back("Cache-Control", "no-store");
    }
    if (bClose) {
        response.headers.emplace_back("Connection", "close");
    }
}
LibraryResponse withHeaders(LibraryResponse pLibrary, const HttpResponse& response)
{
    for (const auto& [sName, sValue] : response.headers) {
        if (MHD_add_response_header(pLibrary.get(), sName.c_str(), sValue.c_str()) == MHD_NO) {
            return {nullptr, &MHD_destroy_response};
        }
    }
    return pLibrary;
}
} // namespace

HttpRequest headOf(MHD_Connection* pConnection, const char* pUrl, const char* pMethod)
{
    HttpRequest head;
    head.sMethod = pMethod;
    head.sPath = pUrl;
    head.sClientAddress = clientAddress(pConnection);
    MHD_get_connection_values_n(pConnection, MHD_HEADER_KIND, &takeNamedText, &head.headers);
    MHD_get_connection_values_n(pConnection, MHD_GET_ARGUMENT_KIND, &takeNamedText, &head.query);
    return head;
}

LibraryResponse libraryResponse(HttpResponse response, bool bClose)
{
    addUsualHeaders(response, bClose);
    auto pBody = std::make_unique<SentBody>(SentBody{std::move(response.sBody), std::move(response.pKept)});
    LibraryResponse result(MHD_create_response_from_buffer_with_free_callback_cls(
                               pBody->sText.size(), pBody->sText.data(), &deleteBody, pBody.get()),
                           &MHD_destroy_response);
    if (result == nullptr) {
        return result;
    }
    static_cast<void>(pBody.release()); // the response's now
    return withHeaders(std::move(result), response);
}

LibraryResponse streamedResponse(HttpResponse response, ConnectionBook& book, Connection& connection)
{
    addUsualHeaders(response, true);
    auto pSource = std::make_unique<StreamSource>(std::move(response.pStream), book, connection);
    LibraryResponse result(MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, StreamSource::BLOCK_BYTES,
                                                             &StreamSource::read, pSource.get(),
                                                             &StreamSource::destroy),
                           &MHD_destroy_response);
    if (result == nullptr) {
        return result;
    }
    static_cast<void>(pSource.release()); // the response's now
    return withHeaders(std::move(result), response);
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
