#include "Unit/Process/RegulationLoop.h"

#include "Unit/Clock/MonotonicTime.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace
{
constexpr std::int64_t NANOSECONDS_PER_MICROSECOND = 1000;
constexpr double NANOSECONDS_PER_SECOND_REAL = 1e9;
} // namespace

RegulationLoop::RegulationLoop(const RunSettings& settings, std::vector<RadioChannel*> channels,
                               ISimulatedTemperature* pTemperature, const std::vector<FaultConfiguration>& faults,
                               SampleQueue& queue, IRegulationPace* pPace)
    : m_settings(settings), m_channels(std::move(channels)), m_temperature(pTemperature), m_faults(faults),
      m_queue(queue), m_intervalMs(settings.intervalMs), m_pace(pPace == nullptr ? m_realTime : *pPace),
      m_temperatureDegrees(settings.temperatureDegrees), m_stepTimes(m_channels.size())
{}

void RegulationLoop::run() noexcept
{
    // One that is the only thread, in no hurry, may wait for others.
    const ThreadRoleScope role(m_commands.isExecutedInCaller() ? EThreadRole::Other : EThreadRole::Regulation);
    handOver(); // from who started the channels to this thread
    m_owner.check("RegulationLoop::run");
    m_commands.begin();
    try {
        regulateUntilOff();
    }
    catch (const std::exception& error) {
        m_sError = error.what();
    }
    handOver(); // to who waits for the end
    m_bFinished.store(true, std::memory_order_release);
    m_commands.close();
}

void RegulationLoop::handOver()
{
    m_owner.handOver();
    for (RadioChannel* pChannel : m_channels) {
        pChannel->handOver();
    }
}

void RegulationLoop::regulateUntilOff()
{
    m_pace.begin(std::chrono::milliseconds(intervalMs()));
    unsigned int nStopCalls = 0;
    std::uint64_t nSkipped = 0;
    while (!(m_bStopping && (allAreOff() || nStopCalls >= MAX_STOP_CALLS))) {
        if (!m_pace.wait()) {
            return;
        }
        if (!m_bStopping && isStopDue()) {
            beginStop();
        }
        if (m_bStopping) {
            wantOff();
            ++nStopCalls;
        }
        tick(nSkipped);
        nSkipped = m_pace.next();
        m_pace.serve(m_commands);
    }
    if (!allAreOff()) {
        m_sError = "not every transmitter went off";
    }
}

void RegulationLoop::beginStop()
{
    m_bStopping = true;
    m_stopMoment = now();
    m_bStopKnown.store(true, std::memory_order_release);
}

std::optional<CommandMoment> RegulationLoop::stopMoment() const
{
    return m_bStopKnown.load(std::memory_order_acquire) ? std::optional(m_stopMoment) : std::nullopt;
}

CommandMoment RegulationLoop::now() const
{
    return {.nTimeUs = static_cast<std::uint64_t>(m_pace.elapsedNs() / NANOSECONDS_PER_MICROSECOND),
            .nSteps = m_channels.empty() ? 0 : m_channels.front()->statistics().nSteps, // all step together
            .nNumber = 0};
}

void RegulationLoop::noteCommand()
{
    m_owner.check("RegulationLoop::noteCommand");
    const std::uint64_t nNumber = m_lastCommand.nNumber + 1;
    m_lastCommand = now();
    m_lastCommand.nNumber = nNumber;
}

double RegulationLoop::elapsedSeconds() const
{
    m_owner.check("RegulationLoop::elapsedSeconds");
    return static_cast<double>(m_pace.elapsedNs()) / NANOSECONDS_PER_SECOND_REAL;
}

bool RegulationLoop::want(RadioChannel& channel, ERequestedTxPowerState eState) const
{
    m_owner.check("RegulationLoop::want");
    if (m_bStopping && eState != eREQUESTED_TX_POWER_OFF) {
        return false;
    }
    channel.want(eState);
    return true;
}

bool RegulationLoop::setInterval(unsigned int intervalMs)
{
    m_owner.check("RegulationLoop::setInterval");
    m_intervalMs.store(intervalMs, std::memory_order_relaxed);
    m_pace.setInterval(std::chrono::milliseconds(intervalMs));
    bool bTaken = true;
    for (RadioChannel* pChannel : m_channels) {
        bTaken = !EAF_isFailure(pChannel->setInterval(intervalMs)) && bTaken;
    }
    return bTaken;
}

bool RegulationLoop::isStopDue() const
{
    return m_bStopRequested.load(std::memory_order_relaxed) ||
           (m_settings.durationSeconds && elapsedSeconds() >= *m_settings.durationSeconds);
}

bool RegulationLoop::allAreOff() const
{
    return std::all_of(m_channels.begin(), m_channels.end(),
                       [](const RadioChannel* pChannel) { return pChannel->state() == eOPC_TX_OFF; });
}

void RegulationLoop::wantOff()
{
    for (RadioChannel* pChannel : m_channels) {
        pChannel->want(eREQUESTED_TX_POWER_OFF);
    }
}

void RegulationLoop::tick(std::uint64_t nSkipped)
{
    m_owner.check("RegulationLoop::tick");
    m_nOverruns += nSkipped;
    m_latenessTimes.add(m_pace.latenessNs());
    StepSurroundings surroundings;
    if (m_settings.pProfile != nullptr) {
        surroundings.profile = m_settings.pProfile->at(m_settings.startSeconds + elapsedSeconds() * m_settings.speed);
    }
    surroundings.temperatureDegrees = m_temperatureDegrees.next(surroundings.profile.temperatureDegrees);
    const auto elapsedNs = m_pace.elapsedNs();
    surroundings.simulatedSeconds = static_cast<double>(elapsedNs - std::exchange(m_nLastElapsedNs, elapsedNs)) /
                                    NANOSECONDS_PER_SECOND_REAL * m_settings.speed;
    m_temperature.set(surroundings.temperatureDegrees);
    switchFaults();
    StepSample sample{};
    sample.nTimeUs = static_cast<std::uint64_t>(elapsedNs / NANOSECONDS_PER_MICROSECOND);
    sample.nLatenessUs = static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(m_pace.latenessNs() / NANOSECONDS_PER_MICROSECOND, 0, UINT32_MAX));
    sample.nOverruns = static_cast<std::uint32_t>(m_nOverruns);
    for (std::size_t nChannel = 0; nChannel < m_channels.size(); ++nChannel) {
        sample.nChannelIndex = static_cast<std::uint32_t>(nChannel);
        const std::int64_t nBeginNs = monotonicNs();
        m_channels[nChannel]->step(surroundings, sample);
        m_stepTimes[nChannel].add(monotonicNs() - nBeginNs);
        if (!m_queue.push(sample)) {
            m_nDropped.fetch_add(1, std::memory_order_relaxed);
        }
    }
}

void RegulationLoop::switchFaults()
{
    m_faults.forEachDue(elapsedSeconds(), [this](const FaultSwitch& due) {
        for (RadioChannel* pChannel : m_channels) {
            if (pChannel->number() == due.nChannel) {
                pChannel->setFault(due.eOperation, due.fault);
            }
        }
    });
}
