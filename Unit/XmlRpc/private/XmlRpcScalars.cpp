#include "Unit/XmlRpc/private/XmlRpcScalars.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <system_error>

namespace
{
constexpr std::size_t MAX_METHOD_NAME = 256;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLetterOrDigit(char c)
{
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

void skipSign(std::string_view& sText)
{
    if (!sText.empty() && (sText.front() == '+' || sText.front() == '-')) {
        sText.remove_prefix(1);
    }
}

std::size_t skipDigits(std::string_view& sText)
{
    const auto itEnd = std::find_if_not(sText.begin(), sText.end(), isDigit);
    const auto nDigits = static_cast<std::size_t>(itEnd - sText.begin());
    sText.remove_prefix(nDigits);
    return nDigits;
}

bool skip(std::string_view& sText, char cLower, char cUpper)
{
    if (sText.empty() || (sText.front() != cLower && sText.front() != cUpper)) {
        return false;
    }
    sText.remove_prefix(1);
    return true;
}

bool hasDecimalForm(std::string_view sText)
{
    skipSign(sText);
    std::size_t nDigits = skipDigits(sText);
    if (skip(sText, '.', '.')) {
        nDigits += skipDigits(sText);
    }
    if (nDigits == 0) {
        return false;
    }
    if (skip(sText, 'e', 'E')) {
        skipSign(sText);
        if (skipDigits(sText) == 0) {
            return false;
        }
    }
    return sText.empty();
}

/** from_chars takes no plus. */
std::string_view withoutPlus(std::string_view sText)
{
    return !sText.empty() && sText.front() == '+' ? sText.substr(1) : sText;
}

int number(std::string_view sDigits)
{
    int nValue = 0;
    std::from_chars(sDigits.data(), sDigits.data() + sDigits.size(), nValue);
    return nValue;
}

int daysOfMonth(int nYear, int nMonth)
{
    constexpr std::array<int, 12> DAYS = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool bLeapYear = (nYear % 4 == 0 && nYear % 100 != 0) || nYear % 400 == 0;
    return nMonth == 2 && bLeapYear ? 29 : DAYS[static_cast<std::size_t>(nMonth) - 1];
}
} // namespace

bool isXmlRpcInt(std::string_view sText)
{
    std::string_view sDigits = sText;
    skipSign(sDigits);
    if (skipDigits(sDigits) == 0 || !sDigits.empty()) {
        return false;
    }
    const std::string_view sNumber = withoutPlus(sText);
    std::int32_t nValue = 0;
    return std::from_chars(sNumber.data(), sNumber.data() + sNumber.size(), nValue).ec == std::errc();
}

bool isXmlRpcDouble(std::string_view sText)
{
    if (!hasDecimalForm(sText)) {
        return false;
    }
    const std::string_view sNumber = withoutPlus(sText);
    double value = 0;
    const auto result = std::from_chars(sNumber.data(), sNumber.data() + sNumber.size(), value);
    return result.ec == std::errc() && std::isfinite(value);
}

bool isXmlRpcBoolean(std::string_view sText)
{
    return sText == "0" || sText == "1";
}

bool isXmlRpcDate(std::string_view sText)
{
    constexpr std::string_view FORM = "ddddddddTdd:dd:dd";
    const auto fits = [](char c, char cForm) { return cForm == 'd' ? isDigit(c) : c == cForm; };
    if (!std::equal(sText.begin(), sText.end(), FORM.begin(), FORM.end(), fits)) {
        return false;
    }
    const int nYear = number(sText.substr(0, 4));
    const int nMonth = number(sText.substr(4, 2));
    const int nDay = number(sText.substr(6, 2));
    return nYear >= 1 && nMonth >= 1 && nMonth <= 12 && nDay >= 1 && nDay <= daysOfMonth(nYear, nMonth) &&
           number(sText.substr(9, 2)) < 24 && number(sText.substr(12, 2)) < 60 && number(sText.substr(15, 2)) < 60;
}

bool isXmlRpcBase64(std::string_view sText)
{
    std::size_t nChars = 0;
    std::size_t nPadding = 0;
    for (const char c : sText) {
        if (isSpace(c)) {
            continue;
        }
        if (c == '=') {
            ++nPadding;
        }
        else if (nPadding > 0 || !(isLetterOrDigit(c) || c == '+' || c == '/')) {
            return false;
        }
        ++nChars;
    }
    return nChars % 4 == 0 && nPadding <= 2;
}

bool isXmlRpcMethodName(std::string_view sText)
{
    const auto isAllowed = [](char c) { return isLetterOrDigit(c) || c == '_' || c == '.' || c == ':' || c == '/'; };
    return !sText.empty() && sText.size() <= MAX_METHOD_NAME && std::all_of(sText.begin(), sText.end(), isAllowed);
}
