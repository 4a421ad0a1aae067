#include "Unit/Metrics/MetricsReader.h"

#include "Platform/Conversions.h"
#include "Unit/Metrics/private/TransientLogFill.h"

#include <algorithm>

namespace
{
constexpr double NANOSECONDS_PER_SECOND_REAL = 1e9;

// Steps of all channels come one after the other; more than one each, in case the queue was full for some of them.
constexpr std::uint64_t LATEST_STEPS = 16;

ChannelInside insideOf(const RadioChannel& channel)
{
    return {.bOn = channel.isOn(),
            .nNotifications = channel.statistics().nNotifications,
            .nRamps = channel.statistics().nRamps,
            .rampSeconds = static_cast<double>(channel.statistics().nRampUs) / US_PER_S,
            .nRefusedCalls = channel.refusedCalls(),
            .logs = channel.logs()};
}
} // namespace

MetricsReader::MetricsReader(RegulationLoop& loop, const RunFeed& feed, const TestServer& server,
                             std::int64_t nStartedUnixUs)
    : m_loop(loop), m_feed(feed), m_server(server), m_startSeconds(static_cast<double>(nStartedUnixUs) / US_PER_S),
      m_lastSteps(loop.channels().size()), m_fills(loop.channels().size())
{}

MetricsReader::~MetricsReader() = default;

UnitMetrics MetricsReader::read()
{
    const std::lock_guard lock(m_mutex);
    UnitMetrics metrics;
    metrics.sVersion = OPC_VERSION;
    metrics.sCompiler = OPC_COMPILER;
    metrics.sArchitecture = OPC_ARCHITECTURE;
    metrics.startSeconds = m_startSeconds;
    metrics.intervalMs = m_loop.intervalMs();
    metrics.latenessTimes = m_loop.latenessTimes().read();
    metrics.nDroppedSamples = m_loop.droppedSamples();
    metrics.nLostSamples = m_feed.lostSamples();
    metrics.traffic = m_server.traffic();
    for (const RadioChannel* const pChannel : m_loop.channels()) {
        ChannelMetrics channel;
        channel.nNumber = pChannel->number();
        channel.nSafetyViolations = pChannel->safetyViolations();
        channel.stepTimes = m_loop.stepTimes(metrics.channels.size()).read();
        metrics.channels.push_back(channel);
    }
    readInside(metrics);
    readSteps(metrics);
    return metrics;
}

void MetricsReader::readSteps(UnitMetrics& metrics)
{
    const FeedPosition newest = m_feed.newest();
    const std::uint64_t nWanted = LATEST_STEPS * m_lastSteps.size();
    m_position = {std::max(m_position.nSample, newest.nSample - std::min(newest.nSample, nWanted)), newest.nEvent};
    m_feed.read(m_position, m_batch, static_cast<std::size_t>(nWanted));
    for (const StepSample& sample : m_batch.samples) {
        m_lastSteps.at(sample.nChannelIndex) = sample;
    }
    for (std::size_t nChannel = 0; nChannel < m_lastSteps.size(); ++nChannel) {
        metrics.channels[nChannel].lastStep = m_lastSteps[nChannel];
    }
}

void MetricsReader::readInside(UnitMetrics& metrics)
{
    try {
        m_loop.commands().run([&] {
            for (std::size_t nChannel = 0; nChannel < metrics.channels.size(); ++nChannel) {
                metrics.channels[nChannel].inside = insideOf(*m_loop.channels()[nChannel]);
            }
            m_nOverruns = m_loop.overruns();
            m_commands = m_loop.commands().statistics();
        });
        for (std::size_t nChannel = 0; nChannel < metrics.channels.size(); ++nChannel) {
            ChannelMetrics& channel = metrics.channels[nChannel];
            channel.nTransientSamples =
                m_fills[nChannel].read(m_loop.commands(), channel.nNumber, channel.inside->logs);
        }
    }
    catch (const RegulationOver&) { // what is missing then is left out
    }
    metrics.nOverruns = m_nOverruns;
    metrics.nCommands = m_commands.nCommands;
    metrics.longestCommandSeconds = static_cast<double>(m_commands.nLongestNs) / NANOSECONDS_PER_SECOND_REAL;
}
