#include "Unit/Replay/RecordedPace.h"

#include <fmt/format.h>

#include <utility>

namespace
{
constexpr std::int64_t NS_PER_US = 1000;
constexpr double NS_PER_S = 1e9;

double secondsOf(std::int64_t nNs)
{
    return static_cast<double>(nNs) / NS_PER_S;
}
} // namespace

RecordedPace::RecordedPace(TickSource source, IReplayListener& listener)
    : m_source(std::move(source)), m_listener(listener)
{}

void RecordedPace::begin(std::chrono::nanoseconds interval)
{
    m_intervalNs = interval.count();
    m_nElapsedNs = -m_intervalNs; // of the deadline before the first
    m_bGoing = true;
    lookAhead();
    goOn();
    m_bGoing = m_bGoing && m_listener.onGap(0, static_cast<std::uint64_t>(m_nElapsedNs / NS_PER_US));
}

void RecordedPace::lookAhead()
{
    m_bAhead = m_source(m_ahead);
}

std::int64_t RecordedPace::aheadNs() const
{
    return static_cast<std::int64_t>(m_ahead.nTimeUs) * NS_PER_US;
}

std::uint64_t RecordedPace::next()
{
    m_nMissing += m_bRecorded ? 0 : 1;
    ++m_nTaken;
    m_bGoing = m_listener.onTick(m_bRecorded ? &m_tick : nullptr);
    return m_bGoing ? goOn() : 0;
}

std::uint64_t RecordedPace::goOn()
{
    const std::int64_t nNextNs = m_nElapsedNs + m_intervalNs;
    const bool bAfterGap = m_nTaken > 0 && !m_bRecorded;
    if (!m_bAhead) {
        return fail("");
    }
    if (m_ahead.nSteps <= m_nTaken) {
        return fail(fmt::format("step {} at {:.6f} s is recorded after step {}", m_ahead.nSteps, secondsOf(aheadNs()),
                                m_nTaken));
    }
    const std::uint32_t nSkipped = m_ahead.nOverruns - m_nOverruns; // the count may begin anew
    m_bRecorded = m_ahead.nSteps == m_nTaken + 1;
    if (!m_bRecorded) {
        if (nSkipped != 0) {
            return fail(fmt::format("no steps are recorded from {:.6f} to {:.6f} s, and {} deadline{} skipped "
                                    "meanwhile: it is not known which",
                                    secondsOf(nNextNs), secondsOf(aheadNs()), nSkipped,
                                    nSkipped == 1 ? " was" : "s were"));
        }
        m_nElapsedNs = nNextNs;
        return 0;
    }
    if (bAfterGap && aheadNs() != nNextNs) {
        return fail(fmt::format("the steps that are not recorded before {:.6f} s do not end there, but at {:.6f} s",
                                secondsOf(aheadNs()), secondsOf(nNextNs)));
    }
    std::swap(m_tick, m_ahead);
    m_nElapsedNs = static_cast<std::int64_t>(m_tick.nTimeUs) * NS_PER_US;
    m_nOverruns = m_tick.nOverruns;
    lookAhead();
    return nSkipped;
}

std::uint64_t RecordedPace::fail(std::string sTrouble)
{
    m_bGoing = false;
    m_nElapsedNs += m_intervalNs;
    m_sTrouble = std::move(sTrouble);
    return 0;
}

void RecordedPace::serve(CommandQueue& /*commands*/)
{
    m_bGoing = m_bGoing && m_listener.onGap(m_nTaken, static_cast<std::uint64_t>(m_nElapsedNs / NS_PER_US));
}
