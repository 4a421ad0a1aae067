#include "Unit/Replay/ReplayPlayer.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Conversions.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace
{
constexpr std::size_t MS_PER_SECOND = 1000;
constexpr std::size_t FEED_SECONDS = 60;
constexpr std::size_t FEED_EVENTS = 10'000;
constexpr std::size_t EVENTS_BEFORE = 1000;            // that a new feed holds of earlier times
constexpr std::chrono::milliseconds LONGEST_LEAP{250}; // a machine that slept plays on from where it was

unsigned int intervalOf(const RecordedRun& run)
{
    return std::max(run.intervalMs, 1U);
}
} // namespace

ReplayPlayer::ReplayPlayer(Recording recording, RecordedRun run, ReplayBegin begin)
    : m_recording(std::move(recording)), m_run(std::move(run)), m_newRun(std::move(begin.newRun)),
      m_results(m_run.channels.size())
{
    m_state.nSpeed = begin.nSpeed;
    m_state.bPaused = begin.bPaused;
    readTimes();
    const std::uint64_t nPositionUs = std::max(begin.nPositionUs.value_or(0), m_state.nFromUs);
    if (nPositionUs > m_state.nToUs) {
        throw ConfigurationError(fmt::format("--from: {} s is after the last step of run {}, which is at {} s",
                                             static_cast<double>(nPositionUs) / US_PER_S, m_run.nId,
                                             static_cast<double>(m_state.nToUs) / US_PER_S));
    }
    jumpTo(nPositionUs);
}

void ReplayPlayer::readTimes()
{
    const auto times = m_recording.times(EResolution::Steps, m_run.nId);
    if (!times) {
        throw ConfigurationError(fmt::format("{}: run {} has no steps any more, which are kept for the shortest; opc "
                                             "export --run {} has the seconds and minutes that are left",
                                             m_recording.path(), m_run.nId, m_run.nId));
    }
    m_state.nFromUs = times->nFirstUs;
    m_state.nToUs = times->nLastUs;
}

void ReplayPlayer::jumpTo(std::uint64_t nPositionUs)
{
    const std::size_t nStepsAChannel = FEED_SECONDS * MS_PER_SECOND / intervalOf(m_run);
    auto pFeed =
        std::make_shared<RunFeed>(nStepsAChannel * std::max<std::size_t>(m_run.channels.size(), 1), FEED_EVENTS);
    std::vector<StepSample> steps;
    m_recording.forEachStep({m_run.nId, std::nullopt, nPositionUs - std::min(nPositionUs, PREFILL_US), nPositionUs},
                            [&](const StepSample& step) { steps.push_back(step); });
    pFeed->add(steps);
    for (RunEvent& event :
         m_recording.lastEvents({m_run.nId, std::nullopt, 0, nPositionUs}, std::uint64_t(-1), EVENTS_BEFORE))
    {
        pFeed->addNumbered(std::move(event));
    }
    if (m_pFeed) {
        m_pFeed->close();
    }
    m_pFeed = std::move(pFeed);
    m_sRun = m_newRun();
    m_state.nPositionUs = nPositionUs;
}

std::uint64_t ReplayPlayer::stride() const
{
    const std::uint64_t nSteps = m_state.nSpeed * m_run.channels.size() * MS_PER_SECOND / intervalOf(m_run);
    return (nSteps + MOST_STEPS_A_SECOND - 1) / MOST_STEPS_A_SECOND;
}

bool ReplayPlayer::isPlayed(const StepSample& sample, std::uint64_t nStride)
{
    std::int32_t nIgnored = sample.nResult;
    std::int32_t& nResult = sample.nChannelIndex < m_results.size() ? m_results[sample.nChannelIndex] : nIgnored;
    const bool bOther = std::exchange(nResult, sample.nResult) != sample.nResult;
    return bOther || sample.nState != sample.nStateBefore || nStride <= 1 || sample.nSteps % nStride == 0;
}

void ReplayPlayer::playTo(std::uint64_t nPositionUs)
{
    if (nPositionUs <= m_state.nPositionUs) {
        return;
    }
    const RecordedRange range{m_run.nId, std::nullopt, m_state.nPositionUs + 1, nPositionUs};
    const std::uint64_t nStride = stride();
    std::vector<StepSample> steps;
    m_recording.forEachStep(range, [&](const StepSample& step) {
        if (isPlayed(step, nStride)) {
            steps.push_back(step);
        }
    });
    m_pFeed->add(steps);
    m_recording.forEachEvent(range, [&](const RunEvent& event) { m_pFeed->addNumbered(event); });
    m_state.nPositionUs = nPositionUs;
}

void ReplayPlayer::advance(std::chrono::microseconds elapsed)
{
    const std::lock_guard lock(m_mutex);
    if (m_state.bPaused) {
        return;
    }
    const auto played = std::clamp<std::chrono::microseconds>(elapsed, std::chrono::microseconds(0), LONGEST_LEAP);
    const std::uint64_t nWantedUs = m_state.nPositionUs + static_cast<std::uint64_t>(played.count()) * m_state.nSpeed;
    try {
        if (nWantedUs >= m_state.nToUs) {
            readTimes(); // a unit may record on
        }
        playTo(std::min(nWantedUs, m_state.nToUs));
    }
    catch (const std::exception&) {
        m_state.bPaused = true;
        throw;
    }
    m_state.bPaused = m_state.nPositionUs >= m_state.nToUs;
}

void ReplayPlayer::close()
{
    const std::lock_guard lock(m_mutex);
    m_pFeed->close();
}

PageFeed ReplayPlayer::feed() const
{
    const std::lock_guard lock(m_mutex);
    return {m_sRun, m_pFeed};
}

ReplayState ReplayPlayer::state() const
{
    const std::lock_guard lock(m_mutex);
    return m_state;
}

void ReplayPlayer::change(const ReplayChange& change)
{
    const std::lock_guard lock(m_mutex);
    const bool bAgain = change.bPaused == false && m_state.nPositionUs >= m_state.nToUs; // from the end: once more
    if (change.nPositionUs || bAgain) {
        readTimes();
        jumpTo(std::clamp(change.nPositionUs.value_or(m_state.nFromUs), m_state.nFromUs, m_state.nToUs));
    }
    m_state.nSpeed = change.nSpeed.value_or(m_state.nSpeed);
    m_state.bPaused = change.bPaused.value_or(m_state.bPaused);
}
