/** @file
 * A time of load, and what it came to.
 */
#pragma once

#include "benchmarks/test_interface/load/LoadConnection.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <vector>

/** How much load. */
struct LoadSettings
{
    unsigned int nConnections = 1;
    double warmUpSeconds = 1.0; /**< not counted */
    double seconds = 5.0;
    pid_t server = 0; /**< whose processor time is counted */
};

/** What was seen between the end of the warm-up and the end. */
struct LoadResult
{
    double seconds = 0;
    std::vector<std::int64_t> latenciesNs; /**< of each answer, sorted */
    unsigned int nStarved = 0;             /**< connections without an answer */
    double serverProcessorSeconds = 0;
    double ownProcessorSeconds = 0;
    std::size_t nBodyBytes = 0;

    /** @param portion 0.5 for the median. @return microseconds */
    double latencyUs(double portion) const;
};

/** Keeps one request under way on each connection, from one thread. @throws std::runtime_error for a wrong answer */
LoadResult runLoad(const LoadTarget& target, const LoadSettings& settings);
