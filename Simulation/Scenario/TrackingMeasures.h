/** @file
 * How closely a run's measured power followed its target.
 */
#pragma once

#include "Simulation/Scenario/ErrorHistogram.h"

#include <cstdint>

/** Measures over the settled steps of a run; errors are measured minus target in hundredths of a decibel. */
struct TrackingSummary
{
    std::uint64_t nSettledSteps = 0; /**< closed-loop steps that came long enough after a jump to count */
    double meanCentiDb = 0.0;
    double rmsCentiDb = 0.0;
    std::int32_t p99CentiDb = 0;  /**< 99 % of the absolute errors are at most this */
    std::int32_t p999CentiDb = 0; /**< 99.9 % of the absolute errors are at most this */
    std::int32_t maxCentiDb = 0;
    double shareWithinTenCentiDb = 0.0; /**< share of settled steps with an absolute error of at most 0.10 dB */

    std::uint64_t nJumps = 0;        /**< moves of the target by more than 0.2 dB from one step to the next */
    std::uint64_t nJumpsSettled = 0; /**< those after which an absolute error of at most 0.10 dB was reached */
    double meanSettlingSteps = 0.0;  /**< steps from a jump to that error, mean over the settled jumps */
    std::uint32_t maxSettlingSteps = 0;
};

/** Takes a channel's closed-loop steps one by one. Its memory does not grow with the run. */
class TrackingMeasures
{
public:
    /** A jump is a move of the target by more than this between two steps. */
    static constexpr std::int32_t JUMP_CENTI_DB = 20;
    /** Steps after a jump, or after switch-on, that do not count as settled. */
    static constexpr std::uint32_t SETTLING_STEPS = 60;
    /** The error that ends settling after a jump. */
    static constexpr std::int32_t SETTLED_CENTI_DB = 10;

    /** Adds a closed-loop step. */
    void addStep(std::int32_t nPtargetCentiDb, std::int32_t nPmeasuredCentiDb);

    /** The loop was left, by switching off: the next step starts afresh. */
    void interrupt();

    TrackingSummary summary() const;

private:
    void addSettledError(std::int32_t nErrorCentiDb);

    ErrorHistogram m_settledErrors;
    double m_sum = 0.0;
    double m_sumOfSquares = 0.0;
    bool m_bHasTarget = false;
    std::int32_t m_nLastPtarget = 0;
    std::uint32_t m_nStepsSinceJump = 0;
    bool m_bSettling = false;
    std::uint64_t m_nJumps = 0;
    std::uint64_t m_nJumpsSettled = 0;
    std::uint64_t m_nSettlingStepsTotal = 0;
    std::uint32_t m_nMaxSettlingSteps = 0;
};
