/** @file
 * Records a run while it goes on.
 */
#pragma once

#include "Unit/Recorder/RecordedRun.h"
#include "Unit/Telemetry/RunFeed.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/** How a recording goes. */
struct RecorderStatus
{
    bool bPaused = false;
    std::string sReason; /**< why it pauses */
    std::uint64_t nSteps = 0;
    std::uint64_t nLostSteps = 0; /**< that were gone before they could be written */
};

/**
 * Writes what a feed holds into an SQLite file, in a thread of its own and a transaction at a time. What is in the file
 * stays whole and readable, whenever the process is killed. While it cannot write, it tries again each time.
 *
 * Opening checks the file and changes nothing in one that holds something; a file that opening made is taken away again
 * when no run began.
 */
class UnitRecorder
{
public:
    /** From one transaction to the next: what is written is never older than a second. */
    static constexpr std::chrono::milliseconds INTERVAL{800};

    /**
     * Opens the file, or makes it; no other process can record into it until this goes.
     * @throws ConfigurationError when it is not fit to be recorded into
     */
    explicit UnitRecorder(const RecorderConfiguration& configuration);

    /** Stops as stop() does. */
    ~UnitRecorder();

    UnitRecorder(const UnitRecorder&) = delete;
    UnitRecorder& operator=(const UnitRecorder&) = delete;

    /** Records from now on; once. @param feed must outlive the object */
    void begin(RecordedRun run, const RunFeed& feed);

    /** Writes what the feed still holds and ends the recording. Call it when the feed is complete. */
    void stop();

    const std::string& path() const;

    /** Any thread. */
    RecorderStatus status() const;

    /** @return what people have to be told since the last call, a line each. Any thread */
    std::vector<std::string> takeNotices();

private:
    class Implementation;
    std::unique_ptr<Implementation> m_pImplementation;
};
