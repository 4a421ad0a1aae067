#include "Unit/Campaign/private/RunDraw.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <cstdlib>

namespace
{
constexpr std::uint64_t GOLDEN_RATIO = 0x9e3779b97f4a7c15U; // 2^64 over the golden ratio, odd
constexpr double LN2_HIGH = 0x1.62e42feep-1;                // few enough digits that small multiples are exact
constexpr double LN2_LOW = 0x1.a39ef35793c76p-33;
constexpr double HALF_ROOT_TWO = 0x1.6a09e667f3bcdp-1;

std::uint64_t mix(std::uint64_t nState)
{
    nState = (nState ^ (nState >> 30U)) * 0xbf58476d1ce4e5b9U;
    nState = (nState ^ (nState >> 27U)) * 0x94d049bb133111ebU;
    return nState ^ (nState >> 31U);
}

template <std::size_t nCount> double polynomial(const std::array<double, nCount>& coefficients, double x)
{
    double value = 0.0;
    for (const double coefficient : coefficients) {
        value = value * x + coefficient;
    }
    return value;
}

// Rational approximation of the normal quantile by P. J. Acklam: numerator and denominator, middle and tails.
constexpr double TAIL = 0.02425;
constexpr std::array<double, 6> MIDDLE_ABOVE = {-3.969683028665376e+01, 2.209460984245205e+02,  -2.759285104469687e+02,
                                                1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
constexpr std::array<double, 6> MIDDLE_BELOW = {-5.447609879822406e+01, 1.615858368580409e+02,  -1.556989798598866e+02,
                                                6.680131188771972e+01,  -1.328068155288572e+01, 1.0};
constexpr std::array<double, 6> TAIL_ABOVE = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                                              -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
constexpr std::array<double, 5> TAIL_BELOW = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                                              3.754408661907416e+00, 1.0};

double lowerTail(double probability)
{
    const double q = std::sqrt(-2.0 * exactLog(probability)); // a root is exactly rounded on every machine
    return polynomial(TAIL_ABOVE, q) / polynomial(TAIL_BELOW, q);
}
} // namespace

std::uint64_t counterRandom(std::uint64_t nSeed, std::uint64_t nRun, std::uint64_t nStream)
{
    const std::uint64_t nOfSeed = mix(nSeed + GOLDEN_RATIO);
    const std::uint64_t nOfRun = mix(nOfSeed + (nRun + 1) * GOLDEN_RATIO);
    return mix(nOfRun + (nStream + 1) * GOLDEN_RATIO);
}

std::uint64_t streamOf(std::string_view sPath)
{
    std::uint64_t nHash = 0xcbf29ce484222325U;
    for (const char c : sPath) {
        nHash = (nHash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    return nHash;
}

double unitInterval(std::uint64_t nRandom)
{
    return (static_cast<double>(nRandom >> 12U) + 0.5) * 0x1p-52;
}

double exactLog(double value)
{
    int nExponent = 0;
    double fraction = std::frexp(value, &nExponent);
    if (fraction < HALF_ROOT_TWO) {
        fraction *= 2.0;
        --nExponent;
    }
    // ln f = 2 artanh((f - 1) / (f + 1)), whose argument is at most 0.172.
    const double s = (fraction - 1.0) / (fraction + 1.0);
    double sum = 0.0;
    for (int nOdd = 25; nOdd > 1; nOdd -= 2) {
        sum = (sum + 1.0 / nOdd) * (s * s);
    }
    return nExponent * LN2_HIGH + (nExponent * LN2_LOW + 2.0 * (s + s * sum));
}

double exactExp(double value)
{
    const double multiple = std::floor(value / (LN2_HIGH + LN2_LOW) + 0.5);
    const double rest = (value - multiple * LN2_HIGH) - multiple * LN2_LOW; // at most 0.35
    double sum = 1.0;
    for (int nTerm = 18; nTerm > 0; --nTerm) {
        sum = 1.0 + sum * rest / nTerm;
    }
    return std::ldexp(sum, static_cast<int>(multiple));
}

double normalQuantile(double probability)
{
    if (probability < TAIL) {
        return lowerTail(probability);
    }
    if (probability > 1.0 - TAIL) {
        return -lowerTail(1.0 - probability);
    }
    const double q = probability - 0.5;
    return q * polynomial(MIDDLE_ABOVE, q * q) / polynomial(MIDDLE_BELOW, q * q);
}

double nineDigits(double value)
{
    return std::strtod(fmt::format("{:.9g}", value).c_str(), nullptr);
}
