#include "Unit/Http/private/ListeningSocket.h"

#include "Platform/ConfigurationError.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace
{
using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

std::string errorText(int nError)
{
    return std::generic_category().message(nError);
}

ConfigurationError failure(const std::string& sAddress, std::uint16_t nPort, const std::string& sWhat,
                           const std::string& sAdvice)
{
    const bool bBrackets = sAddress.find(':') != std::string::npos;
    return ConfigurationError("cannot listen on " + (bBrackets ? "[" + sAddress + "]" : sAddress) + ":" +
                              std::to_string(nPort) + ": " + sWhat + "; " + sAdvice);
}

std::string adviceFor(int nError)
{
    switch (nError) {
    case EADDRINUSE:
        return "use another port, or 0 for any that is free";
    case EACCES:
        return "use a port from 1024 on, or 0 for any that is free";
    case EADDRNOTAVAIL:
    case EAFNOSUPPORT:
        return "use an address of this machine, such as 127.0.0.1";
    default:
        return "use another address, or another port (0 for any that is free)";
    }
}

AddressList resolve(const std::string& sAddress, std::uint16_t nPort)
{
    const char* pAdvice = "use an address of this machine, such as 127.0.0.1";
    if (sAddress.empty()) {
        throw failure(sAddress, nPort, "the address is empty", pAdvice);
    }
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo* pFound = nullptr;
    const int nResult = getaddrinfo(sAddress.c_str(), std::to_string(nPort).c_str(), &hints, &pFound);
    if (nResult != 0) {
        throw failure(sAddress, nPort, nResult == EAI_SYSTEM ? errorText(errno) : gai_strerror(nResult), pAdvice);
    }
    return {pFound, &freeaddrinfo};
}

// -1, with the reason in errno, when it cannot be.
int listenOn(const addrinfo& address)
{
    const int nSocket = socket(address.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, address.ai_protocol);
    if (nSocket < 0) {
        return -1;
    }
    const int nOn = 1;
    if (setsockopt(nSocket, SOL_SOCKET, SO_REUSEADDR, &nOn, sizeof nOn) != 0 ||
        bind(nSocket, address.ai_addr, address.ai_addrlen) != 0 || listen(nSocket, SOMAXCONN) != 0)
    {
        const int nError = errno;
        close(nSocket);
        errno = nError;
        return -1;
    }
    return nSocket;
}

std::uint16_t portOf(int nSocket)
{
    sockaddr_storage address{};
    socklen_t nLength = sizeof address;
    getsockname(nSocket, reinterpret_cast<sockaddr*>(&address), &nLength);
    return ntohs(address.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
                                               : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}
} // namespace

ListeningSocket::ListeningSocket(const std::string& sAddress, std::uint16_t nPort)
{
    const AddressList addresses = resolve(sAddress, nPort);
    int nError = 0;
    // A name of both families is served by IPv4, which is what 127.0.0.1 in a client's settings means.
    for (const int nFamily : {AF_INET, AF_INET6}) {
        for (const addrinfo* pAddress = addresses.get(); pAddress != nullptr; pAddress = pAddress->ai_next) {
            if (pAddress->ai_family == nFamily && m_nSocket < 0) {
                m_nSocket = listenOn(*pAddress);
                nError = m_nSocket < 0 && nError == 0 ? errno : nError;
            }
        }
    }
    if (m_nSocket < 0) {
        throw failure(sAddress, nPort, errorText(nError), adviceFor(nError));
    }
    m_nPort = portOf(m_nSocket);
}

ListeningSocket::~ListeningSocket()
{
    close(m_nSocket);
}

void ListeningSocket::shutDown() const
{
    shutdown(m_nSocket, SHUT_RDWR);
}
