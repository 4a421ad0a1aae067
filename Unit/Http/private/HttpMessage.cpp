#include "Unit/Http/HttpMessage.h"

#include "Unit/Http/private/HeaderText.h"

std::optional<std::string> HttpRequest::header(const std::string& sName) const
{
    const std::string sWanted = lowerCase(sName);
    for (const auto& [sKey, sValue] : headers) {
        if (lowerCase(sKey) == sWanted) {
            return sValue;
        }
    }
    return std::nullopt;
}

std::optional<std::string> HttpRequest::queryValue(const std::string& sName) const
{
    for (const auto& [sKey, sValue] : query) {
        if (sKey == sName) {
            return sValue;
        }
    }
    return std::nullopt;
}

HttpResponse httpRefusal(unsigned int nStatus, const std::string& sText)
{
    HttpResponse response;
    response.nStatus = nStatus;
    response.sBody = sText + "\n";
    return response;
}
