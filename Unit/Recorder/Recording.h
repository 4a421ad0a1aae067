/** @file
 * Reads a recording.
 */
#pragma once

#include "Unit/Process/StepSample.h"
#include "Unit/Recorder/RecordedRun.h"
#include "Unit/Recorder/StepSummary.h"
#include "Unit/Telemetry/RunEvent.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/** How closely a recording tells what a channel did. */
enum class EResolution
{
    Steps,
    Seconds,
    Minutes
};

/** Which rows to read. */
struct RecordedRange
{
    std::int64_t nRun = 0;
    std::optional<unsigned int> nChannel; /**< all of them when empty */
    std::uint64_t nFromUs = 0;            /**< since the run began */
    std::uint64_t nToUs = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()); /**< included */
};

/** The times of the first and of the last row. */
struct RecordedTimes
{
    std::uint64_t nFirstUs = 0;
    std::uint64_t nLastUs = 0;
};

/**
 * A recording, open to be read; a unit may record into it meanwhile. Reads a part at a time, so that the unit's journal
 * never has to wait for a reader. Use it from one thread. Errors are thrown as std::runtime_error that names the file.
 */
class Recording
{
public:
    /** @throws ConfigurationError when the file is not there, or not a recording that this program reads */
    explicit Recording(std::string sPath);

    /**
     * Opens a file that this process records into. It is not looked at besides SQLite: closing it afterwards would give
     * up the locks that the recorder holds on it.
     * @throws ConfigurationError as the constructor does
     */
    static Recording ofThisProcess(std::string sPath);

    ~Recording();

    Recording(Recording&&) noexcept;
    Recording& operator=(Recording&&) = delete;
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    const std::string& path() const { return m_sPath; }

    /** @return all runs without their files, oldest first */
    std::vector<RecordedRun> runs() const;

    /** @return the files that a run was started with, the unit file first */
    std::vector<RecordedFile> files(std::int64_t nRun) const;

    /** @return what there is of a run; none when there is nothing */
    std::optional<RecordedTimes> times(EResolution eResolution, std::int64_t nRun,
                                       std::optional<unsigned int> nChannel = std::nullopt) const;

    // Each calls a function with every row of a range, in the order of their times and then of their channels' numbers.
    void forEachStep(const RecordedRange& range, const std::function<void(const StepSample&)>& function) const;

    /** @param eResolution seconds or minutes. The first and the last of a range may begin or end outside of it */
    void forEachSummary(EResolution eResolution, const RecordedRange& range,
                        const std::function<void(const StepSummary&)>& function) const;

    void forEachEvent(const RecordedRange& range, const std::function<void(const RunEvent&)>& function) const;

    /** @return the latest events of a range, oldest first. @param nBeforeId only those with lower numbers */
    std::vector<RunEvent> lastEvents(const RecordedRange& range, std::uint64_t nBeforeId, std::size_t nMost) const;

private:
    Recording() = default;
    void open();

    class Implementation;

    std::string m_sPath;
    std::unique_ptr<Implementation> m_pImplementation;
};
