/** @file
 * One client of the server under load.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/** Where the server is, and what it is asked. */
struct LoadTarget
{
    std::uint16_t nPort = 0; /**< at 127.0.0.1 */
    std::string sBody;       /**< of the request, sent to /RPC2 */

    /** @return why the first answer's body is not the right one; empty when it is */
    std::function<std::string(const std::string& sBody)> whyNotRight;
};

/** A keep-alive connection with at most one request under way. */
class LoadConnection
{
public:
    /** Connects. @param target must outlive the connection. @throws std::system_error */
    explicit LoadConnection(const LoadTarget& target);
    ~LoadConnection();

    LoadConnection(const LoadConnection&) = delete;
    LoadConnection& operator=(const LoadConnection&) = delete;

    int socket() const { return m_nSocket; }

    /** Sends the request. @throws std::system_error */
    void sendRequest();

    /**
     * Takes what has arrived. The first answer is judged by what it says; each one after it has to be the same text.
     * @return whether the answer is whole, and right
     * @throws std::runtime_error when it is not right, or when the server closed the connection
     */
    bool receive();

    /** @return bytes of an answer's body; 0 before the first one */
    std::size_t bodyBytes() const { return m_sFirstBody.size(); }

private:
    bool hasHead();
    void readHead(std::string_view sHead);
    void judge();

    const LoadTarget& m_target;
    int m_nSocket;
    std::string m_sRequest;
    std::string m_sBuffer; // of fixed size
    std::size_t m_nReceived = 0;
    std::size_t m_nHeadBytes = 0; // 0 until the head is whole
    std::size_t m_nBodyBytes = 0;
    std::string m_sFirstBody;
};
