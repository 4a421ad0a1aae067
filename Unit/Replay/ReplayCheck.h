/** @file
 * Takes a recorded run again and compares.
 */
#pragma once

#include "Unit/Recorder/Recording.h"
#include "Unit/Telemetry/RunEvent.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/** What a run that was taken again came to. */
enum class EReplayResult
{
    Equal,
    Different,
    NotRepeated /**< it cannot be taken again, or not to its end; up to there it is equal */
};

/** @return the name that programs read: "equal", "different" or "not repeated" */
const char* replayResultName(EReplayResult eResult);

/** A value of a step that is not as it was recorded. */
struct StepDifference
{
    std::string sQuantity; /**< the column of the recording */
    std::string sRecorded;
    std::string sNow;
};

/** Where the first difference is. */
struct DifferentStep
{
    std::uint64_t nTimeUs = 0;
    unsigned int nChannel = 0;
    std::uint64_t nStep = 0; /**< the channel's first one is 1 */
    std::vector<StepDifference> differences;
};

/** What a check found. */
struct ReplayOutcome
{
    EReplayResult eResult = EReplayResult::Equal;
    std::uint64_t nSteps = 0;           /**< that each channel has taken again */
    std::uint64_t nUnrecordedSteps = 0; /**< of these, not compared since the recording does not have them */
    std::uint64_t nCommands = 0;
    double seconds = 0.0;                  /**< that it took */
    std::optional<DifferentStep> step;     /**< of a difference in a step */
    std::string sReason;                   /**< of another difference, or why it is not repeated; one line */
    std::vector<RunEvent> precedingEvents; /**< the last before the end of a check that is not equal, oldest first */
    std::vector<std::string> notes;        /**< what else there is to know, a line each */
};

/** Is told the time of the run that the check has come to, microseconds. */
using ReplayProgress = std::function<void(std::uint64_t nTimeUs)>;

/**
 * Starts the modules with the recorded files, lets the regulation follow the recorded deadlines, carries out the
 * recorded commands between the same steps, and compares every value of every step but its lateness, until the first
 * difference. Nothing is heard or seen of the unit outside of the process. One at a time in a process.
 * @throws ConfigurationError when the recorded files, or modules that are there no more, are to blame
 * @throws UnitStartError, std::runtime_error
 */
ReplayOutcome checkReplay(const Recording& recording, const RecordedRun& run, const ReplayProgress& progress = nullptr);
