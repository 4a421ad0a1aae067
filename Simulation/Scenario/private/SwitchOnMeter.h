/** @file
 * How long switching on takes.
 */
#pragma once

#include "Simulation/Scenario/RunMeter.h"

#include <cstdint>

/** Times each switch-on of a run; the longest counts. */
class SwitchOnMeter
{
public:
    explicit SwitchOnMeter(double settlingBandDb);

    /** Takes in any step. @param errorDb output power less reference */
    void add(const MeasuredStep& step, double errorDb);

    /** Writes the measures that are its own. */
    void fill(RunMeasures& measures) const;

private:
    /** The first time that the error was within a band, counted from the switch-on's first step. */
    struct BandTime
    {
        double bandDb = 0.0;
        bool bOpen = false;
        std::int64_t nLongestUs = -1; // -1: never
        std::uint64_t nTimes = 0;     // how often there was one

        void add(double errorDb, std::int64_t nSinceUs);
    };

    void begin(std::int64_t nTimeUs);

    BandTime m_wide;
    BandTime m_narrow;
    bool m_bUnderWay = false;
    EOPCState m_eLastBefore = eOPC_UNDEFINED;
    EOPCState m_eLast = eOPC_UNDEFINED;
    std::int64_t m_nBeganUs = 0;
    std::uint64_t m_nSwitchOns = 0;
    std::uint64_t m_nRampSteps = 0;
    std::uint64_t m_nMostRampSteps = 0;
};
