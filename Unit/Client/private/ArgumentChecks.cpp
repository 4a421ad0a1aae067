#include "Unit/Client/private/ArgumentChecks.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace
{
/** @return the whole text as a number, if it is one; not-a-number and infinity are none */
template <class TNumber> std::optional<TNumber> parse(const std::string& sText)
{
    const bool bPlus = sText.size() > 1 && sText[0] == '+' && sText[1] != '-';
    const char* pBegin = sText.data() + (bPlus ? 1 : 0);
    const char* pEnd = sText.data() + sText.size();
    TNumber value{};
    const auto [pStop, eError] = std::from_chars(pBegin, pEnd, value);
    const bool bNumber = eError == std::errc() && pStop == pEnd && std::isfinite(static_cast<double>(value));
    return bNumber ? std::optional<TNumber>(value) : std::nullopt;
}
} // namespace

void onlyWords(CLI::Option& option, const std::vector<std::string>& words)
{
    const std::string sWords = fmt::format("{}", fmt::join(words, ", "));
    option.type_name(fmt::format("{{{}}}", fmt::join(words, ",")))
        ->check(CLI::Validator(
            [words, sWords](const std::string& sText) {
                return std::find(words.begin(), words.end(), sText) != words.end()
                           ? std::string()
                           : fmt::format("\"{}\" is none of {}", sText, sWords);
            },
            ""));
}

void onlyWholeNumbers(CLI::Option& option, const char* pTypeName, int nLowest, int nHighest)
{
    option.type_name(pTypeName)->check(CLI::Validator(
        [nLowest, nHighest](const std::string& sText) {
            const std::optional<int> nValue = parse<int>(sText);
            return nValue && *nValue >= nLowest && *nValue <= nHighest
                       ? std::string()
                       : fmt::format("\"{}\" is not a whole number from {} to {}", sText, nLowest, nHighest);
        },
        ""));
}

void onlyWholeNumbers(CLI::Option& option, const char* pTypeName)
{
    onlyWholeNumbers(option, pTypeName, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
}

void onlyNumbers(CLI::Option& option, const std::string& sTypeName, const std::string& sWord)
{
    option.type_name(sWord.empty() ? sTypeName : fmt::format("{}|{{{}}}", sTypeName, sWord))
        ->check(CLI::Validator(
            [sWord](const std::string& sText) {
                return parse<double>(sText) || (!sWord.empty() && sText == sWord)
                           ? std::string()
                           : fmt::format("\"{}\" is not a number{}{}", sText, sWord.empty() ? "" : " or ", sWord);
            },
            ""));
}

double numberOf(const CLI::Option& option)
{
    const std::optional<double> value = parse<double>(option.as<std::string>());
    if (!value) {
        throw CLI::ConversionError(option.as<std::string>(), option.get_name());
    }
    return *value;
}

int wholeNumberOf(const CLI::Option& option)
{
    const std::optional<int> nValue = parse<int>(option.as<std::string>());
    if (!nValue) {
        throw CLI::ConversionError(option.as<std::string>(), option.get_name());
    }
    return *nValue;
}
