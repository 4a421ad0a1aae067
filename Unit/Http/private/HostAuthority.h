/** @file
 * Hosts as URLs and headers name them.
 */
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/** A numeric address of either family; IPv4 is held as the IPv6 address that maps it, so that equal ones compare so. */
class NumericAddress
{
public:
    /** @return nothing unless the text is an IPv4 or an IPv6 address without brackets; a zone is cut off */
    static std::optional<NumericAddress> parse(std::string_view text);

    bool isLoopback() const;
    bool isWildcard() const;
    bool isIpv4() const;
    bool operator==(const NumericAddress& other) const = default;

private:
    std::array<std::uint8_t, 16> m_bytes{};
};

/** A host: an address, or a name in lower case without the dot of the root. */
struct Host
{
    /** @return the host that a person wrote, such as "Unit7" or "::1" */
    static Host of(std::string_view text);

    bool isLoopback() const; /**< also for the name "localhost" */
    bool operator==(const Host& other) const = default;

    std::optional<NumericAddress> address;
    std::string sName; /**< empty for an address */
};

/** The part of an http URL that says where: a host and a port. */
struct HostAuthority
{
    /** @return nothing for text that is none, or that carries user information; port 80 when none is written */
    static std::optional<HostAuthority> parse(std::string_view text);

    bool operator==(const HostAuthority& other) const = default;

    Host host;
    std::uint16_t nPort = 0;
};
