#include "Unit/CommandLine/private/OptionChecks.h"

#include <fmt/format.h>

#include <limits>

CLI::Validator numberRange(double lower, bool bLowerIncluded, double upper)
{
    return CLI::Validator(
        [=](const std::string& sText) {
            double value = std::numeric_limits<double>::quiet_NaN();
            const bool bNumber = CLI::detail::lexical_cast(sText, value);
            const bool bAboveLower = bLowerIncluded ? value >= lower : value > lower;
            return bNumber && bAboveLower && value <= upper
                       ? std::string()
                       : fmt::format("\"{}\" is not a number {} {} and at most {}", sText,
                                     bLowerIncluded ? "of at least" : "greater than", lower, upper);
        },
        "");
}

CLI::Validator oneOf(const std::vector<std::string>& words)
{
    return CLI::Validator(
        [words](const std::string& sText) {
            return std::find(words.begin(), words.end(), sText) != words.end()
                       ? std::string()
                       : fmt::format("\"{}\" is not one of {}", sText, fmt::join(words, ", "));
        },
        "");
}
