#include "Unit/XmlRpc/private/Base64.h"

#include <cstddef>
#include <cstdint>

namespace
{
constexpr std::string_view ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t LINE_LENGTH = 72; // the line end before a line counts as well
constexpr std::size_t GROUP_BYTES = 3;
constexpr std::size_t GROUP_CHARS = 4;

/** @return the bits of up to three bytes, the first highest */
std::uint32_t bitsOf(std::string_view group)
{
    std::uint32_t nBits = 0;
    for (std::size_t i = 0; i < GROUP_BYTES; ++i) {
        nBits = (nBits << 8U) | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
    }
    return nBits;
}
} // namespace

void appendBase64(std::string& sTo, std::string_view bytes)
{
    std::size_t nColumn = 0;
    for (std::size_t nAt = 0; nAt < bytes.size(); nAt += GROUP_BYTES) {
        const std::string_view group = bytes.substr(nAt, GROUP_BYTES);
        const std::uint32_t nBits = bitsOf(group);
        for (std::size_t i = 0; i < GROUP_CHARS; ++i) {
            sTo += i <= group.size() ? ALPHABET[(nBits >> (18U - 6U * i)) & 0x3FU] : '=';
            if (++nColumn == LINE_LENGTH) {
                sTo += '\n';
                nColumn = 1;
            }
        }
    }
    sTo += '\n';
}
