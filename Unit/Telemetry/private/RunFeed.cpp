#include "Unit/Telemetry/RunFeed.h"

#include <algorithm>
#include <utility>

namespace
{
std::size_t bytesOf(const RunEvent& event)
{
    return event.sText.size() + event.sDetail.size();
}
} // namespace

const char* runEventName(ERunEvent eEvent)
{
    switch (eEvent) {
    case ERunEvent::State:
        return "state";
    case ERunEvent::Failure:
        return "failure";
    case ERunEvent::Overrun:
        return "overrun";
    case ERunEvent::Command:
        return "command";
    case ERunEvent::Note:
        break;
    }
    return "note";
}

RunFeed::RunFeed(std::size_t nMaxSamples, std::size_t nMaxEvents)
    : m_samples(std::max<std::size_t>(nMaxSamples, 1)), m_nMaxEvents(std::max<std::size_t>(nMaxEvents, 1))
{}

void RunFeed::add(std::span<const StepSample> samples)
{
    {
        const std::lock_guard lock(m_mutex);
        for (const StepSample& sample : samples) {
            m_samples[static_cast<std::size_t>(m_nNextSample++ % m_samples.size())] = sample;
        }
    }
    m_changed.notify_all();
}

void RunFeed::add(RunEvent event)
{
    {
        const std::lock_guard lock(m_mutex);
        event.nId = m_nNextEvent;
        addLocked(std::move(event));
    }
    m_changed.notify_all();
}

void RunFeed::addNumbered(RunEvent event)
{
    {
        const std::lock_guard lock(m_mutex);
        addLocked(std::move(event));
    }
    m_changed.notify_all();
}

void RunFeed::addLocked(RunEvent event)
{
    ++m_nNextEvent;
    m_nEventBytes += bytesOf(event);
    m_events.push_back(std::move(event));
    while (m_events.size() > m_nMaxEvents || (m_nEventBytes > MAX_EVENT_BYTES && m_events.size() > 1)) {
        m_nEventBytes -= bytesOf(m_events.front());
        m_events.pop_front();
    }
}

void RunFeed::close()
{
    {
        const std::lock_guard lock(m_mutex);
        m_bClosed = true;
    }
    m_changed.notify_all();
}

bool RunFeed::isClosed() const
{
    const std::lock_guard lock(m_mutex);
    return m_bClosed;
}

std::uint64_t RunFeed::firstSample() const
{
    return m_nNextSample - std::min<std::uint64_t>(m_nNextSample, m_samples.size());
}

std::uint64_t RunFeed::firstEvent() const
{
    return m_nNextEvent - m_events.size();
}

FeedPosition RunFeed::oldest() const
{
    const std::lock_guard lock(m_mutex);
    return {firstSample(), firstEvent()};
}

FeedPosition RunFeed::newest() const
{
    const std::lock_guard lock(m_mutex);
    return {m_nNextSample, m_nNextEvent};
}

FeedPosition RunFeed::atTime(std::uint64_t nTimeUs) const
{
    const std::lock_guard lock(m_mutex);
    std::uint64_t nFirst = firstSample();
    std::uint64_t nCount = m_nNextSample - nFirst;
    while (nCount > 0) { // samples ascend in time
        const std::uint64_t nHalf = nCount / 2;
        const std::uint64_t nMiddle = nFirst + nHalf;
        const bool bEarlier = m_samples[static_cast<std::size_t>(nMiddle % m_samples.size())].nTimeUs < nTimeUs;
        nFirst = bEarlier ? nMiddle + 1 : nFirst;
        nCount = bEarlier ? nCount - nHalf - 1 : nHalf;
    }
    return {nFirst, m_nNextEvent};
}

void RunFeed::read(FeedPosition& position, FeedBatch& batch, std::size_t nMostSamples) const
{
    batch.samples.clear();
    batch.events.clear();
    const std::lock_guard lock(m_mutex);
    const std::uint64_t nFirst = std::clamp(position.nSample, firstSample(), m_nNextSample);
    const std::uint64_t nEnd = nFirst + std::min<std::uint64_t>(m_nNextSample - nFirst, nMostSamples);
    batch.nLostSamples = nFirst - std::min(position.nSample, nFirst);
    m_nLostSamples += nMostSamples > 0 ? batch.nLostSamples : 0; // who wants none misses none
    for (std::uint64_t nSample = nFirst; nSample < nEnd; ++nSample) {
        batch.samples.push_back(m_samples[static_cast<std::size_t>(nSample % m_samples.size())]);
    }
    const std::uint64_t nFirstEvent = std::clamp(position.nEvent, firstEvent(), m_nNextEvent);
    batch.nLostEvents = nFirstEvent - std::min(position.nEvent, nFirstEvent);
    batch.events.assign(m_events.begin() + static_cast<std::ptrdiff_t>(nFirstEvent - firstEvent()), m_events.end());
    position = {nEnd, m_nNextEvent};
}

std::uint64_t RunFeed::lostSamples() const
{
    const std::lock_guard lock(m_mutex);
    return m_nLostSamples;
}

bool RunFeed::wait(const FeedPosition& position, std::chrono::milliseconds longest) const
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, longest, [&] { return m_bClosed || hasBeyond(position); });
    return hasBeyond(position);
}

bool RunFeed::hasBeyond(const FeedPosition& position) const
{
    return m_nNextSample > position.nSample || m_nNextEvent > position.nEvent;
}
