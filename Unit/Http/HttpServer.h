/** @file
 * The unit's HTTP server.
 */
#pragma once

#include "Unit/Http/HttpMessage.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

/** What the server grants its clients. */
struct HttpLimits
{
    std::size_t nMaxBodyBytes = std::size_t{256} * 1024;
    unsigned int nMaxConnections = 64;
    unsigned int nMaxConnectionsPerAddress = 48;
    unsigned int nMaxStreams = 32; /**< answers without an end at once, so that others find a connection */
    unsigned int nMaxStreamsPerAddress = 24;
    std::chrono::seconds inactivity{10};       /**< without a byte */
    std::chrono::milliseconds deadline{30000}; /**< from a connection's begin or its last answer's end to the next's */
    std::size_t nConnectionMemory = std::size_t{16} * 1024; /**< for a request's head; more is refused */
    std::size_t nThreadStack = std::size_t{1024} * 1024;
    int nNiceness = 10; /**< of the connections' threads, so that they never take a core from the unit's other work */
};

/** Connections that are open. */
struct HttpConnections
{
    std::size_t nOpen = 0;
    std::size_t nStreams = 0; /**< of these, those whose answer is a stream */
};

/** Where the server listens. */
struct HttpServerSettings
{
    std::string sAddress = "127.0.0.1"; /**< numeric, or a name of this machine */
    std::uint16_t nPort = 8080;         /**< 0 for any that is free */
    HttpLimits limits;
};

/** Answers requests. Called from one thread per connection, several at once. */
class IHttpHandler
{
public:
    virtual ~IHttpHandler() = default;

    /**
     * Judges a request by its head, before the body is let in.
     * @return what to refuse it with; nothing to accept it
     */
    virtual std::optional<HttpResponse> refuse(const HttpRequest& head) = 0;

    /** Answers an accepted request, whose body is whole. An exception becomes an answer with status 500. */
    virtual HttpResponse answer(const HttpRequest& request) = 0;

    /** Is told of what the server turned away by itself, such as a body that is too large. @param sWhat one line */
    virtual void onTurnedAway(const std::string& sClientAddress, const std::string& sWhat) = 0;
};

/**
 * An HTTP/1.1 server with a thread per connection, started by its constructor and stopped by its destructor.
 *
 * The handler must outlive it.
 */
class HttpServer
{
public:
    /** @throws ConfigurationError that names address and port when it cannot listen there, and says what to do */
    HttpServer(const HttpServerSettings& settings, IHttpHandler& handler);

    /** Stops as stop() does. */
    ~HttpServer();

    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /** @return the port that it listens on */
    std::uint16_t port() const;

    /** Any thread. */
    HttpConnections connections() const;

    /**
     * Takes no more connections, lets answers under way go out for at most the time given, then closes everything.
     * Harmless when stopped already. Any one thread but a handler's.
     */
    void stop(std::chrono::milliseconds grace = std::chrono::milliseconds(300));

private:
    class Implementation;
    std::unique_ptr<Implementation> m_pImplementation;
};
