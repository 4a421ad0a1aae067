#include "Unit/Process/RegulationLoop.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace
{
constexpr std::int64_t NANOSECONDS_PER_MILLISECOND = 1'000'000;
constexpr std::int64_t NANOSECONDS_PER_MICROSECOND = 1000;
constexpr double NANOSECONDS_PER_SECOND_REAL = 1e9;

// What is kept free of commands before a step: a command that begins in time ends in time when it takes no longer.
constexpr std::int64_t MAX_RESERVE_NS = 2 * NANOSECONDS_PER_MILLISECOND;
constexpr std::int64_t RESERVED_PART = 3; // of the interval, at most
} // namespace

RegulationLoop::RegulationLoop(const RunSettings& settings, std::vector<RadioChannel*> channels,
                               ISimulatedTemperature* pTemperature, const std::vector<FaultConfiguration>& faults,
                               SampleQueue& queue)
    : m_settings(settings), m_channels(std::move(channels)), m_temperature(pTemperature), m_faults(faults),
      m_queue(queue), m_temperatureDegrees(settings.temperatureDegrees)
{}

void RegulationLoop::run() noexcept
{
    try {
        regulateUntilOff();
    }
    catch (const std::exception& error) {
        m_sError = error.what();
    }
    m_bFinished.store(true, std::memory_order_release);
    m_commands.close();
}

void RegulationLoop::regulateUntilOff()
{
    m_timer.emplace(std::chrono::milliseconds(m_settings.intervalMs));
    unsigned int nStopCalls = 0;
    std::uint64_t nSkipped = 0;
    while (!(m_bStopping && (allAreOff() || nStopCalls >= MAX_STOP_CALLS))) {
        m_timer->wait();
        m_bStopping = m_bStopping || isStopDue();
        if (m_bStopping) {
            wantOff();
            ++nStopCalls;
        }
        tick(nSkipped);
        nSkipped = m_timer->next();
        serveCommands();
    }
    if (!allAreOff()) {
        m_sError = "not every transmitter went off";
    }
}

void RegulationLoop::serveCommands()
{
    const std::int64_t nNextNs = m_timer->deadlineNs();
    const std::int64_t nIntervalNs = m_settings.intervalMs * NANOSECONDS_PER_MILLISECOND;
    m_commands.serveUntil(nNextNs - std::min(nIntervalNs / RESERVED_PART, MAX_RESERVE_NS), nNextNs);
}

double RegulationLoop::elapsedSeconds() const
{
    return m_timer ? static_cast<double>(m_timer->elapsedNs()) / NANOSECONDS_PER_SECOND_REAL : 0.0;
}

bool RegulationLoop::want(RadioChannel& channel, ERequestedTxPowerState eState) const
{
    if (m_bStopping && eState != eREQUESTED_TX_POWER_OFF) {
        return false;
    }
    channel.want(eState);
    return true;
}

bool RegulationLoop::setInterval(unsigned int intervalMs)
{
    m_settings.intervalMs = intervalMs;
    m_timer->setInterval(std::chrono::milliseconds(intervalMs));
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
    m_nOverruns += nSkipped;
    StepSurroundings surroundings;
    if (m_settings.pProfile != nullptr) {
        surroundings.profile = m_settings.pProfile->at(m_settings.startSeconds + elapsedSeconds() * m_settings.speed);
    }
    surroundings.temperatureDegrees = m_temperatureDegrees.next(surroundings.profile.temperatureDegrees);
    const auto elapsedNs = m_timer->elapsedNs();
    surroundings.simulatedSeconds = static_cast<double>(elapsedNs - std::exchange(m_nLastElapsedNs, elapsedNs)) /
                                    NANOSECONDS_PER_SECOND_REAL * m_settings.speed;
    m_temperature.set(surroundings.temperatureDegrees);
    switchFaults();
    StepSample sample{};
    sample.nTimeUs = static_cast<std::uint64_t>(elapsedNs / NANOSECONDS_PER_MICROSECOND);
    sample.nLatenessUs = static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(m_timer->latenessNs() / NANOSECONDS_PER_MICROSECOND, 0, UINT32_MAX));
    sample.nOverruns = static_cast<std::uint32_t>(m_nOverruns);
    for (std::size_t nChannel = 0; nChannel < m_channels.size(); ++nChannel) {
        sample.nChannelIndex = static_cast<std::uint32_t>(nChannel);
        m_channels[nChannel]->step(surroundings, sample);
        m_nDropped += m_queue.push(sample) ? 0 : 1;
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
