/** @file
 * A recorded drive in the time of a run.
 */
#pragma once

#include "Simulation/Scenario/Profile.h"
#include "Unit/Simulator/Scenario.h"

#include <cstddef>
#include <cstdint>

/** Reads a drive on and on: from where the run begins in it, and anew at its end where it repeats. */
class Drive
{
public:
    /** @throws ConfigurationError when the file is no profile */
    explicit Drive(const DriveConfiguration& configuration);

    /** @param nNs since the run began; goes back only at a cost */
    ProfilePoint at(std::int64_t nNs);

private:
    Profile m_profile;
    double m_startSeconds;
    std::int64_t m_nLastNs; // the drive's end
    std::int64_t m_nPeriodNs;
    bool m_bRepeat;
    std::int64_t m_nRoundStartNs; // when this round was at the drive's time 0, in the time of the run
    std::size_t m_nRow = 0;
};
