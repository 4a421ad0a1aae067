#include "Unit/Simulator/private/RunEngine.h"

#include "Platform/ConfigurationError.h"
#include "Platform/EAFResult.h"
#include "Simulation/Handlers/ISimulatedTransmitter.h"
#include "Unit/Simulator/private/VirtualTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace
{
/** Production test may go this far beyond the transmitter's upper limit. */
constexpr double PRODUCTION_TEST_MARGIN_DB = 20.0;

/** @return the scenario with nothing but what a run in virtual time is to have */
Scenario prepared(const Scenario& scenario, int nTraceLevel)
{
    Scenario result = scenario;
    result.unit.trace = TraceConfiguration();
    result.unit.trace.nDefaultLevel = nTraceLevel;
    result.unit.trace.bSystemLog = false;
    return result;
}

std::uint64_t deadlinesWithin(double seconds, std::int64_t nIntervalNs)
{
    const std::int64_t nDurationNs = std::max<std::int64_t>(toNs(seconds), 0);
    return static_cast<std::uint64_t>((nDurationNs + nIntervalNs - 1) / nIntervalNs);
}
} // namespace

RunEngine::RunEngine(const Scenario& scenario, int nTraceLevel)
    : m_scenario(prepared(scenario, nTraceLevel)), m_timeline(m_scenario), m_events(m_scenario.events),
      m_faults(m_scenario.unit.faults), m_process(m_scenario.unit),
      m_deadlines(0, m_scenario.unit.intervalMs * NS_PER_MS),
      m_nTotalSteps(deadlinesWithin(m_scenario.durationSeconds, m_deadlines.intervalNs())), m_step{},
      m_meter(m_scenario.measures, m_deadlines.intervalNs() / NS_PER_US), m_warnedOf(m_scenario.events.size())
{
    start();
}

void RunEngine::start()
{
    m_process.monitorSafety();
    m_process.load();
    m_process.start();
    m_pChannel = m_process.channels().front().get();
    m_pTransmitter = m_pChannel->transmitter();
    if (m_pTransmitter == nullptr) {
        throw ConfigurationError(fmt::format("{}: the output power handler of channel {} is not a simulated one; list "
                                             "the module OutputPowerHandler under [[module]]",
                                             m_scenario.sPath, m_pChannel->number()));
    }
    m_pTransmitter->countDelays();
    m_temperature = NotifiedTemperature(m_process.temperature());
}

std::uint64_t RunEngine::stepsDone() const
{
    return std::min(m_deadlines.index(), m_nTotalSteps);
}

bool RunEngine::proceed(std::uint64_t nMaxSteps, IStepReceiver* pReceiver)
{
    for (std::uint64_t nStep = 0; nStep < nMaxSteps && m_deadlines.index() < m_nTotalSteps; ++nStep) {
        step(pReceiver);
    }
    return m_deadlines.index() < m_nTotalSteps;
}

void RunEngine::step(IStepReceiver* pReceiver)
{
    const std::int64_t nNowNs = m_deadlines.deadlineNs();
    happen(nNowNs);
    const TimelinePoint& point = m_timeline.at(nNowNs);
    if (m_timeline.moveTransmitter(nNowNs)) {
        m_pTransmitter->change(m_timeline.transmitter());
    }
    m_temperature.set(point.temperatureDegrees);
    setFaults(nNowNs);

    StepSample& sample = m_step.sample;
    sample.nTimeUs = static_cast<std::uint64_t>(nNowNs / NS_PER_US);
    sample.nOverruns = static_cast<std::uint32_t>(m_nOverruns);
    m_pChannel->stepWith(StepInputs{.requestedPowerDbm = point.requestedPowerDbm,
                                    .frequencyMhz = point.frequencyMhz,
                                    .temperatureDegrees = point.temperatureDegrees,
                                    .simulatedSeconds = m_simulatedSeconds},
                         sample);
    const std::uint64_t nDelayUs = m_pTransmitter->takeDelayUs();
    sample.nLatenessUs =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(nDelayUs, std::numeric_limits<std::uint32_t>::max()));
    m_nOverruns += m_deadlines.advance(nNowNs + static_cast<std::int64_t>(nDelayUs) * NS_PER_US);
    m_simulatedSeconds = toSeconds(m_deadlines.deadlineNs() - nNowNs);
    fill(m_step);
    measure(m_step);
    if (pReceiver != nullptr) {
        pReceiver->onStep(m_step);
    }
}

void RunEngine::fill(VirtualStep& step) const
{
    const ControlPowerLimits limits = m_pChannel->controlPowerLimits();
    step.outputPowerDbm = m_pTransmitter->outputPowerDbm();
    step.nLowerClamp = limits.nLower;
    step.nUpperClamp = limits.nUpper;
}

void RunEngine::measure(const VirtualStep& step)
{
    const StepSample& sample = step.sample;
    const double marginDb = m_pChannel->configuration().bProductionTest ? PRODUCTION_TEST_MARGIN_DB : 0.0;
    m_meter.add({.nTimeUs = static_cast<std::int64_t>(sample.nTimeUs),
                 .eStateBefore = static_cast<EOPCState>(sample.nStateBefore),
                 .eState = static_cast<EOPCState>(sample.nState),
                 .bFailed = EAF_isFailure(sample.nResult),
                 .nRequested = sample.nRequestedPower,
                 .nPtarget = sample.nPtarget,
                 .nPctrl = sample.nPctrl,
                 .nLowerClamp = step.nLowerClamp,
                 .nUpperClamp = step.nUpperClamp,
                 .nDetectorState = sample.nDetectorState,
                 .outputPowerDbm = step.outputPowerDbm,
                 .highestAllowedDbm = m_timeline.transmitter().maxPowerDbm + marginDb});
}

void RunEngine::setFaults(std::int64_t nNowNs)
{
    m_faults.forEachDue(toSeconds(nNowNs),
                        [this](const FaultSwitch& due) { m_pChannel->setFault(due.eOperation, due.fault); });
}

RunMeasures RunEngine::measures() const
{
    RunMeasures measures = m_meter.measures();
    const ChannelStatistics& statistics = m_pChannel->statistics();
    measures.steps = static_cast<double>(statistics.nSteps);
    measures.failedSteps = static_cast<double>(statistics.nFailedSteps);
    measures.overruns = static_cast<double>(m_nOverruns);
    measures.refusedCalls = static_cast<double>(m_pTransmitter->refusedCalls());
    measures.safetyViolations = static_cast<double>(violations().total());
    return measures;
}

const ViolationStore& RunEngine::violations() const
{
    return m_process.monitors().front()->violations();
}

std::vector<std::string> RunEngine::warnings() const
{
    // Without a storage file the modules are meant to go on with their own defaults.
    std::vector<std::string> warnings =
        m_scenario.unit.sStorageFile.empty() ? std::vector<std::string>() : m_process.warnings();
    warnings.insert(warnings.end(), m_warnings.begin(), m_warnings.end());
    return warnings;
}
