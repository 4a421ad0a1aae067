/** @file
 * Looks for a limit cycle in the output power.
 */
#pragma once

#include "Simulation/Scenario/RunMeasures.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** Looks at windows of the steady output power for something that repeats. */
class LimitCycleFinder
{
public:
    explicit LimitCycleFinder(double intervalMs) : m_intervalMs(intervalMs) {}

    /** Takes in a steady step. */
    void add(std::int32_t nReferenceCentiDbm, double outputDbm)
    {
        if (m_nToSkip > 0) {
            --m_nToSkip;
        }
        else {
            addToWindow(nReferenceCentiDbm, outputDbm);
        }
    }

    /** The steps that follow do not continue those before. */
    void interrupt() { m_nSteps = 0; }

    /** The same, and what follows is worth a look of its own: the output comes to rest elsewhere. */
    void startAfresh()
    {
        m_nSteps = 0;
        m_nToSkip = 0;
    }

    /** Writes the measures that are its own. */
    void fill(RunMeasures& measures) const;

private:
    static constexpr std::size_t WINDOW_STEPS = 512;
    static constexpr std::size_t WINDOW_EVERY_STEPS = 4096;
    static constexpr std::size_t LONGEST_LAG = 128;
    static constexpr std::size_t LAGS_AT_ONCE = 8;
    static constexpr std::size_t LAGS = LONGEST_LAG + LAGS_AT_ONCE; // one more is needed, to know what a peak is

    void addToWindow(std::int32_t nReferenceCentiDbm, double outputDbm);
    void lookAtWindow();
    bool removeTrend();
    void correlate();
    double correlation(std::size_t nLag) const;
    double findPeriod() const;
    double refinedPeriod(std::size_t nPeriod) const;
    double amplitudeOf(double period) const;

    double m_intervalMs;
    std::size_t m_nSteps = 0; // in the window
    std::size_t m_nToSkip = 0;
    std::int32_t m_nLowestReference = 0;
    std::int32_t m_nHighestReference = 0;
    std::array<double, WINDOW_STEPS + LAGS> m_window{}; // zero behind the steps
    std::array<double, LAGS> m_correlations{};          // normalised, by lag
    double m_meanSquare = 0.0;
    bool m_bLooked = false;
    double m_largestDb = 0.0;
    double m_largestMs = NO_MEASURE;
};
