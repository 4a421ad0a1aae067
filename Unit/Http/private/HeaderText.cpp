#include "Unit/Http/private/HeaderText.h"

#include <algorithm>

std::string lowerCase(std::string_view text)
{
    std::string sLower(text);
    std::transform(sLower.begin(), sLower.end(), sLower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return sLower;
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view BLANKS = " \t";
    const auto nFirst = text.find_first_not_of(BLANKS);
    if (nFirst == std::string_view::npos) {
        return {};
    }
    return text.substr(nFirst, text.find_last_not_of(BLANKS) - nFirst + 1);
}
