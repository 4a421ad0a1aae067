/** @file
 * The recording of a run.
 */
#pragma once

#include "Unit/CommandLine/RunCommand.h"
#include "Unit/CommandLine/private/RunServer.h"
#include "Unit/Recorder/UnitRecorder.h"

#include <memory>

/** A recording that is wanted. */
struct WantedRecording
{
    std::unique_ptr<UnitRecorder> pRecorder; /**< null when none is wanted */
    RecordedRun run;                         /**< but for what its beginning tells */
};

/** Opens the file that the options or the unit file name. @throws ConfigurationError */
WantedRecording openRecording(const UnitConfiguration& unit, const RunSettings& settings, const RunOptions& options);

/** Records while it stands. */
class Recorded
{
public:
    /** @param feed must outlive the object, and be complete at its end */
    Recorded(WantedRecording& wanted, const RunIdentity& identity, const RunFeed& feed);
    ~Recorded();

    Recorded(const Recorded&) = delete;
    Recorded& operator=(const Recorded&) = delete;

private:
    UnitRecorder* m_pRecorder;
};
