#include "Unit/LivePage/private/FeedStream.h"

#include "Unit/LivePage/SampleJson.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace
{
constexpr std::size_t SAMPLES_A_MESSAGE = 4000; // about half a megabyte: more would make a page stutter
constexpr std::uint64_t EVENTS_AT_FIRST = 200;
constexpr std::chrono::milliseconds LONGEST_WAIT{200};

/** @return the first sample of the latest moment, so that a client sees something even when nothing comes */
std::uint64_t latestStep(const RunFeed& feed)
{
    FeedPosition position = feed.newest();
    position.nSample -= std::min<std::uint64_t>(position.nSample, 1);
    FeedBatch last;
    feed.read(position, last, 1);
    return last.samples.empty() ? position.nSample : feed.atTime(last.samples.back().nTimeUs).nSample;
}

FeedPosition beginning(const RunFeed& feed, const std::string& sRun, const StreamBegin& begin)
{
    const FeedPosition oldest = feed.oldest();
    FeedPosition position = feed.newest();
    position.nEvent -= std::min(position.nEvent, EVENTS_AT_FIRST);
    if (!begin.sRun.empty() && begin.sRun != sRun) {
        return oldest; // a client of an earlier run, to which all of this one is new
    }
    if (begin.nAfter) {
        position.nSample = *begin.nAfter < position.nSample ? *begin.nAfter + 1 : position.nSample;
    }
    else {
        position.nSample = latestStep(feed);
    }
    return position;
}
} // namespace

FeedStream::FeedStream(std::shared_ptr<const RunFeed> pFeed, std::string sRun, const StreamBegin& begin,
                       std::chrono::milliseconds heartbeat)
    : m_pFeed(std::move(pFeed)), m_sRun(std::move(sRun)), m_position(beginning(*m_pFeed, m_sRun, begin)),
      m_heartbeat(heartbeat), m_sent(std::chrono::steady_clock::now())
{}

std::optional<std::string> FeedStream::next()
{
    m_owner.check("FeedStream::next");
    if (!std::exchange(m_bGreeted, true)) {
        return fmt::format("event: run\ndata: {{\"run\":\"{}\"}}\n\n", m_sRun);
    }
    if (m_pFeed->wait(m_position, LONGEST_WAIT)) {
        return messages();
    }
    return m_pFeed->isClosed() ? std::nullopt : std::optional(beat());
}

std::string FeedStream::beat()
{
    const auto now = std::chrono::steady_clock::now();
    if (now - m_sent < m_heartbeat) {
        return {};
    }
    m_sent = now;
    return ": alive\n\n";
}

std::string FeedStream::messages()
{
    m_pFeed->read(m_position, m_batch, SAMPLES_A_MESSAGE);
    m_text.clear();
    const auto out = std::back_inserter(m_text);
    if (!m_batch.samples.empty()) {
        fmt::format_to(out,
                       "id: {}\nevent: steps\ndata: {{\"run\":\"{}\",\"gap\":{},\"channels\":", m_position.nSample - 1,
                       m_sRun, m_batch.nLostSamples);
        appendSamples(m_text, m_batch.samples);
        fmt::format_to(out, "}}\n\n");
    }
    if (!m_batch.events.empty()) {
        fmt::format_to(out, "event: events\ndata: {{\"events\":");
        appendEvents(m_text, m_batch.events);
        fmt::format_to(out, "}}\n\n");
    }
    m_sent = std::chrono::steady_clock::now();
    return fmt::to_string(m_text);
}
