/** @file
 * Paths of the unit's server that a component answers.
 */
#pragma once

#include "Unit/Http/AccessPolicy.h"
#include "Unit/Http/HttpMessage.h"

#include <optional>
#include <string>

/** A part of the server. Called from the connections' threads, several at once. */
class IHttpSite
{
public:
    virtual ~IHttpSite() = default;

    /** @return whether a path is one of this site's, there or not */
    virtual bool owns(const std::string& sPath) const = 0;

    /** Judges the head of a request for one of its paths. @return what to refuse it with; nothing to accept it */
    virtual std::optional<HttpResponse> refuse(const HttpRequest& head, const AccessPolicy& policy) const = 0;

    /** Answers an accepted request. An exception becomes an answer with status 500. */
    virtual HttpResponse answer(const HttpRequest& request) = 0;
};
