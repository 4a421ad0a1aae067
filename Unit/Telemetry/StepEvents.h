/** @file
 * Events that steps tell.
 */
#pragma once

#include "Unit/Process/FaultSchedule.h"
#include "Unit/Process/StepSample.h"
#include "Unit/Telemetry/RunEvent.h"

#include <cstdint>
#include <vector>

/** Finds faults of the unit file that come and go, changes of state, rows of failed steps, skipped deadlines and lost
 * samples in the samples of all channels. */
class StepEvents
{
public:
    explicit StepEvents(const std::vector<FaultConfiguration>& faults = {}) : m_faults(faults) {}

    /** Looks at the next sample. @return what it tells; empty for most */
    std::vector<RunEvent> look(const StepSample& sample);

    /** @param nDropped samples that never came, since the run began. @return an event when there are more than before
     */
    std::vector<RunEvent> lookAtDropped(std::uint64_t nDropped);

private:
    struct Channel
    {
        bool bFailing = false;
        std::uint64_t nFailedBefore = 0; // failed steps when it began to fail
    };

    void lookAtFaults(const StepSample& sample, std::vector<RunEvent>& events);
    void lookAtResult(const StepSample& sample, Channel& channel, std::vector<RunEvent>& events) const;

    FaultSchedule m_faults;
    std::vector<Channel> m_channels; // by index
    std::uint32_t m_nOverruns = 0;   // told so far
    std::uint64_t m_nNextOverrunUs = 0;
    std::uint64_t m_nDropped = 0;
    std::uint64_t m_nTimeUs = 0;
    std::uint64_t m_nSteps = 0;
};
