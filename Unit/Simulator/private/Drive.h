/** @file
 * A recorded drive in the time of a run.
 */
#pragma once

#include "Simulation/Scenario/Profile.h"
#include "Unit/Simulator/Scenario.h"

#include <cstddef>

/** Reads a drive on and on: from where the run begins in it, and anew at its end where it repeats. */
class Drive
{
public:
    /** @throws ConfigurationError when the file is no profile */
    explicit Drive(const DriveConfiguration& configuration);

    /** @param seconds since the run began; goes back only at a cost */
    ProfilePoint at(double seconds);

private:
    Profile m_profile;
    double m_startSeconds;
    double m_periodSeconds; // 0 for a drive that does not repeat
    double m_rounds = 0.0;  // how often it has begun anew
    std::size_t m_nRow = 0;
};
