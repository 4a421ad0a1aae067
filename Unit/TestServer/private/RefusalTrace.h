/** @file
 * The trace of what the test interface turned away.
 */
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

/** Writes a line per refusal, but so many a second only: a client that floods the unit must not flood its trace. */
class RefusalTrace
{
public:
    static constexpr unsigned int MAX_LINES_PER_SECOND = 10;

    RefusalTrace();

    /** Writes a line; what had to be left out is counted in the next one. Any thread. */
    void write(const std::string& sText);

private:
    std::mutex m_mutex;
    std::chrono::steady_clock::time_point m_secondBegan;
    unsigned int m_nLines = 0;
    std::uint64_t m_nLeftOut = 0;
};
