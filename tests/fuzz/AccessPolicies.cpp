// Heads of requests, a header in each line, against servers on several addresses: who is let in has said what he must.
#include "Unit/Http/AccessPolicy.h"
#include "tests/fuzz/FuzzTarget.h"

#include <strings.h>

#include <algorithm>

namespace
{
constexpr const char* TOKEN = "0123456789abcdef";

HttpRequest headOf(const std::string& sText)
{
    HttpRequest head;
    for (const std::string& sLine : splitText(sText, '\n')) {
        const std::size_t nColon = sLine.find(':');
        if (nColon == std::string::npos) {
            head.sMethod = sLine;
            continue;
        }
        head.headers.emplace_back(sLine.substr(0, nColon), sLine.substr(nColon + 1));
    }
    return head;
}

std::vector<std::string> valuesOf(const HttpRequest& head, const char* pName)
{
    std::vector<std::string> values;
    for (const auto& [sName, sValue] : head.headers) {
        if (strcasecmp(sName.c_str(), pName) == 0) {
            values.push_back(sValue);
        }
    }
    return values;
}

void checkRefusal(const HttpResponse& refusal)
{
    require(refusal.nStatus == 401 || refusal.nStatus == 403 || refusal.nStatus == 405 || refusal.nStatus == 415,
            "a refusal of another status");
    require(!refusal.sBody.empty(), "a refusal that says nothing");
}

/** @return whether one character of a text is there */
bool hasPort(const std::string& sText, const std::string& sPort)
{
    return sText.find(sPort) != std::string::npos;
}

void checkLetIn(const HttpRequest& head, bool bToken)
{
    const std::vector<std::string> hosts = valuesOf(head, "host");
    require(hosts.size() == 1 && hasPort(hosts.front(), "8080"), "let in without a host of ours");
    const std::vector<std::string> origins = valuesOf(head, "origin");
    require(origins.size() <= 1 && (origins.empty() || hasPort(origins.front(), "8080")), "let in from elsewhere");
    if (bToken) {
        const std::vector<std::string> given = valuesOf(head, "authorization");
        require(given.size() == 1 && given.front().find(TOKEN) != std::string::npos, "let in without the token");
    }
}

void checkType(const HttpRequest& head, const char* pType)
{
    const std::vector<std::string> types = valuesOf(head, "content-type");
    std::string sType = types.size() == 1 ? types.front() : "";
    std::transform(sType.begin(), sType.end(), sType.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; });
    require(sType.find(pType) != std::string::npos, "let in with another type: " + sType);
}

void checkPolicy(const AccessPolicy& policy, const HttpRequest& head, bool bToken)
{
    if (const auto refused = policy.refuseXmlPost(head)) {
        checkRefusal(*refused);
    }
    else {
        require(head.sMethod == "POST", "let in with another method");
        checkLetIn(head, bToken);
        checkType(head, "xml");
    }
    if (const auto refused = policy.refuseJsonPost(head)) {
        checkRefusal(*refused);
    }
    else {
        checkLetIn(head, bToken);
        checkType(head, "application/json");
    }
    const auto asPublic = policy.refuseGet(head, EHttpContent::Public);
    const auto asUnit = policy.refuseGet(head, EHttpContent::Unit);
    require(!asPublic || asUnit, "what everybody may not have is had with a token at most");
    if (!asUnit) {
        checkLetIn(head, bToken);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const HttpRequest head = headOf(inputText(pData, nSize));
    for (const char* pAddress : {"127.0.0.1", "::1", "0.0.0.0", "::", "192.168.1.7", "localhost", "unit.example"}) {
        checkPolicy(AccessPolicy(pAddress, 8080, ""), head, false);
        checkPolicy(AccessPolicy(pAddress, 8080, TOKEN), head, true);
    }
    return 0;
}
