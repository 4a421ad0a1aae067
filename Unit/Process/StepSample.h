/** @file
 * What one regulator call of a channel did.
 */
#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

/** One step of one channel, as the regulation thread hands it on. Powers in hundredths of a decibel (dBm). */
struct StepSample
{
    std::uint64_t nTimeUs; /**< the step's deadline, since the first one */
    std::uint32_t nChannelIndex;
    std::uint32_t nChannelNumber;
    std::int32_t nStateBefore; /**< EOPCState */
    std::int32_t nState;       /**< EOPCState after the step */
    std::int32_t nRequestedPower;
    std::int32_t nPtarget;
    std::int32_t nPctrl;
    std::int32_t nPmeasured;
    std::int32_t nPredictedPctrl;
    std::int32_t nPowerError;
    std::int32_t nResult;
    std::int32_t nDetectorState; /**< EOPHDetectorState */
    // Of a running unit's steps; OPC_POWER_UNKNOWN when the handler is not a simulated one.
    std::int32_t nIfPower;
    std::int32_t nRfGain;
    std::array<std::int32_t, 6> reducedGain; /**< of amplifier 1 first */
    float temperatureDegrees;
    float frequencyMhz;
    std::uint32_t nLatenessUs;
    std::uint32_t nOverruns; /**< deadlines skipped since the run began */
    std::uint64_t nSteps;    /**< steps of the channel so far, this one included */
    std::uint64_t nFailedSteps;

    bool operator==(const StepSample&) const = default;
};

static_assert(std::is_trivially_copyable_v<StepSample>);
