#include "tests/unit/http/HttpClient.h"

#include <fmt/format.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <utility>

namespace
{
std::string lower(std::string sText)
{
    std::transform(sText.begin(), sText.end(), sText.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return sText;
}

Answer parseHead(const std::string& sHead)
{
    Answer answer;
    answer.sHead = sHead;
    std::istringstream lines(sHead);
    std::string sVersion;
    std::string sLine;
    lines >> sVersion >> answer.nStatus;
    std::getline(lines, sLine);
    while (std::getline(lines, sLine)) {
        const auto nColon = sLine.find(": ");
        if (nColon != std::string::npos) {
            answer.headers[lower(sLine.substr(0, nColon))] = sLine.substr(nColon + 2, sLine.find('\r') - nColon - 2);
        }
    }
    return answer;
}
} // namespace

HttpClient::HttpClient(std::uint16_t nPort, int nReceiveBuffer)
    : m_nSocket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const timeval timeout{10, 0};
    setsockopt(m_nSocket, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    setsockopt(m_nSocket, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    if (nReceiveBuffer > 0) {
        setsockopt(m_nSocket, SOL_SOCKET, SO_RCVBUF, &nReceiveBuffer, sizeof nReceiveBuffer);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(nPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(m_nSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(m_nSocket);
        m_nSocket = -1;
    }
}

HttpClient::~HttpClient()
{
    if (m_nSocket >= 0) {
        close(m_nSocket);
    }
}

HttpClient::HttpClient(HttpClient&& other) noexcept
    : m_nSocket(std::exchange(other.m_nSocket, -1)), m_sReceived(std::move(other.m_sReceived))
{}

bool HttpClient::send(const std::string& sText) const
{
    std::size_t nSent = 0;
    while (nSent < sText.size()) {
        const ssize_t nResult = ::send(m_nSocket, sText.data() + nSent, sText.size() - nSent, MSG_NOSIGNAL);
        if (nResult <= 0) {
            return false;
        }
        nSent += static_cast<std::size_t>(nResult);
    }
    return true;
}

bool HttpClient::receiveMore()
{
    std::array<char, 65536> buffer{};
    const ssize_t nReceived = recv(m_nSocket, buffer.data(), buffer.size(), 0);
    if (nReceived <= 0) {
        return false;
    }
    m_sReceived.append(buffer.data(), static_cast<std::size_t>(nReceived));
    return true;
}

Answer HttpClient::receive()
{
    const std::string sEnd = "\r\n\r\n";
    while (m_sReceived.find(sEnd) == std::string::npos) {
        if (!receiveMore()) {
            return {};
        }
    }
    const auto nHead = m_sReceived.find(sEnd) + sEnd.size();
    Answer answer = parseHead(m_sReceived.substr(0, nHead));
    m_sReceived.erase(0, nHead);
    const auto length = answer.headers.find("content-length");
    const std::size_t nLength = length == answer.headers.end() ? 0 : std::stoul(length->second);
    while (m_sReceived.size() < nLength) {
        if (!receiveMore()) {
            return {};
        }
    }
    answer.sBody = m_sReceived.substr(0, nLength);
    m_sReceived.erase(0, nLength);
    return answer;
}

Answer HttpClient::ask(const std::string& sText)
{
    send(sText);
    return receive();
}

std::string HttpClient::receiveSome()
{
    if (m_sReceived.empty()) {
        static_cast<void>(receiveMore());
    }
    return std::exchange(m_sReceived, {});
}

bool HttpClient::isEndedWithin(std::chrono::milliseconds time) const
{
    const auto end = std::chrono::steady_clock::now() + time;
    std::array<char, 65536> buffer{};
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd waited{m_nSocket, POLLIN, 0};
        if (left.count() <= 0 || poll(&waited, 1, static_cast<int>(left.count())) <= 0) {
            return false;
        }
        if (recv(m_nSocket, buffer.data(), buffer.size(), 0) <= 0) {
            return true;
        }
    }
}

std::string post(const std::string& sBody, const std::string& sHeaders)
{
    return "POST /RPC2 HTTP/1.1\r\nHost: here\r\n" + sHeaders + "Content-Length: " + std::to_string(sBody.size()) +
           "\r\n\r\n" + sBody;
}

std::string postChunked(const std::string& sBody)
{
    return fmt::format("POST /RPC2 HTTP/1.1\r\nHost: here\r\nTransfer-Encoding: chunked\r\n\r\n{:x}\r\n{}\r\n0\r\n\r\n",
                       sBody.size(), sBody);
}
