#include "Unit/Telemetry/StepEvents.h"

#include "Platform/Conversions.h"
#include "Platform/EAFResult.h"
#include "Unit/Text/PowerText.h"

#include <fmt/format.h>

#include <utility>

namespace
{
constexpr std::uint64_t OVERRUN_INTERVAL_US = 1'000'000; // a machine that is too slow would tell of nothing else

RunEvent eventAt(const StepSample& sample, ERunEvent eEvent, std::string sText)
{
    RunEvent event;
    event.nTimeUs = sample.nTimeUs;
    event.nSteps = sample.nSteps - 1;
    event.nChannelNumber = sample.nChannelNumber;
    event.eEvent = eEvent;
    event.sText = std::move(sText);
    return event;
}
} // namespace

std::vector<RunEvent> StepEvents::look(const StepSample& sample)
{
    if (sample.nChannelIndex >= m_channels.size()) {
        m_channels.resize(sample.nChannelIndex + std::size_t{1});
    }
    m_nTimeUs = sample.nTimeUs;
    m_nSteps = sample.nSteps;
    std::vector<RunEvent> events;
    lookAtFaults(sample, events);
    if (sample.nOverruns > m_nOverruns && sample.nTimeUs >= m_nNextOverrunUs) {
        m_nNextOverrunUs = sample.nTimeUs + OVERRUN_INTERVAL_US;
        const std::uint32_t nNew = sample.nOverruns - std::exchange(m_nOverruns, sample.nOverruns);
        events.push_back(
            eventAt(sample, ERunEvent::Overrun, fmt::format("{} deadline{} skipped", nNew, nNew == 1 ? "" : "s")));
        events.back().nChannelNumber.reset();
    }
    if (sample.nState != sample.nStateBefore) {
        events.push_back(eventAt(
            sample, ERunEvent::State,
            fmt::format("{} to {}", controllerStateName(sample.nStateBefore), controllerStateName(sample.nState))));
    }
    lookAtResult(sample, m_channels[sample.nChannelIndex], events);
    return events;
}

void StepEvents::lookAtFaults(const StepSample& sample, std::vector<RunEvent>& events)
{
    m_faults.forEachDue(static_cast<double>(sample.nTimeUs) / US_PER_S, [&](const FaultSwitch& due) {
        const char* const pOperation = handlerOperationName(due.eOperation);
        events.push_back(eventAt(sample, ERunEvent::Note,
                                 due.fault.eKind == EHandlerFault::None
                                     ? fmt::format("the fault of {} is over", pOperation)
                                     : fmt::format("fault of {}: {}", pOperation, handlerFaultName(due.fault.eKind))));
        events.back().nChannelNumber = due.nChannel;
    });
}

void StepEvents::lookAtResult(const StepSample& sample, Channel& channel, std::vector<RunEvent>& events) const
{
    const bool bFailed = EAF_isFailure(sample.nResult);
    if (bFailed == channel.bFailing) {
        return;
    }
    channel.bFailing = bFailed;
    if (bFailed) {
        channel.nFailedBefore = sample.nFailedSteps - 1;
        events.push_back(eventAt(sample, ERunEvent::Failure,
                                 fmt::format("steps fail with {:#x}", static_cast<std::uint32_t>(sample.nResult))));
    }
    else {
        const std::uint64_t nFailed = sample.nFailedSteps - channel.nFailedBefore;
        events.push_back(
            eventAt(sample, ERunEvent::Failure, fmt::format("steps are well again after {} that failed", nFailed)));
    }
}

std::vector<RunEvent> StepEvents::lookAtDropped(std::uint64_t nDropped)
{
    if (nDropped <= m_nDropped) {
        return {};
    }
    RunEvent event;
    event.nTimeUs = m_nTimeUs;
    event.nSteps = m_nSteps;
    event.sText = fmt::format("{} samples dropped: the machine is too busy to take them in",
                              nDropped - std::exchange(m_nDropped, nDropped));
    return {event};
}
