#include "Unit/Text/OneLine.h"

namespace
{
constexpr unsigned char FIRST_PRINTABLE = 0x20;
constexpr unsigned char DELETE = 0x7f;

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U; // of a character in UTF-8
}
} // namespace

std::string oneLine(const std::string& sText, std::size_t nMaximum)
{
    std::string sLine;
    for (const char c : sText) {
        const auto nByte = static_cast<unsigned char>(c);
        const bool bBlank = nByte <= FIRST_PRINTABLE || nByte == DELETE;
        if (!bBlank) {
            sLine += c;
        }
        else if (!sLine.empty() && sLine.back() != ' ') {
            sLine += ' ';
        }
    }
    if (sLine.size() > nMaximum) {
        std::size_t nEnd = nMaximum;
        while (nEnd > 0 && isContinuation(sLine[nEnd])) {
            --nEnd;
        }
        sLine.resize(nEnd);
        sLine += "...";
    }
    while (!sLine.empty() && sLine.back() == ' ') {
        sLine.pop_back();
    }
    return sLine;
}
