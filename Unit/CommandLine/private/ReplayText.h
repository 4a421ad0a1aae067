/** @file
 * What a check of a recorded run came to, as text.
 */
#pragma once

#include "Unit/Replay/ReplayCheck.h"

#include <string>

/** What was checked, and by whom. */
struct CheckedRun
{
    std::string sFile;
    RecordedRun run;
    std::string sVersion; /**< of this program */
};

/** @return lines for people, the first with the result */
std::string replayText(const CheckedRun& checked, const ReplayOutcome& outcome);

/** @return an object for programs, a line */
std::string replayJson(const CheckedRun& checked, const ReplayOutcome& outcome);
