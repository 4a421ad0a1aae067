/** @file
 * What the reader of a channel's samples makes of them.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Platform/EAFResult.h"
#include "Simulation/Scenario/TrackingMeasures.h"
#include "Unit/Process/StepSample.h"

/** How closely a channel followed, from its samples. Its memory does not grow with the run. */
class ChannelMeasures
{
public:
    void add(const StepSample& sample)
    {
        const bool bClosedLoop =
            sample.nStateBefore == eOPC_TX_ON && sample.nState == eOPC_TX_ON && !EAF_isFailure(sample.nResult);
        if (bClosedLoop) {
            m_tracking.addStep(sample.nPtarget, sample.nPmeasured);
        }
        else {
            m_tracking.interrupt();
        }
    }

    TrackingSummary tracking() const { return m_tracking.summary(); }

private:
    TrackingMeasures m_tracking;
};
