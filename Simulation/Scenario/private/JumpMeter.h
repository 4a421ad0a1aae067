/** @file
 * What happens after a jump of the reference, or after switching on.
 */
#pragma once

#include "Simulation/Scenario/RunMeasures.h"

#include <cstdint>

/** Times the settling after each jump and measures how far the output goes beyond its new value. */
class JumpMeter
{
public:
    explicit JumpMeter(double settlingBandDb);

    /** The ramp of a switch-on has ended with this error; closed-loop steps follow. */
    void onRampEnd(double errorDb);

    /** Takes in a closed-loop step. @param errorDb output power less reference */
    void add(std::int64_t nTimeUs, std::int32_t nReferenceCentiDbm, double errorDb);

    /** A step failed: what has to be within the band in a row begins anew. */
    void onFailure() { m_nInBand = 0; }

    /** The closed loop was left. */
    void onLeft();

    /** @return whether the last closed-loop step came long enough after a jump or the switch-on to count as steady */
    bool isSteady() const { return m_nSince >= STEADY_AFTER_STEPS; }

    /** Writes the measures that are its own. */
    void fill(RunMeasures& measures) const;

private:
    static constexpr std::uint32_t STEADY_AFTER_STEPS = 60;

    void onMove(std::int64_t nTimeUs, std::int64_t nMove);
    void watchOvershoot(double sign);
    void endOvershoot();
    void addInBand(std::int64_t nTimeUs, bool bInBand);

    double m_bandDb;
    bool m_bHasReference = false;
    std::int32_t m_nReference = 0;
    std::uint32_t m_nSince = 0; // closed-loop steps since the last jump's last move, or since the switch-on

    bool m_bJumped = false; // since the switch-on
    bool m_bSettling = false;
    std::int64_t m_nJumpUs = 0;
    std::uint32_t m_nInBand = 0; // steps in a row
    std::int64_t m_nInBandUs = 0;
    std::uint64_t m_nJumps = 0;
    std::uint64_t m_nJumpsSettled = 0;
    std::int64_t m_nSettlingTotalUs = 0;
    std::int64_t m_nSettlingMaxUs = 0;

    bool m_bWatching = false;
    double m_sign = 1.0; // of the move whose overshoot is watched
    double m_watchedOvershootDb = 0.0;
    double m_overshootDb = -1.0; // negative: there was none to watch
};
