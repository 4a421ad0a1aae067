/** @file
 * HTTP requests and responses as the unit's servers see them.
 */
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/** A request. */
struct HttpRequest
{
    std::string sMethod;                                    /**< such as "POST" */
    std::string sPath;                                      /**< decoded, without the query, such as "/RPC2" */
    std::vector<std::pair<std::string, std::string>> query; /**< decoded, in their order */
    std::vector<std::pair<std::string, std::string>> headers;
    std::string sClientAddress; /**< numeric */
    std::string sBody;

    /** @return a header's value; names are compared without case; nothing when the header is missing */
    std::optional<std::string> header(const std::string& sName) const;

    /** @return the first value of that name in the query; nothing when there is none */
    std::optional<std::string> queryValue(const std::string& sName) const;
};

/** A body that is made while it is sent, and has no end that is known before. In the connection's thread. */
class IBodyStream
{
public:
    virtual ~IBodyStream() = default;

    /**
     * Waits for the next part, a quarter of a second at most, so that the server can stop meanwhile.
     * @return the part; empty when there is none yet; nothing when the body is over
     */
    virtual std::optional<std::string> next() = 0;
};

/** A response. */
struct HttpResponse
{
    unsigned int nStatus = 200;
    std::string sContentType = "text/plain; charset=utf-8";
    std::string sBody;
    std::vector<std::pair<std::string, std::string>> headers; /**< besides the type and the length */
    std::shared_ptr<IBodyStream> pStream{};                   /**< sent in place of sBody where there is one */
    std::shared_ptr<void> pKept{};                            /**< let go once sBody is out, or will never be */
};

/** @return a response that says in a line why a request is refused and what to do */
HttpResponse httpRefusal(unsigned int nStatus, const std::string& sText);
