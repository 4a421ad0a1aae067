/** @file
 * HTTP requests and responses as the unit's servers see them.
 */
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

/** A request. */
struct HttpRequest
{
    std::string sMethod; /**< such as "POST" */
    std::string sPath;   /**< decoded, without the query, such as "/RPC2" */
    std::vector<std::pair<std::string, std::string>> headers;
    std::string sClientAddress; /**< numeric */
    std::string sBody;

    /** @return a header's value; names are compared without case; nothing when the header is missing */
    std::optional<std::string> header(const std::string& sName) const;
};

/** A response. */
struct HttpResponse
{
    unsigned int nStatus = 200;
    std::string sContentType = "text/plain; charset=utf-8";
    std::string sBody;
    std::vector<std::pair<std::string, std::string>> headers; /**< besides the type and the length */
};

/** @return a response that says in a line why a request is refused and what to do */
HttpResponse httpRefusal(unsigned int nStatus, const std::string& sText);
