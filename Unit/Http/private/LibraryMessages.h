/** @file
 * Requests and responses between our form and the HTTP library's.
 */
#pragma once

#include "Unit/Http/HttpMessage.h"
#include "Unit/Http/private/ConnectionBook.h"

#include <microhttpd.h>

#include <memory>
#include <string>

using LibraryResponse = std::unique_ptr<MHD_Response, decltype(&MHD_destroy_response)>;

/** @return a request without its body */
HttpRequest headOf(MHD_Connection* pConnection, const char* pUrl, const char* pMethod);

/**
 * Makes a response with the headers that every response carries.
 * @param bClose whether the connection is to be closed after it
 * @return null when the library cannot make it, such as for a header with a line's end in it
 */
LibraryResponse libraryResponse(HttpResponse response, bool bClose);

/**
 * Makes a response whose body is a stream, as libraryResponse() does. It ends when the stream does or its connection is
 * shut down.
 */
LibraryResponse streamedResponse(HttpResponse response, ConnectionBook& book, Connection& connection);

/** @return a refusal as it is sent, for where the library takes no response; the connection is to be closed after it */
std::string refusalText(const HttpResponse& response, const std::string& sReason);

/** @return the numeric address of a connection's peer */
std::string clientAddress(MHD_Connection* pConnection);

int socketOf(MHD_Connection* pConnection);
