/** @file
 * What a recording has of the run that the page shows.
 */
#pragma once

#include "Unit/Recorder/Recording.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

/** A run in a recording, opened when it is asked for first. Any thread; one reads at a time, so that pages that ask for
 * much take one core at most. */
class RecordedPast
{
public:
    using Opener = std::function<Recording()>;
    using Reader = std::function<void(const Recording& recording, const RecordedRun& run)>;

    /** @param sRun tells the run, as RecordedRun::sRun does. @param open may throw; it is called again then */
    RecordedPast(Opener open, std::string sRun);

    /**
     * Lets a function read.
     * @return whether it was called: not before the run is in the file
     * @throws std::exception when the file cannot be read
     */
    bool read(const Reader& reader);

    /** @return the earliest time that there is anything of; none when there is nothing, or nothing can be read. Does
     *          not wait for other readers, and may be a little older therefore */
    std::optional<std::uint64_t> earliestUs();

private:
    bool readLocked(const Reader& reader);

    const Opener m_open;
    const std::string m_sRun;
    std::mutex m_mutex; // of the two below
    std::optional<Recording> m_recording;
    std::optional<RecordedRun> m_run;
    std::atomic<std::int64_t> m_nEarliestUs{-1}; // negative: none
};

/** @return the earliest time that any resolution has; none when there is nothing */
std::optional<std::uint64_t> earliestTimeOf(const Recording& recording, const RecordedRun& run);
