/** @file
 * One request and its answer.
 */
#pragma once

#include "Unit/Http/private/ConnectionBook.h"
#include "Unit/Http/private/LibraryMessages.h"
#include "Unit/Http/private/SafeHandler.h"

#include <microhttpd.h>

#include <optional>
#include <string>
#include <string_view>

/** Takes a request in as it comes and has it answered. In the thread of its connection. */
class Exchange
{
public:
    /** What exchanges share. */
    struct Server
    {
        ConnectionBook& book;
        SafeHandler& handler;
        const HttpLimits& limits;
    };

    Exchange(const Server& server, Connection& connection, MHD_Connection* pLibrary, HttpRequest head);

    // Each returns false when the connection has to be closed without a further word.
    bool begin();
    bool takeBody(std::string_view part);
    bool finish();

    /** Is told that the answer is out, or that there will be none. */
    void end();

private:
    std::optional<HttpResponse> refuseFraming() const;
    HttpResponse tooLarge() const;
    LibraryResponse makeResponse(const HttpResponse& response, bool bClose);
    bool respond(const HttpResponse& response, bool bClose);
    void tellTurnedAway(const std::string& sWhat);

    Server m_server;
    Connection& m_connection;
    MHD_Connection* m_pLibrary;
    HttpRequest m_request;
    bool m_bRefused = false;
};
