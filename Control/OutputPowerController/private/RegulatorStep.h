/** @file
 * The arithmetic of one regulator step: pure functions on 32-bit powers.
 *
 * Sums, differences and products wrap in 32 bits, as the step has always done on the target. The upper limit is tested
 * first: where limits cross, what is above the upper one gives that, and everything else the lower one.
 */
#pragma once

#include <cstdint>

namespace RegulatorStep
{

/** A closed-loop step never moves by more than this, whatever the gain and the error. */
inline constexpr std::int32_t MAX_STEP = 100000;
/** Production test may go beyond the limits of the control power by this much. */
inline constexpr std::int32_t PRODUCTION_TEST_MARGIN = 2000;

constexpr std::int32_t wrapAdd(std::int32_t nA, std::int32_t nB) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nA) + static_cast<std::uint32_t>(nB));
}

constexpr std::int32_t wrapSubtract(std::int32_t nA, std::int32_t nB) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nA) - static_cast<std::uint32_t>(nB));
}

constexpr std::int32_t wrapMultiply(std::int32_t nA, std::int32_t nB) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nA) * static_cast<std::uint32_t>(nB));
}

/** @return the value, or the limit that it is beyond; the upper limit is tested first */
constexpr std::int32_t limit(std::int32_t nValue, std::int32_t nLower, std::int32_t nUpper) noexcept
{
    if (nValue > nUpper) {
        return nUpper;
    }
    return nValue < nLower ? nLower : nValue;
}

/**
 * @param nGainPercent loop gain
 * @param nPowerError target minus measured power
 * @return the step: positive products are rounded to nearest and negative ones towards zero, because the division
 *         truncates after 50 was added; the loop's resting place depends on this
 */
constexpr std::int32_t gainStep(std::int32_t nGainPercent, std::int32_t nPowerError) noexcept
{
    return wrapAdd(wrapMultiply(nGainPercent, nPowerError), 50) / 100;
}

/** @return the control power after a ramp step, between nTxPmin and nPctrlMax */
constexpr std::int32_t rampPctrl(std::int32_t nPctrl, std::int32_t nGainPercent, std::int32_t nPowerError,
                                 std::int32_t nTxPmin, std::int32_t nPctrlMax) noexcept
{
    return limit(wrapAdd(nPctrl, gainStep(nGainPercent, nPowerError)), nTxPmin, nPctrlMax);
}

/** What a closed-loop step goes by. */
struct ClosedLoopInput
{
    std::int32_t nPtarget;
    std::int32_t nPmeasured;
    std::int32_t nPctrl;
    std::int32_t nGainPercent;
    std::int32_t nPctrlMin;
    std::int32_t nPctrlMax;
    std::int32_t nMaxPctrlStep; /**< step limit, not negative; obeyed when bStepLimited and not in production test */
    bool bStepLimited;
    bool bProductionTestMode;
};

/** What a closed-loop step gives. */
struct ClosedLoopResult
{
    std::int32_t nPowerError;
    std::int32_t nPctrl;          /**< moved from its own last value */
    std::int32_t nPredictedPctrl; /**< moved from the measured power */
};

constexpr ClosedLoopResult closedLoop(const ClosedLoopInput& input) noexcept
{
    const std::int32_t nPowerError = wrapSubtract(input.nPtarget, input.nPmeasured);
    std::int32_t nStep = limit(gainStep(input.nGainPercent, nPowerError), -MAX_STEP, MAX_STEP);
    if (input.bProductionTestMode) {
        return {nPowerError,
                limit(wrapAdd(input.nPctrl, nStep), wrapSubtract(input.nPctrlMin, PRODUCTION_TEST_MARGIN),
                      wrapAdd(input.nPctrlMax, PRODUCTION_TEST_MARGIN)),
                wrapAdd(input.nPmeasured, nStep)};
    }
    if (input.bStepLimited) {
        nStep = limit(nStep, -input.nMaxPctrlStep, input.nMaxPctrlStep);
    }
    return {nPowerError, limit(wrapAdd(input.nPctrl, nStep), input.nPctrlMin, input.nPctrlMax),
            limit(wrapAdd(input.nPmeasured, nStep), input.nPctrlMin, input.nPctrlMax)};
}

} // namespace RegulatorStep
