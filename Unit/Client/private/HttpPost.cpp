#include "Unit/Client/private/HttpPost.h"

#include "Platform/Conversions.h"
#include "Unit/Client/UnitClient.h"
#include "Unit/Text/OneLine.h"

#include <curl/curl.h>
#include <fmt/format.h>

#include <array>
#include <exception>
#include <memory>

namespace
{
constexpr long CONNECT_MS = 3000;

struct CurlRelease
{
    void operator()(CURL* pCurl) const { curl_easy_cleanup(pCurl); }
    void operator()(curl_slist* pList) const { curl_slist_free_all(pList); }
};

/** libcurl as a whole, for as long as the program runs. */
struct CurlLibrary
{
    CurlLibrary() { (void)curl_global_init(CURL_GLOBAL_DEFAULT); }
    ~CurlLibrary() { curl_global_cleanup(); }
    CurlLibrary(const CurlLibrary&) = delete;
    CurlLibrary& operator=(const CurlLibrary&) = delete;
};

using HeaderList = std::unique_ptr<curl_slist, CurlRelease>;

void addHeader(HeaderList& list, const std::string& sHeader)
{
    curl_slist* pGrown = curl_slist_append(list.get(), sHeader.c_str());
    if (pGrown == nullptr) {
        throw std::bad_alloc();
    }
    (void)list.release(); // now part of the grown list
    list.reset(pGrown);
}

extern "C" std::size_t takeBody(char* pData, std::size_t nSize, std::size_t nCount, void* pReply)
{
    std::string& sBody = static_cast<HttpReply*>(pReply)->sBody;
    const std::size_t nBytes = nSize * nCount;
    if (nBytes > MAX_REPLY_BYTES - sBody.size()) {
        return 0; // libcurl then gives up
    }
    sBody.append(pData, nBytes);
    return nBytes;
}

extern "C" int askWhetherToStop(void* pPost, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    const auto& stopRequested = static_cast<HttpPost*>(pPost)->stopRequested;
    return stopRequested && stopRequested() ? 1 : 0;
}

std::string adviceFor(CURLcode eCode)
{
    switch (eCode) {
    case CURLE_COULDNT_CONNECT:
        return "is opc run running, with its test interface at this address?";
    case CURLE_OPERATION_TIMEDOUT:
        return "is the address right, and is the unit alive?";
    default:
        return "is this the address of a unit's test interface?";
    }
}

void setOptions(CURL* pCurl, HttpPost& post, HttpReply& reply, curl_slist* pHeaders, char* pReason)
{
    const long answerMs = static_cast<long>(post.answerSeconds * MS_PER_S);
    curl_easy_setopt(pCurl, CURLOPT_URL, post.sUrl.c_str());
    curl_easy_setopt(pCurl, CURLOPT_PROXY, "");
    curl_easy_setopt(pCurl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(pCurl, CURLOPT_HTTPHEADER, pHeaders);
    curl_easy_setopt(pCurl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(post.sBody.size()));
    curl_easy_setopt(pCurl, CURLOPT_POSTFIELDS, post.sBody.c_str());
    curl_easy_setopt(pCurl, CURLOPT_CONNECTTIMEOUT_MS, CONNECT_MS);
    curl_easy_setopt(pCurl, CURLOPT_TIMEOUT_MS, answerMs);
    curl_easy_setopt(pCurl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(pCurl, CURLOPT_ERRORBUFFER, pReason);
    curl_easy_setopt(pCurl, CURLOPT_WRITEFUNCTION, &takeBody);
    curl_easy_setopt(pCurl, CURLOPT_WRITEDATA, &reply);
    curl_easy_setopt(pCurl, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(pCurl, CURLOPT_XFERINFOFUNCTION, &askWhetherToStop);
    curl_easy_setopt(pCurl, CURLOPT_XFERINFODATA, &post);
}

HeaderList headersOf(const HttpPost& post)
{
    HeaderList headers;
    addHeader(headers, "Content-Type: text/xml");
    addHeader(headers, "Expect:"); // no asking first; a call is small
    if (!post.sToken.empty()) {
        addHeader(headers, "Authorization: Bearer " + post.sToken);
    }
    return headers;
}

[[noreturn]] void fail(const HttpPost& post, CURLcode eCode, const char* pReason)
{
    if (eCode == CURLE_ABORTED_BY_CALLBACK) {
        throw UnitCallStopped();
    }
    std::string sReason = *pReason == '\0' ? curl_easy_strerror(eCode) : pReason;
    if (eCode == CURLE_WRITE_ERROR) {
        sReason = fmt::format("its answer has more than {} MiB", MAX_REPLY_BYTES >> 20U);
    }
    throw UnitUnreachable(fmt::format("no unit answers at {}: {}; {}", post.sUrl, oneLine(sReason), adviceFor(eCode)));
}
} // namespace

HttpReply postXml(const HttpPost& post)
{
    static const CurlLibrary library;
    const std::unique_ptr<CURL, CurlRelease> pCurl(curl_easy_init());
    if (!pCurl) {
        throw std::bad_alloc();
    }
    HttpPost own = post;
    HttpReply reply;
    std::array<char, CURL_ERROR_SIZE> reason{};
    const HeaderList headers = headersOf(own);
    setOptions(pCurl.get(), own, reply, headers.get(), reason.data());
    const CURLcode eCode = curl_easy_perform(pCurl.get());
    if (eCode != CURLE_OK) {
        fail(post, eCode, reason.data());
    }
    curl_easy_getinfo(pCurl.get(), CURLINFO_RESPONSE_CODE, &reply.nStatus);
    return reply;
}
