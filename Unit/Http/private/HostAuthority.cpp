#include "Unit/Http/private/HostAuthority.h"

#include "Unit/Http/private/HeaderText.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <system_error>

namespace
{
constexpr std::uint16_t HTTP_PORT = 80;
constexpr std::array<std::uint8_t, 12> IPV4_PREFIX = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
constexpr std::uint8_t IPV4_LOOPBACK = 127;

std::optional<std::uint16_t> portOf(std::string_view text)
{
    std::uint16_t nPort = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), nPort);
    if (error != std::errc{} || pEnd != text.data() + text.size() || nPort == 0) {
        return std::nullopt;
    }
    return nPort;
}

bool isNameCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_';
}

// IPv6 is written in brackets, everything else without.
std::optional<Host> hostOf(std::string_view text)
{
    if (!text.empty() && text.front() == '[') {
        const std::string_view inner = text.substr(1, text.size() - 2);
        const auto address = NumericAddress::parse(inner);
        if (text.back() != ']' || inner.find(':') == std::string_view::npos || !address.has_value()) {
            return std::nullopt;
        }
        return Host{address, {}};
    }
    if (text.empty() || !std::all_of(text.begin(), text.end(), isNameCharacter)) {
        return std::nullopt;
    }
    return Host::of(text);
}
} // namespace

std::optional<NumericAddress> NumericAddress::parse(std::string_view text)
{
    const std::string sText(text.substr(0, text.find('%')));
    NumericAddress address;
    if (inet_pton(AF_INET6, sText.c_str(), address.m_bytes.data()) == 1) {
        return address;
    }
    if (text.size() == sText.size() && inet_pton(AF_INET, sText.c_str(), &address.m_bytes[IPV4_PREFIX.size()]) == 1) {
        std::copy(IPV4_PREFIX.begin(), IPV4_PREFIX.end(), address.m_bytes.begin());
        return address;
    }
    return std::nullopt;
}

bool NumericAddress::isIpv4() const
{
    return std::equal(IPV4_PREFIX.begin(), IPV4_PREFIX.end(), m_bytes.begin());
}

bool NumericAddress::isLoopback() const
{
    if (isIpv4()) {
        return m_bytes[IPV4_PREFIX.size()] == IPV4_LOOPBACK;
    }
    return std::memcmp(m_bytes.data(), &in6addr_loopback, m_bytes.size()) == 0;
}

bool NumericAddress::isWildcard() const
{
    const auto nFirst = static_cast<std::ptrdiff_t>(isIpv4() ? IPV4_PREFIX.size() : 0);
    return std::all_of(m_bytes.begin() + nFirst, m_bytes.end(), [](std::uint8_t nByte) { return nByte == 0; });
}

Host Host::of(std::string_view text)
{
    if (text.size() > 1 && text.back() == '.') {
        text.remove_suffix(1);
    }
    const auto address = NumericAddress::parse(text);
    return address.has_value() ? Host{address, {}} : Host{std::nullopt, lowerCase(text)};
}

bool Host::isLoopback() const
{
    return address.has_value() ? address->isLoopback() : sName == "localhost";
}

std::optional<HostAuthority> HostAuthority::parse(std::string_view text)
{
    std::uint16_t nPort = HTTP_PORT;
    const auto nColon = text.rfind(':');
    const auto nBracket = text.rfind(']');
    if (nColon != std::string_view::npos && (nBracket == std::string_view::npos || nColon > nBracket)) {
        const auto written = portOf(text.substr(nColon + 1));
        if (!written.has_value()) {
            return std::nullopt;
        }
        nPort = *written;
        text = text.substr(0, nColon);
    }
    const auto host = hostOf(text);
    if (!host.has_value()) {
        return std::nullopt;
    }
    return HostAuthority{*host, nPort};
}
