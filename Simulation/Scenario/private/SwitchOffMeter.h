/** @file
 * How switching off goes, and whether the transmitter is silent then.
 */
#pragma once

#include "Simulation/Scenario/RunMeter.h"

#include <cstdint>

/** Times each switch-off of a run, the longest counts, and watches for output power while the channel is off. */
class SwitchOffMeter
{
public:
    /** Takes in any step. */
    void add(const MeasuredStep& step);

    /** Writes the measures that are its own. @param stepSeconds what a step counts for */
    void fill(RunMeasures& measures, double stepSeconds) const;

private:
    bool m_bUnderWay = false;
    std::int64_t m_nBeganUs = 0;
    std::int64_t m_nLongestUs = -1; // -1: none has ended
    std::uint64_t m_nSwitchOffs = 0;
    std::uint64_t m_nRadiatingOff = 0;
};
