#include "Unit/Http/private/SocketAddress.h"

#include <netdb.h>

#include <array>

std::string numericAddress(const sockaddr* pAddress, socklen_t nLength)
{
    std::array<char, NI_MAXHOST> text{};
    if (pAddress == nullptr || getnameinfo(pAddress, nLength, text.data(), static_cast<socklen_t>(text.size()), nullptr,
                                           0, NI_NUMERICHOST) != 0)
    {
        return {};
    }
    return text.data();
}
