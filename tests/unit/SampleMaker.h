/** @file
 * Samples for tests.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Unit/Process/StepSample.h"

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
