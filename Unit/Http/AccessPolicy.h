/** @file
 * Who may ask the unit for what.
 */
#pragma once

#include "Unit/Http/HttpMessage.h"

#include <cstdint>
#include <optional>
#include <string>

/** What a request asks for, as far as its right to do so goes. */
enum class EHttpContent
{
    Public, /**< what the program itself brings along, such as the page */
    Unit    /**< what the unit is or does */
};

/** Judges the head of a request, so that neither a stranger nor a foreign web page gets in. */
class AccessPolicy
{
public:
    /**
     * @param sAddress what the server listens on
     * @param sToken what "Authorization: Bearer" has to carry; empty for no such demand
     */
    AccessPolicy(std::string sAddress, std::uint16_t nPort, std::string sToken);

    /**
     * Judges a POST of a body of one of the XML types.
     *
     * "Host" has to name this server (its address, or a name of the loopback when it listens there, with its port),
     * so that a name that a foreign page lets point here is refused; "Origin", where it is sent, has to be this
     * server's own; and where a browser says with "Sec-Fetch-Site" who wants it, that has to be a page of this server
     * or the user.
     * @return what to refuse it with: 401 (no or a wrong token), 403 (Host, Origin), 405 (another method), 415 (another
     *         content type); nothing when all is well
     */
    std::optional<HttpResponse> refuseXmlPost(const HttpRequest& head) const;

    /** Judges a POST of a JSON body likewise. */
    std::optional<HttpResponse> refuseJsonPost(const HttpRequest& head) const;

    /**
     * Judges a GET or HEAD as refuseXmlPost() does, without a body's type. What is public needs no token, or the page
     * that asks for the token could not be had.
     */
    std::optional<HttpResponse> refuseGet(const HttpRequest& head, EHttpContent eContent) const;

private:
    std::optional<HttpResponse> refusePost(const HttpRequest& head) const;
    std::optional<HttpResponse> refuseStranger(const HttpRequest& head, EHttpContent eContent) const;
    bool isOwnAuthority(const std::string& sAuthority) const;

    std::string m_sAddress;
    std::uint16_t m_nPort;
    std::string m_sToken;
};

/** @return whether a numeric address, or the name "localhost", is of the loopback */
bool isLoopback(const std::string& sAddress);
