#include "Unit/Http/AccessPolicy.h"

#include "Unit/Http/private/HeaderText.h"
#include "Unit/Http/private/HostAuthority.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace
{
constexpr unsigned int UNAUTHORIZED = 401;
constexpr unsigned int FORBIDDEN = 403;
constexpr unsigned int METHOD_NOT_ALLOWED = 405;
constexpr unsigned int UNSUPPORTED_MEDIA_TYPE = 415;

// A header that is repeated could be read one way here and another way elsewhere, so it counts as wrong.
struct SingleHeader
{
    SingleHeader(const HttpRequest& head, std::string_view name)
    {
        for (const auto& [sKey, sText] : head.headers) {
            if (lowerCase(sKey) == name) {
                ++nCount;
                sValue = trimmed(sText);
            }
        }
    }

    bool isMissing() const { return nCount == 0; }
    bool isSingle() const { return nCount == 1; }

    int nCount = 0;
    std::string sValue;
};

// Takes as long for every text of a length, so that the time tells nothing of how much was right.
bool isToken(std::string_view given, std::string_view token)
{
    unsigned int nDifference = given.size() == token.size() ? 0 : 1;
    for (std::size_t n = 0; n < given.size(); ++n) {
        nDifference |= static_cast<unsigned char>(given[n]) ^ static_cast<unsigned char>(token[n % token.size()]);
    }
    return nDifference == 0;
}

bool carriesToken(const SingleHeader& authorization, std::string_view token)
{
    const std::string_view value = authorization.sValue;
    const auto nBlank = value.find(' ');
    return authorization.isSingle() && nBlank != std::string_view::npos &&
           lowerCase(value.substr(0, nBlank)) == "bearer" && isToken(trimmed(value.substr(nBlank)), token);
}

// Cuts the text up to the next semicolon outside of quotes off its front.
std::string_view nextPart(std::string_view& text)
{
    bool bQuoted = false;
    std::size_t n = 0;
    for (; n < text.size() && (bQuoted || text[n] != ';'); ++n) {
        if (bQuoted && text[n] == '\\') {
            ++n;
        }
        else if (text[n] == '"') {
            bQuoted = !bQuoted;
        }
    }
    const std::string_view part = text.substr(0, n);
    text = n < text.size() ? text.substr(n + 1) : std::string_view();
    return trimmed(part);
}

bool isCharsetTaken(std::string_view parameter)
{
    const auto nEqual = parameter.find('=');
    if (lowerCase(trimmed(parameter.substr(0, nEqual))) != "charset") {
        return true;
    }
    std::string_view value = nEqual == std::string_view::npos ? std::string_view() : parameter.substr(nEqual + 1);
    value = trimmed(value);
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
        value = value.substr(1, value.size() - 2);
    }
    const std::string sCharset = lowerCase(value);
    return sCharset == "utf-8" || sCharset == "us-ascii";
}

/** @param types the first of them is what is recommended */
std::optional<HttpResponse> refuseType(const SingleHeader& type, std::initializer_list<std::string_view> types)
{
    std::string_view rest = type.sValue;
    const std::string sType = lowerCase(nextPart(rest));
    if (!type.isSingle() || std::find(types.begin(), types.end(), sType) == types.end()) {
        return httpRefusal(UNSUPPORTED_MEDIA_TYPE, "send one Content-Type header: " + std::string(*types.begin()));
    }
    while (!rest.empty()) {
        if (!isCharsetTaken(nextPart(rest))) {
            return httpRefusal(UNSUPPORTED_MEDIA_TYPE, "send the body in UTF-8: only charset=utf-8 is understood");
        }
    }
    return std::nullopt;
}

// A page of another machine has that machine's address as its origin, however its address is written: besides being one
// that could be ours it has to be the one that the request went to, or another of the loopback's.
bool isSameOrigin(const std::string& sOrigin, const HostAuthority& host)
{
    constexpr std::string_view SCHEME = "http://";
    if (lowerCase(std::string_view(sOrigin).substr(0, SCHEME.size())) != SCHEME) {
        return false;
    }
    const auto origin = HostAuthority::parse(std::string_view(sOrigin).substr(SCHEME.size()));
    if (!origin.has_value() || origin->nPort != host.nPort) {
        return false;
    }
    return *origin == host || (origin->host.isLoopback() && host.host.isLoopback());
}
HttpResponse refuseMethod(const char* pAdvice, const char* pAllowed)
{
    HttpResponse response = httpRefusal(METHOD_NOT_ALLOWED, pAdvice);
    response.headers.emplace_back("Allow", pAllowed);
    return response;
}
} // namespace

AccessPolicy::AccessPolicy(std::string sAddress, std::uint16_t nPort, std::string sToken)
    : m_sAddress(std::move(sAddress)), m_nPort(nPort), m_sToken(std::move(sToken))
{}

std::optional<HttpResponse> AccessPolicy::refuseXmlPost(const HttpRequest& head) const
{
    auto refused = refusePost(head);
    return refused.has_value() ? std::move(refused)
                               : refuseType(SingleHeader(head, "content-type"), {"text/xml", "application/xml"});
}

std::optional<HttpResponse> AccessPolicy::refuseJsonPost(const HttpRequest& head) const
{
    auto refused = refusePost(head);
    return refused.has_value() ? std::move(refused)
                               : refuseType(SingleHeader(head, "content-type"), {"application/json"});
}

std::optional<HttpResponse> AccessPolicy::refusePost(const HttpRequest& head) const
{
    return head.sMethod == "POST" ? refuseStranger(head, EHttpContent::Unit) : refuseMethod("send a POST", "POST");
}

std::optional<HttpResponse> AccessPolicy::refuseGet(const HttpRequest& head, EHttpContent eContent) const
{
    if (head.sMethod != "GET" && head.sMethod != "HEAD") {
        return refuseMethod("send a GET", "GET, HEAD");
    }
    return refuseStranger(head, eContent);
}

std::optional<HttpResponse> AccessPolicy::refuseStranger(const HttpRequest& head, EHttpContent eContent) const
{
    const SingleHeader host(head, "host");
    if (!host.isSingle() || !isOwnAuthority(host.sValue)) {
        return httpRefusal(
            FORBIDDEN, "the Host header does not name this server: use the address and the port that it listens on");
    }
    const SingleHeader origin(head, "origin");
    if (!origin.isMissing() &&
        (!origin.isSingle() || !isSameOrigin(origin.sValue, HostAuthority::parse(host.sValue).value())))
    {
        return httpRefusal(FORBIDDEN,
                           "pages of another origin may not ask this server: use a page that it served itself, "
                           "or a program that sends no Origin header");
    }
    // A page may be followed to from anywhere. What a foreign page loads without a word of its own, such as a picture,
    // has no Origin; browsers say here whose wish it was.
    const SingleHeader site(head, "sec-fetch-site");
    if (eContent == EHttpContent::Unit && !site.isMissing() &&
        (!site.isSingle() || (site.sValue != "same-origin" && site.sValue != "none")))
    {
        return httpRefusal(FORBIDDEN, "pages of another origin may not ask this server");
    }
    if (eContent == EHttpContent::Unit && !m_sToken.empty() &&
        !carriesToken(SingleHeader(head, "authorization"), m_sToken)) {
        HttpResponse response =
            httpRefusal(UNAUTHORIZED, "send the header \"Authorization: Bearer\" with the unit's token");
        response.headers.emplace_back("WWW-Authenticate", "Bearer");
        return response;
    }
    return std::nullopt;
}

// A name may be made to point here by whoever owns it, an address may not: only names known to be ours are taken, but
// any address where the server does not know by which it is reached.
bool AccessPolicy::isOwnAuthority(const std::string& sAuthority) const
{
    const auto authority = HostAuthority::parse(sAuthority);
    if (!authority.has_value() || authority->nPort != m_nPort) {
        return false;
    }
    const Host own = Host::of(m_sAddress);
    const Host& asked = authority->host;
    if (asked == own || (own.isLoopback() && asked.isLoopback())) {
        return true;
    }
    if (own.address.has_value() && own.address->isWildcard()) {
        return asked.address.has_value() || asked.isLoopback();
    }
    return !own.address.has_value() && !own.isLoopback() && asked.address.has_value();
}

bool isLoopback(const std::string& sAddress)
{
    return Host::of(sAddress).isLoopback();
}
