// Takes the program's own options after those of the tests.
#include "tests/module/differential/Campaign.h"

#include <gtest/gtest.h>

#include <charconv>
#include <iostream>
#include <random>
#include <string>
#include <string_view>

namespace
{
constexpr std::string_view USAGE = "--steps N  operations to compare, at least\n"
                                   "--seed S   seed of the first sequence, or random; each further one has the next\n"
                                   "--progress prints the seed of each sequence before it runs\n";

bool parse(std::string_view sText, std::uint64_t nLeast, std::uint64_t& nValue)
{
    const auto parsed = std::from_chars(sText.data(), sText.data() + sText.size(), nValue);
    return parsed.ec == std::errc() && parsed.ptr == sText.data() + sText.size() && nValue >= nLeast;
}

/** @return what is wrong with an option and its value, or nothing */
std::string take(std::string_view sOption, std::string_view sValue)
{
    Differential::Options& options = Differential::options();
    if (sOption == "--seed" && sValue == "random") {
        options.nSeed = std::random_device()();
        return {};
    }
    if (sOption == "--seed") {
        return parse(sValue, 0, options.nSeed) ? "" : "is neither a number nor random";
    }
    return parse(sValue, 1, options.nSteps) ? "" : "is no number from 1";
}

int refuse(std::string_view sOption, std::string_view sValue, std::string_view sWhy)
{
    std::cerr << "differential test: " << sOption << (sValue.empty() ? "" : " ") << sValue << " " << sWhy << "\n"
              << USAGE;
    return 2;
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    Differential::options().nSteps = DIFFERENTIAL_STEPS;
    testing::InitGoogleTest(&nArguments, ppArguments);
    for (int i = 1; i < nArguments; ++i) {
        const std::string_view sOption = ppArguments[i];
        if (sOption == "--help") {
            std::cout << USAGE;
            return 0;
        }
        if (sOption == "--progress") {
            Differential::options().bProgress = true;
            continue;
        }
        if (sOption != "--steps" && sOption != "--seed") {
            return refuse(sOption, {}, "is no option");
        }
        if (++i == nArguments) {
            return refuse(sOption, {}, "needs a value");
        }
        if (const std::string sWrong = take(sOption, ppArguments[i]); !sWrong.empty()) {
            return refuse(sOption, ppArguments[i], sWrong);
        }
    }
    return RUN_ALL_TESTS();
}
