/** @file
 * Samples for tests.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Unit/Process/StepSample.h"

#include <cstdint>

/** @return a closed-loop step of channel 3, the first of the unit's channels, at 1.5 seconds */
inline StepSample makeSample()
{
    StepSample sample{};
    sample.nTimeUs = 1'500'000;
    sample.nChannelIndex = 0;
    sample.nChannelNumber = 3;
    sample.nStateBefore = eOPC_TX_ON;
    sample.nState = eOPC_TX_ON;
    sample.nRequestedPower = 1000;
    sample.nPtarget = 1012;
    sample.nPctrl = 987;
    sample.nPmeasured = 1017;
    sample.nPredictedPctrl = 1016;
    sample.nPowerError = -5;
    sample.nDetectorState = 1;
    sample.temperatureDegrees = 25.25F;
    sample.frequencyMhz = 5000.5F;
    sample.nLatenessUs = 73;
    sample.nOverruns = 2;
    sample.nSteps = 251;
    sample.nFailedSteps = 4;
    return sample;
}

/** @return a closed-loop step of the unit's channel 10, or of another one by its index, with all of its chain */
inline StepSample stepOnTheAir(std::uint64_t nTimeUs, std::uint32_t nChannelIndex = 0)
{
    StepSample sample{};
    sample.nTimeUs = nTimeUs;
    sample.nChannelIndex = nChannelIndex;
    sample.nChannelNumber = nChannelIndex + 10;
    sample.nStateBefore = eOPC_TX_ON;
    sample.nState = eOPC_TX_ON;
    sample.nRequestedPower = 1000;
    sample.nPtarget = 1006;
    sample.nPctrl = 1010;
    sample.nPmeasured = 1004;
    sample.nPredictedPctrl = 1008;
    sample.nPowerError = 2;
    sample.nDetectorState = 1;
    sample.nIfPower = -300;
    sample.nRfGain = 3300;
    sample.reducedGain = {1, 2, 3, 4, 5, 6};
    sample.temperatureDegrees = 25.125F;
    sample.frequencyMhz = 5000.5F;
    return sample;
}
