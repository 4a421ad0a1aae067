#include "tests/module/differential/Draws.h"

#include <array>

namespace Differential
{
namespace
{
constexpr std::array<std::int32_t, 22> NOTABLE_POWERS = {
    0,     1,     -1,     99,     100,    101,     -99,    -100,      -101,      -149,          149,
    -9900, -9901, -10000, -10001, 100000, -100000, 500000, INT32_MAX, INT32_MIN, INT32_MAX - 1, -2147480000};
constexpr std::array<std::int32_t, 9> RESULTS = {0, 0, 0, 1, 0x7FFF, 0x8000, 0x8002, INT32_MAX, -1};
constexpr std::array<std::int32_t, 4> FAILURES = {0x8000, 0x8001, 0xFFFFF, INT32_MAX};
} // namespace

std::int32_t Draws::power()
{
    return oneIn(3) ? NOTABLE_POWERS[static_cast<std::size_t>(below(NOTABLE_POWERS.size()))] : between(-4000, 4000);
}

// Every magnitude is equally common.
std::int32_t Draws::any()
{
    const std::uint64_t nDrawn = m_random();
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nDrawn)) >> (nDrawn >> 59);
}

std::int32_t Draws::result()
{
    return RESULTS[static_cast<std::size_t>(below(RESULTS.size()))];
}

std::int32_t Draws::failure()
{
    return FAILURES[static_cast<std::size_t>(below(FAILURES.size()))];
}

std::int32_t Draws::mode()
{
    return oneIn(12) ? any() : below(4);
}

std::int32_t Draws::interval()
{
    const std::int32_t nInterval = oneIn(3) ? any() : between(-10, 120);
    return nInterval == 0 ? 1 : nInterval;
}

std::int32_t Draws::spacingCode()
{
    constexpr std::array<std::int32_t, 36> CODES = {3,   5,   7,   10,   14,   20,   28,   30,   40,  50,  56,   60,
                                                    62,  80,  100, 112,  125,  150,  200,  250,  300, 350, 400,  450,
                                                    500, 600, 750, 1000, 1250, 1500, 1750, 2000, 0,   4,   2001, -28};
    return CODES[static_cast<std::size_t>(below(CODES.size()))];
}
} // namespace Differential
