#include "Unit/XmlRpc/private/XmlEscape.h"

#include <cstddef>
#include <cstdint>

namespace
{
constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD"; // U+FFFD
constexpr std::uint32_t LAST_CHARACTER = 0x10FFFF;

unsigned char byteAt(std::string_view sText, std::size_t nAt)
{
    return static_cast<unsigned char>(sText[nAt]);
}

/** @return bytes that a character takes which begins so; 0 when none does */
std::size_t sequenceLength(unsigned char cFirst)
{
    if (cFirst < 0x80) {
        return 1;
    }
    if (cFirst < 0xC2 || cFirst > 0xF4) {
        return 0;
    }
    return cFirst < 0xE0 ? 2 : cFirst < 0xF0 ? 3 : 4;
}

/** @return whether XML may hold the character; overlong forms are told by the least value of their length */
bool isXmlCharacter(std::uint32_t nCharacter, std::size_t nLength)
{
    if (nLength == 3) {
        return nCharacter >= 0x800 && (nCharacter < 0xD800 || nCharacter > 0xDFFF) && nCharacter < 0xFFFE;
    }
    return nLength != 4 || (nCharacter >= 0x10000 && nCharacter <= LAST_CHARACTER);
}

/** @return bytes of the character of more than one byte there; 0 when it is broken or not for XML */
std::size_t characterLength(std::string_view sText, std::size_t nAt)
{
    const unsigned char cFirst = byteAt(sText, nAt);
    const std::size_t nLength = sequenceLength(cFirst);
    if (nLength == 0 || sText.size() - nAt < nLength) {
        return 0;
    }
    std::uint32_t nCharacter = cFirst & (0x7FU >> nLength);
    for (std::size_t i = 1; i < nLength; ++i) {
        const unsigned char c = byteAt(sText, nAt + i);
        if ((c & 0xC0U) != 0x80U) {
            return 0;
        }
        nCharacter = (nCharacter << 6U) | (c & 0x3FU);
    }
    return isXmlCharacter(nCharacter, nLength) ? nLength : 0;
}

/** @return what stands for a character below 128 instead; empty for itself */
std::string_view reference(char c)
{
    switch (c) {
    case '&':
        return "&#38;";
    case '<':
        return "&#60;";
    case '>':
        return "&#62;";
    case '"':
        return "&#34;";
    case '\r':
        return "&#13;"; // a parser makes a line feed of the character itself
    case '\t':
    case '\n':
        return {};
    default:
        return static_cast<unsigned char>(c) < ' ' ? REPLACEMENT : std::string_view();
    }
}
} // namespace

void appendXmlText(std::string& sTo, std::string_view sText)
{
    std::size_t nFrom = 0; // begin of what needs no change
    const auto replace = [&](std::size_t nAt, std::size_t nLength, std::string_view sBy) {
        sTo.append(sText, nFrom, nAt - nFrom).append(sBy);
        nFrom = nAt + nLength;
    };
    for (std::size_t nAt = 0; nAt < sText.size();) {
        std::size_t nLength = 1;
        if (byteAt(sText, nAt) < 0x80) {
            const std::string_view sBy = reference(sText[nAt]);
            if (!sBy.empty()) {
                replace(nAt, nLength, sBy);
            }
        }
        else {
            nLength = characterLength(sText, nAt);
            if (nLength == 0) {
                nLength = 1;
                replace(nAt, nLength, REPLACEMENT);
            }
        }
        nAt += nLength;
    }
    sTo.append(sText, nFrom);
}
