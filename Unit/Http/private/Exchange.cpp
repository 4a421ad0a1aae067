#include "Unit/Http/private/Exchange.h"

#include "Unit/Http/private/HeaderText.h"
#include "Unit/Http/private/LibraryMessages.h"
#include "Unit/Http/private/SocketState.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

namespace
{
constexpr unsigned int BAD_REQUEST = 400;
constexpr unsigned int CONTENT_TOO_LARGE = 413;
constexpr unsigned int NOT_IMPLEMENTED = 501;
constexpr unsigned int UNAVAILABLE = 503;

std::vector<std::string> valuesOf(const HttpRequest& head, std::string_view name)
{
    std::vector<std::string> values;
    for (const auto& [sKey, sValue] : head.headers) {
        if (lowerCase(sKey) == name) {
            values.emplace_back(trimmed(sValue));
        }
    }
    return values;
}

std::optional<std::uint64_t> lengthOf(const std::string& sValue)
{
    std::uint64_t nLength = 0;
    const auto [pEnd, error] = std::from_chars(sValue.data(), sValue.data() + sValue.size(), nLength);
    if (error != std::errc{} || pEnd != sValue.data() + sValue.size()) {
        return std::nullopt;
    }
    return nLength;
}
} // namespace

Exchange::Exchange(const Server& server, Connection& connection, MHD_Connection* pLibrary, HttpRequest head)
    : m_server(server), m_connection(connection), m_pLibrary(pLibrary), m_request(std::move(head))
{}

bool Exchange::begin()
{
    if (!m_server.book.beginExchange(m_connection)) {
        return false;
    }
    std::optional<HttpResponse> refused = refuseFraming();
    if (refused.has_value()) {
        tellTurnedAway(refused->sBody.substr(0, refused->sBody.find('\n')));
    }
    else {
        const HandlerCall call(m_server.book, m_connection);
        refused = m_server.handler.refuse(m_request);
    }
    if (!refused.has_value()) {
        return true;
    }
    m_bRefused = true;
    return m_server.book.beginAnswer(m_connection) && respond(*refused, true);
}

// Where the body ends has to be beyond doubt, or another reader on the way would find other requests than this one.
std::optional<HttpResponse> Exchange::refuseFraming() const
{
    const auto lengths = valuesOf(m_request, "content-length");
    const auto codings = valuesOf(m_request, "transfer-encoding");
    if (lengths.size() + codings.size() > 1) {
        return httpRefusal(BAD_REQUEST, "send either one Content-Length or one Transfer-Encoding header");
    }
    if (!codings.empty() && lowerCase(codings.front()) != "chunked") {
        return httpRefusal(NOT_IMPLEMENTED, "send no transfer coding but chunked");
    }
    if (lengths.empty()) {
        return std::nullopt;
    }
    const auto length = lengthOf(lengths.front());
    if (!length.has_value()) {
        return httpRefusal(BAD_REQUEST, "send the body's size in bytes as Content-Length");
    }
    return *length > m_server.limits.nMaxBodyBytes ? std::optional(tooLarge()) : std::nullopt;
}

HttpResponse Exchange::tooLarge() const
{
    return httpRefusal(CONTENT_TOO_LARGE,
                       "send a body of at most " + std::to_string(m_server.limits.nMaxBodyBytes) + " bytes");
}

bool Exchange::takeBody(std::string_view part)
{
    if (part.size() <= m_server.limits.nMaxBodyBytes - m_request.sBody.size()) {
        m_request.sBody.append(part);
        return true;
    }
    m_bRefused = true;
    const HttpResponse response = tooLarge();
    tellTurnedAway(response.sBody.substr(0, response.sBody.find('\n')));
    // The library takes no response in the midst of a body, and would read the body to its end first.
    if (m_server.book.beginAnswer(m_connection)) {
        sendAtOnce(m_connection.nSocket, refusalText(response, "Content Too Large"));
    }
    return false;
}

bool Exchange::finish()
{
    if (!m_server.book.beginAnswer(m_connection)) {
        return false;
    }
    HttpResponse response;
    {
        const HandlerCall call(m_server.book, m_connection);
        response = m_server.handler.answer(m_request);
    }
    return respond(response, false);
}

LibraryResponse Exchange::makeResponse(const HttpResponse& response, bool bClose)
{
    if (response.pStream == nullptr) {
        return libraryResponse(response, bClose);
    }
    limitUnsent(m_connection.nSocket);
    return streamedResponse(response, m_server.book, m_connection);
}

bool Exchange::respond(const HttpResponse& response, bool bClose)
{
    const auto refused = response.pStream == nullptr ? std::nullopt : m_server.book.beginStream(m_connection);
    if (refused.has_value()) {
        tellTurnedAway(*refused);
        return respond(httpRefusal(UNAVAILABLE, *refused), bClose);
    }
    const LibraryResponse pResponse = makeResponse(response, bClose);
    if (pResponse != nullptr && MHD_queue_response(m_pLibrary, response.nStatus, pResponse.get()) == MHD_YES) {
        return true;
    }
    tellTurnedAway("the response with status " + std::to_string(response.nStatus) + " cannot be sent");
    return false;
}

void Exchange::end()
{
    if (m_bRefused) {
        lingerUntilPeerEnds(m_connection.nSocket);
    }
    m_server.book.endExchange(m_connection);
}

void Exchange::tellTurnedAway(const std::string& sWhat)
{
    m_server.handler.onTurnedAway(m_request.sClientAddress, m_request.sMethod + " " + m_request.sPath + ": " + sWhat);
}
