#include "Unit/LivePage/RecordedPast.h"

#include <algorithm>
#include <exception>
#include <utility>

RecordedPast::RecordedPast(Opener open, std::string sRun) : m_open(std::move(open)), m_sRun(std::move(sRun)) {}

bool RecordedPast::read(const Reader& reader)
{
    const std::lock_guard lock(m_mutex);
    return readLocked(reader);
}

bool RecordedPast::readLocked(const Reader& reader)
{
    try {
        if (!m_recording) {
            m_recording.emplace(m_open());
        }
        if (!m_run) {
            for (RecordedRun& run : m_recording->runs()) {
                if (run.sRun == m_sRun) {
                    m_run = std::move(run);
                }
            }
        }
        if (m_run) {
            reader(*m_recording, *m_run);
        }
        return m_run.has_value();
    }
    catch (const std::exception&) {
        m_recording.reset(); // the next one begins anew
        m_run.reset();
        throw;
    }
}

std::optional<std::uint64_t> RecordedPast::earliestUs()
{
    const std::unique_lock lock(m_mutex, std::try_to_lock);
    if (lock.owns_lock()) {
        std::optional<std::uint64_t> nEarliestUs;
        try {
            (void)readLocked([&](const Recording& recording, const RecordedRun& run) {
                nEarliestUs = earliestTimeOf(recording, run);
            });
        }
        catch (const std::exception&) {
            nEarliestUs.reset(); // who asks for the history is told why
        }
        m_nEarliestUs = nEarliestUs ? static_cast<std::int64_t>(*nEarliestUs) : -1;
    }
    const std::int64_t nEarliestUs = m_nEarliestUs;
    return nEarliestUs < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(nEarliestUs));
}

std::optional<std::uint64_t> earliestTimeOf(const Recording& recording, const RecordedRun& run)
{
    std::optional<std::uint64_t> nEarliestUs;
    for (const EResolution eResolution : {EResolution::Steps, EResolution::Seconds, EResolution::Minutes}) {
        if (const auto times = recording.times(eResolution, run.nId)) {
            nEarliestUs = std::min(nEarliestUs.value_or(times->nFirstUs), times->nFirstUs);
        }
    }
    return nEarliestUs;
}
