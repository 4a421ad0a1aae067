#include "Unit/Text/ShellWord.h"

#include <string_view>

std::string shellWord(const std::string& sText)
{
    static constexpr std::string_view PLAIN =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=./:,@%";
    if (!sText.empty() && sText.find_first_not_of(PLAIN) == std::string::npos) {
        return sText;
    }
    std::string sQuoted = "'";
    for (const char c : sText) {
        sQuoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return sQuoted + "'";
}
