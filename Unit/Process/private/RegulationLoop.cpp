#include "Unit/Process/RegulationLoop.h"

#include "Simulation/Handlers/ISimulatedTemperature.h"
#include "Unit/Process/PowerText.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace
{
constexpr double MILLISECONDS_PER_SECOND = 1000.0;
constexpr std::int64_t NANOSECONDS_PER_MICROSECOND = 1000;
} // namespace

RegulationLoop::RegulationLoop(const RunSettings& settings, std::vector<RadioChannel*> channels,
                               ISimulatedTemperature* pTemperature, const std::vector<FaultConfiguration>& faults,
                               SampleQueue& queue)
    : m_settings(settings), m_channels(std::move(channels)), m_pTemperature(pTemperature), m_faults(faults),
      m_queue(queue)
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
}

void RegulationLoop::regulateUntilOff()
{
    DeadlineTimer timer{std::chrono::milliseconds(m_settings.intervalMs)};
    bool bStopping = false;
    unsigned int nStopCalls = 0;
    while (!(bStopping && (allAreOff() || nStopCalls >= MAX_STOP_CALLS))) {
        const std::uint64_t nSkipped = timer.waitForNext();
        bStopping = bStopping || isStopDue(timer.index());
        if (bStopping) {
            requestOff();
            ++nStopCalls;
        }
        tick(timer, nSkipped);
        m_lateness = timer.statistics();
    }
    if (!allAreOff()) {
        m_sError = "not every transmitter went off";
    }
}

bool RegulationLoop::isStopDue(std::uint64_t nIndex) const
{
    const double elapsedSeconds = static_cast<double>(nIndex) * m_settings.intervalMs / MILLISECONDS_PER_SECOND;
    return m_bStopRequested.load(std::memory_order_relaxed) ||
           (m_settings.durationSeconds && elapsedSeconds >= *m_settings.durationSeconds);
}

bool RegulationLoop::allAreOff() const
{
    return std::all_of(m_channels.begin(), m_channels.end(),
                       [](const RadioChannel* pChannel) { return pChannel->state() == eOPC_TX_OFF; });
}

void RegulationLoop::requestOff()
{
    for (RadioChannel* pChannel : m_channels) {
        // The controller ignores the request while it switches on, and a repeated one starts switching off anew.
        if (pChannel->state() == eOPC_TX_ON) {
            pChannel->requestOff();
        }
    }
}

void RegulationLoop::tick(const DeadlineTimer& timer, std::uint64_t nSkipped)
{
    m_nOverruns += nSkipped;
    const double intervalSeconds = m_settings.intervalMs / MILLISECONDS_PER_SECOND;
    const double elapsedSeconds = static_cast<double>(timer.index()) * intervalSeconds;
    ProfilePoint point;
    if (m_settings.pProfile != nullptr) {
        point = m_settings.pProfile->at(m_settings.startSeconds + elapsedSeconds * m_settings.speed);
    }
    const double temperatureDegrees = point.temperatureDegrees.value_or(m_settings.temperatureDegrees);
    setTemperature(temperatureDegrees);
    m_faults.forEachDue(elapsedSeconds, [this](const FaultSwitch& due) {
        for (RadioChannel* pChannel : m_channels) {
            if (pChannel->number() == due.nChannel) {
                pChannel->setFault(due.eOperation, due.fault);
            }
        }
    });
    StepSample sample{};
    sample.nTimeUs = timer.index() * m_settings.intervalMs * 1000;
    sample.nLatenessUs = static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(timer.latenessNs() / NANOSECONDS_PER_MICROSECOND, 0, UINT32_MAX));
    sample.nOverruns = static_cast<std::uint32_t>(m_nOverruns);
    for (std::size_t nChannel = 0; nChannel < m_channels.size(); ++nChannel) {
        RadioChannel& channel = *m_channels[nChannel];
        const ChannelConfiguration& constants = channel.configuration();
        channel.setSurroundings(temperatureDegrees, point.frequencyMhz.value_or(constants.frequencyMhz));
        channel.advanceSimulation(static_cast<double>(1 + nSkipped) * intervalSeconds * m_settings.speed);
        sample.nChannelIndex = static_cast<std::uint32_t>(nChannel);
        channel.step(centiDb(point.requestedPowerDbm.value_or(constants.requestedPowerDbm)), sample);
        m_nDropped += m_queue.push(sample) ? 0 : 1;
    }
}

void RegulationLoop::setTemperature(double degreesCelsius)
{
    const int nTemperature = nearestInteger(degreesCelsius);
    if (m_pTemperature != nullptr && m_nNotifiedTemperature != nTemperature) {
        m_pTemperature->setTemperature(nTemperature);
        m_nNotifiedTemperature = nTemperature;
    }
}
