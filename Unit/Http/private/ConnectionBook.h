/** @file
 * The connections that are open, and when each has to be done.
 */
#pragma once

#include "Unit/Http/HttpServer.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

/** An open connection. Everything but its socket and its address is the book's. */
struct Connection
{
    using Clock = std::chrono::steady_clock;

    int nSocket = -1;
    std::string sAddress;     // numeric
    Clock::time_point since;  // its begin or the end of its last answer
    Clock::time_point active; // its begin or the end of the handler's last call
    std::size_t nExchanges = 0;
    bool bExchange = false;  // between a request's head and the end of its answer
    bool bHandling = false;  // the handler is at work
    bool bAnswering = false; // the answer is decided on
    bool bStreaming = false; // the answer has no end that is known: no deadline holds, only silence counts
    bool bShutDown = false;
};

/** A connection that took too long. */
struct LateConnection
{
    std::string sAddress;
    std::string sWhat; // empty where there is nothing to tell: a client that merely kept its connection
};

/**
 * Counts connections and ends those that are late. Any thread.
 *
 * A socket is only ever shut down here, never closed, and only between open() and close(): the library closes a
 * descriptor after close() was called for it, so that a descriptor in use again is never hit.
 */
class ConnectionBook
{
public:
    explicit ConnectionBook(const HttpLimits& limits) : m_limits(limits) {}

    /** @return why a client's connection cannot be taken; nothing when it can */
    std::optional<std::string> refuse(const std::string& sAddress) const;

    Connection& open(int nSocket, const std::string& sAddress);
    void close(Connection& connection);

    /** @return false when no request is taken any more */
    bool beginExchange(Connection& connection);
    /** @return false when no answer may begin any more */
    bool beginAnswer(Connection& connection);
    void endExchange(Connection& connection);
    /** @return why an answer cannot be a stream; nothing when it is one now */
    std::optional<std::string> beginStream(Connection& connection);
    /** @return whether the rest of a stream need not be made */
    bool isShutDown(const Connection& connection) const;
    void setHandling(Connection& connection, bool bOn);

    HttpConnections count() const;

    /** Shuts down connections beyond their time. */
    std::vector<LateConnection> shutDownLate();

    /** Blocks until there is a connection. @return false when asked to stop */
    bool waitForConnection(const std::stop_token& stop);

    /** Lets no more answers begin, and shuts down every connection on which none is under way. */
    void beginStop();
    /** Waits for the answers under way, for at most the time given. */
    void waitForAnswers(std::chrono::milliseconds grace);
    void shutDownAll();

private:
    std::optional<std::string> lateness(const Connection& connection, Connection::Clock::time_point now) const;
    static void shutDown(Connection& connection);

    const HttpLimits m_limits;
    mutable std::mutex m_mutex; // guards what follows, the connections' content and the life of their descriptors
    std::condition_variable_any m_changed;
    std::list<Connection> m_connections;
    bool m_bStopping = false;
};

/** Marks the handler at work on a connection. */
class HandlerCall
{
public:
    HandlerCall(ConnectionBook& book, Connection& connection) : m_book(book), m_connection(connection)
    {
        m_book.setHandling(m_connection, true);
    }
    ~HandlerCall() { m_book.setHandling(m_connection, false); }

    HandlerCall(const HandlerCall&) = delete;
    HandlerCall& operator=(const HandlerCall&) = delete;

private:
    ConnectionBook& m_book;
    Connection& m_connection;
};
