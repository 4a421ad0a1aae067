#include "Unit/Client/private/UnitAddress.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Text/OneLine.h"

#include <curl/curl.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <string_view>

namespace
{
constexpr std::string_view METHODS_PATH = "/RPC2";

struct UrlRelease
{
    void operator()(CURLU* pUrl) const { curl_url_cleanup(pUrl); }
    void operator()(char* pText) const { curl_free(pText); }
};

/** @return a part of a URL; empty when it has none */
std::string part(CURLU* pUrl, CURLUPart ePart)
{
    char* pText = nullptr;
    if (curl_url_get(pUrl, ePart, &pText, 0) != CURLUE_OK) {
        return {};
    }
    const std::unique_ptr<char, UrlRelease> owned(pText);
    return pText;
}

[[noreturn]] void refuse(const std::string& sAddress, const std::string& sReason)
{
    throw ConfigurationError(fmt::format("--unit: \"{}\" is no address of a unit: {}; give one such as "
                                         "http://127.0.0.1:8080",
                                         oneLine(sAddress), sReason));
}
} // namespace

std::string testInterfaceUrl(const std::string& sAddress)
{
    const std::unique_ptr<CURLU, UrlRelease> pUrl(curl_url());
    if (!pUrl) {
        throw std::bad_alloc();
    }
    const CURLUcode eResult = curl_url_set(pUrl.get(), CURLUPART_URL, sAddress.c_str(), CURLU_GUESS_SCHEME);
    if (eResult != CURLUE_OK) {
        refuse(sAddress, curl_url_strerror(eResult));
    }
    const std::string sScheme = part(pUrl.get(), CURLUPART_SCHEME);
    if (sScheme != "http" && sScheme != "https") {
        refuse(sAddress, "it has to begin with http:// or https://");
    }
    for (const CURLUPart ePart : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_QUERY, CURLUPART_FRAGMENT}) {
        if (!part(pUrl.get(), ePart).empty()) {
            refuse(sAddress, "user, query and fragment have no place in it");
        }
    }
    std::string sPath = part(pUrl.get(), CURLUPART_PATH);
    while (!sPath.empty() && sPath.back() == '/') {
        sPath.pop_back();
    }
    if (!std::string_view(sPath).ends_with(METHODS_PATH)) {
        sPath += METHODS_PATH;
    }
    (void)curl_url_set(pUrl.get(), CURLUPART_PATH, sPath.c_str(), 0);
    return part(pUrl.get(), CURLUPART_URL);
}
