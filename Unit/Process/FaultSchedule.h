/** @file
 * When the faults of a unit file come and go.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"

#include <vector>

/** A fault to set on a channel's handler now; kind None clears. */
struct FaultSwitch
{
    double atSeconds; /**< since the run began */
    unsigned int nChannel;
    EHandlerOperation eOperation;
    HandlerFault fault;
};

/** Hands out the switches of a run in the order of their times. */
class FaultSchedule
{
public:
    explicit FaultSchedule(const std::vector<FaultConfiguration>& faults);

    /**
     * Calls a function for every switch that has become due since the last call. Allocates nothing.
     * @param seconds since the run began; never goes back
     */
    template <class TFunction> void forEachDue(double seconds, TFunction function)
    {
        while (m_nNext < m_switches.size() && m_switches[m_nNext].atSeconds <= seconds) {
            function(m_switches[m_nNext]);
            ++m_nNext;
        }
    }

private:
    std::vector<FaultSwitch> m_switches;
    std::size_t m_nNext = 0;
};
