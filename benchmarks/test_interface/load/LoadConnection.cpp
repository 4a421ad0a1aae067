#include "benchmarks/test_interface/load/LoadConnection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace
{
constexpr std::size_t MAX_ANSWER_BYTES = std::size_t{1024} * 1024;
constexpr std::string_view END_OF_HEAD = "\r\n\r\n";

[[noreturn]] void throwSystemError(const char* pWhat)
{
    throw std::system_error(errno, std::generic_category(), pWhat);
}

int connectTo(std::uint16_t nPort)
{
    const int nSocket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (nSocket < 0) {
        throwSystemError("socket");
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(nPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int nOn = 1;
    setsockopt(nSocket, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn);
    if (connect(nSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(nSocket);
        throwSystemError("connect");
    }
    return nSocket;
}

std::string requestText(const LoadTarget& target)
{
    return "POST /RPC2 HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(target.nPort) +
           "\r\nContent-Type: text/xml\r\nContent-Length: " + std::to_string(target.sBody.size()) + "\r\n\r\n" +
           target.sBody;
}

std::string lowerCase(std::string_view sText)
{
    std::string sLower(sText);
    std::transform(sLower.begin(), sLower.end(), sLower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return sLower;
}
} // namespace

LoadConnection::LoadConnection(const LoadTarget& target)
    : m_target(target), m_nSocket(connectTo(target.nPort)), m_sRequest(requestText(target)),
      m_sBuffer(MAX_ANSWER_BYTES, '\0')
{}

LoadConnection::~LoadConnection()
{
    close(m_nSocket);
}

void LoadConnection::sendRequest()
{
    m_nReceived = 0;
    m_nHeadBytes = 0;
    // A request is far smaller than a socket's buffer, which is empty here.
    if (send(m_nSocket, m_sRequest.data(), m_sRequest.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(m_sRequest.size()))
    {
        throwSystemError("send");
    }
}

bool LoadConnection::receive()
{
    const ssize_t nBytes =
        recv(m_nSocket, m_sBuffer.data() + m_nReceived, m_sBuffer.size() - m_nReceived, MSG_DONTWAIT);
    if (nBytes < 0 && errno == EAGAIN) {
        return false;
    }
    if (nBytes < 0) {
        throwSystemError("recv");
    }
    if (nBytes == 0) {
        throw std::runtime_error("the server closed a connection, or its answer is too large");
    }
    m_nReceived += static_cast<std::size_t>(nBytes);
    if (!hasHead() || m_nReceived < m_nHeadBytes + m_nBodyBytes) {
        return false;
    }
    judge();
    return true;
}

bool LoadConnection::hasHead()
{
    if (m_nHeadBytes == 0) {
        const std::size_t nEnd = std::string_view(m_sBuffer.data(), m_nReceived).find(END_OF_HEAD);
        if (nEnd != std::string_view::npos) {
            m_nHeadBytes = nEnd + END_OF_HEAD.size();
            readHead(std::string_view(m_sBuffer.data(), m_nHeadBytes));
        }
    }
    return m_nHeadBytes != 0;
}

void LoadConnection::readHead(std::string_view sHead)
{
    static const std::string LENGTH = "\r\ncontent-length:";
    const std::string sLower = lowerCase(sHead);
    const std::size_t nLength = sLower.find(LENGTH);
    if (sHead.substr(0, sizeof "HTTP/1.1 200" - 1) != "HTTP/1.1 200" || nLength == std::string::npos) {
        throw std::runtime_error("not a success with a length: " + std::string(sHead));
    }
    constexpr int DECIMAL = 10;
    m_nBodyBytes = std::strtoul(sLower.c_str() + nLength + LENGTH.size(), nullptr, DECIMAL);
}

void LoadConnection::judge()
{
    const std::string_view sBody(m_sBuffer.data() + m_nHeadBytes, m_nReceived - m_nHeadBytes);
    if (m_sFirstBody.empty()) {
        const std::string sWhyNot = m_target.whyNotRight(std::string(sBody));
        if (!sWhyNot.empty()) {
            throw std::runtime_error("a wrong answer: " + sWhyNot);
        }
        m_sFirstBody = sBody;
    }
    else if (sBody != m_sFirstBody) {
        throw std::runtime_error("an answer differs from the connection's first one");
    }
}
