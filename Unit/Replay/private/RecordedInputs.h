/** @file
 * What came into a recorded run: its commands and its stop.
 */
#pragma once

#include "Unit/Process/RegulationLoop.h"
#include "Unit/Recorder/Recording.h"
#include "Unit/Replay/private/RecordedWindows.h"
#include "Unit/TestServer/MethodTable.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <string>

/** Why a command is not carried out again. */
struct CommandTrouble
{
    bool bFails = false; /**< it was carried out when it was recorded and fails now; else it cannot be tried */
    std::string sText;   /**< one line; empty for none */
};

/** Brings the recorded commands and the stop to a regulation, in its thread. */
class RecordedInputs
{
public:
    /** @param loop its commands are executed in the caller; it and the recording must outlive the object */
    RecordedInputs(const Recording& recording, const RecordedRange& range, RegulationLoop& loop);

    /**
     * Brings what came before a step.
     * @param nSteps that each channel has taken
     * @param nNextUs the time of the next step
     * @return the first command that is not carried out; those behind it are left
     */
    CommandTrouble bring(std::uint64_t nSteps, std::uint64_t nNextUs);

    std::uint64_t commands() const { return m_nCommands; }

    /** @return the latest commands and the latest other events, oldest first */
    const std::deque<RunEvent>& latestEvents() const { return m_latest; }

private:
    CommandTrouble carryOut(const RunEvent& command);
    void remember(const RunEvent& event);

    RegulationLoop& m_loop;
    MethodTable m_methods;
    RecordedWindows<RunEvent> m_events;
    std::deque<RunEvent> m_latest;
    std::uint64_t m_nCommands = 0;
};

/** @return whether an event is the note of the stop */
bool isStop(const RunEvent& event);
