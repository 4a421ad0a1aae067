/** @file
 * Takes the measures of a run, step by step.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Simulation/Scenario/MeasureSettings.h"
#include "Simulation/Scenario/RunMeasures.h"

#include <cstdint>

/** What the measures are made of: one step of a channel. Powers in hundredths of a dBm unless said otherwise. */
struct MeasuredStep
{
    std::int64_t nTimeUs = 0; /**< the step's deadline, since the run began */
    EOPCState eStateBefore = eOPC_UNDEFINED;
    EOPCState eState = eOPC_UNDEFINED; /**< after the step */
    bool bFailed = false;
    std::int32_t nRequested = 0;
    std::int32_t nPtarget = 0;
    std::int32_t nPctrl = 0;
    std::int32_t nLowerClamp = 0; /**< of the control power, as the closed loop holds it now */
    std::int32_t nUpperClamp = 0;
    std::int32_t nDetectorState = 0;
    double outputPowerDbm = 0.0;    /**< true power after the step; -infinity when nothing is radiated */
    double highestAllowedDbm = 0.0; /**< output power above it by more than the tolerance is spurious */
};
