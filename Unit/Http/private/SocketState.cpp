#include "Unit/Http/private/SocketState.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>

namespace
{
constexpr std::chrono::milliseconds LINGER_TIME{500};
constexpr std::size_t LINGER_BYTES = std::size_t{16} * 1024 * 1024;
constexpr std::size_t DROP_BYTES = std::size_t{256} * 1024;

enum class Drained
{
    Waiting,
    Enough,
    Ended
};

// Takes what is there, up to an amount that is counted down.
Drained drain(int nSocket, std::size_t& nLeft)
{
    std::array<std::byte, 16384> buffer{};
    while (nLeft > 0) {
        const ssize_t nReceived = recv(nSocket, buffer.data(), std::min(buffer.size(), nLeft), MSG_DONTWAIT);
        if (nReceived > 0) {
            nLeft -= static_cast<std::size_t>(nReceived);
        }
        else if (nReceived == 0 || (errno != EAGAIN && errno != EINTR)) {
            return Drained::Ended;
        }
        else if (errno == EAGAIN) {
            return Drained::Waiting;
        }
    }
    return Drained::Enough;
}
} // namespace

void limitUnsent(int nSocket)
{
    constexpr int UNSENT_BYTES = 64 * 1024;
    (void)setsockopt(nSocket, SOL_SOCKET, SO_SNDBUF, &UNSENT_BYTES, sizeof UNSENT_BYTES); // a wish: it works without
}

std::optional<std::chrono::milliseconds> silenceOf(int nSocket)
{
    tcp_info info{};
    socklen_t nLength = sizeof info;
    // What does not know all of it writes less: qemu-user gives the first four bytes.
    if (getsockopt(nSocket, IPPROTO_TCP, TCP_INFO, &info, &nLength) != 0 ||
        nLength < offsetof(tcp_info, tcpi_last_ack_recv))
    {
        return std::nullopt;
    }
    return std::chrono::milliseconds(std::min(info.tcpi_last_data_recv, info.tcpi_last_data_sent));
}

void sendAtOnce(int nSocket, const std::string& sText)
{
    static_cast<void>(send(nSocket, sText.data(), sText.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
}

void dropArrived(int nSocket)
{
    std::size_t nLeft = DROP_BYTES;
    drain(nSocket, nLeft);
}

void lingerUntilPeerEnds(int nSocket)
{
    shutdown(nSocket, SHUT_WR);
    const auto end = std::chrono::steady_clock::now() + LINGER_TIME;
    std::size_t nLeft = LINGER_BYTES;
    while (drain(nSocket, nLeft) == Drained::Waiting) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd waited{nSocket, POLLIN, 0};
        if (left.count() <= 0 || poll(&waited, 1, static_cast<int>(left.count())) == 0) {
            return;
        }
    }
}
