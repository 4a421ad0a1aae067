#include "Unit/Text/OneLine.h"

#include <algorithm>

namespace
{
constexpr unsigned char FIRST_PRINTABLE = 0x20;
constexpr unsigned char DELETE = 0x7f;
constexpr unsigned char LEADS_CONTROLS = 0xc2; // before the 32 from U+0080 on, which some terminals obey
constexpr unsigned char FIRST_CONTINUATION = 0x80;
constexpr unsigned char LAST_CONTROL = 0x9f;
constexpr std::size_t MOST_CONTINUATIONS = 3; // of a character in UTF-8

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U;
}

/** @return bytes of the control character there, or of the blank; 0 for none. UTF-8 has controls of two bytes, too */
std::size_t blankLength(const std::string& sText, std::size_t nAt)
{
    const auto nByte = static_cast<unsigned char>(sText[nAt]);
    if (nByte <= FIRST_PRINTABLE || nByte == DELETE) {
        return 1;
    }
    const auto nNext = nAt + 1 < sText.size() ? static_cast<unsigned char>(sText[nAt + 1]) : 0U;
    return nByte == LEADS_CONTROLS && nNext >= FIRST_CONTINUATION && nNext <= LAST_CONTROL ? 2 : 0;
}
/** @return where to cut so that no character is halved; at the maximum itself in a text that is not UTF-8 */
std::size_t cutBefore(const std::string& sText, std::size_t nMaximum)
{
    for (std::size_t nBack = 0; nBack <= std::min(MOST_CONTINUATIONS, nMaximum); ++nBack) {
        if (!isContinuation(sText[nMaximum - nBack])) {
            return nMaximum - nBack;
        }
    }
    return nMaximum;
}
} // namespace

std::string oneLine(const std::string& sText, std::size_t nMaximum)
{
    std::string sLine;
    for (std::size_t nAt = 0; nAt < sText.size();) {
        const std::size_t nBlank = blankLength(sText, nAt);
        if (nBlank == 0) {
            sLine += sText[nAt];
        }
        else if (!sLine.empty() && sLine.back() != ' ') {
            sLine += ' ';
        }
        nAt += nBlank == 0 ? 1 : nBlank;
    }
    if (sLine.size() > nMaximum) {
        sLine.resize(cutBefore(sLine, nMaximum));
        sLine += "...";
    }
    while (!sLine.empty() && sLine.back() == ' ') {
        sLine.pop_back();
    }
    return sLine;
}
