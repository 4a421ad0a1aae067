/** @file
 * A client that sends what a test wants, right or wrong.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

/** An answer as it came; status 0 when the connection ended before one was complete. */
struct Answer
{
    int nStatus = 0;
    std::string sHead;
    std::map<std::string, std::string> headers; /**< names in lower case */
    std::string sBody;
};

/** A TCP connection to a server on 127.0.0.1. Nothing it does blocks for more than ten seconds. */
class HttpClient
{
public:
    /** @param nReceiveBuffer bytes that the system may hold for us unread; 0 for the usual */
    explicit HttpClient(std::uint16_t nPort, int nReceiveBuffer = 0);
    ~HttpClient();

    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;
    HttpClient(HttpClient&& other) noexcept;
    HttpClient& operator=(HttpClient&&) = delete;

    bool isConnected() const { return m_nSocket >= 0; }

    /** @return whether all of it was taken */
    bool send(const std::string& sText) const;
    Answer receive();
    Answer ask(const std::string& sText);

    /** @return what came next, as it came; empty when the connection ended or nothing came in time */
    std::string receiveSome();

    /** Drops what comes in. @return whether the server ended the connection in time */
    bool isEndedWithin(std::chrono::milliseconds time) const;

private:
    bool receiveMore();

    int m_nSocket = -1;
    std::string m_sReceived;
};

/** @return a POST of a body */
std::string post(const std::string& sBody, const std::string& sHeaders = "");
/** @return a POST of a body in one chunk */
std::string postChunked(const std::string& sBody);
