/** @file
 * A handler that cannot throw.
 */
#pragma once

#include "Unit/Http/HttpServer.h"

/** Calls a handler and turns its exceptions into answers, since none may pass through a library written in C. */
class SafeHandler
{
public:
    explicit SafeHandler(IHttpHandler& handler) : m_handler(handler) {}

    std::optional<HttpResponse> refuse(const HttpRequest& head);
    HttpResponse answer(const HttpRequest& request);
    void onTurnedAway(const std::string& sClientAddress, const std::string& sWhat) noexcept;

private:
    HttpResponse failure(const HttpRequest& request, const std::string& sWhat);

    IHttpHandler& m_handler;
};
