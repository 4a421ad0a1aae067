/** @file
 * The socket that takes connections.
 */
#pragma once

#include <cstdint>
#include <string>

/** A TCP socket that listens from its constructor on. */
class ListeningSocket
{
public:
    /**
     * @param sAddress numeric, or a name of this machine
     * @param nPort 0 for any that is free
     * @throws ConfigurationError that names address and port, and says what to do
     */
    ListeningSocket(const std::string& sAddress, std::uint16_t nPort);
    ~ListeningSocket();

    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    int descriptor() const { return m_nSocket; }
    std::uint16_t port() const { return m_nPort; }

    /** Refuses connections from now on, also those that wait to be taken. */
    void shutDown() const;

private:
    int m_nSocket = -1;
    std::uint16_t m_nPort = 0;
};
