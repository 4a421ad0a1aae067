#include "Unit/Http/private/SafeHandler.h"

#include <exception>

namespace
{
constexpr unsigned int INTERNAL_SERVER_ERROR = 500;
}

std::optional<HttpResponse> SafeHandler::refuse(const HttpRequest& head)
{
    try {
        return m_handler.refuse(head);
    }
    catch (const std::exception& error) {
        return failure(head, error.what());
    }
    catch (...) {
        return failure(head, "unknown exception");
    }
}

HttpResponse SafeHandler::answer(const HttpRequest& request)
{
    try {
        return m_handler.answer(request);
    }
    catch (const std::exception& error) {
        return failure(request, error.what());
    }
    catch (...) {
        return failure(request, "unknown exception");
    }
}

void SafeHandler::onTurnedAway(const std::string& sClientAddress, const std::string& sWhat) noexcept
{
    try {
        m_handler.onTurnedAway(sClientAddress, sWhat);
    }
    catch (...) { // NOLINT(bugprone-empty-catch): nobody is left to be told
    }
}

HttpResponse SafeHandler::failure(const HttpRequest& request, const std::string& sWhat)
{
    onTurnedAway(request.sClientAddress, request.sMethod + " " + request.sPath + " failed: " + sWhat);
    HttpResponse response;
    response.nStatus = INTERNAL_SERVER_ERROR;
    response.sBody = "the request could not be answered because of an error in the unit\n";
    return response;
}
