/** @file
 * What the unit's process decides about trace output.
 */
#pragma once

#include "Platform/EAFResult.h"
#include "Platform/Trace/SystemLogSettings.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/** One trace record, as it is written. */
struct TraceRecord
{
    std::string sGroup;
    int nLevel;
    std::string sSourcePath;
    int nLine;
    std::string sText; /**< without the ending newline; inner newlines become blanks, so that a record is a line */
};

/** A trace group and its current level. */
struct TraceGroupLevel
{
    std::string sGroup;
    int nLevel;
};

/** Control of the trace. May be called from any thread, but where it says otherwise. */
class EAF_PUBLIC TraceControl
{
public:
    /**
     * Sets the current level of a group, which may come to life later: stream groups are known by the name that their
     * KmtTrace was built with, the two trace objects as "OPC" and "TI". The level holds until it is set anew.
     */
    static void setLevel(const std::string& sGroup, int nLevel);

    /** Sets the current level of every group, known or to come. */
    static void setLevelOfAll(int nLevel);

    /** @return the groups known so far, sorted by name */
    static std::vector<TraceGroupLevel> levels();

    /** Lets level-4 lines reach the system log, or not; they do unless this says otherwise. */
    static void setSystemLogEnabled(bool bEnabled);

    /**
     * Sets how the lines to come are marked in the system log, as user and info unless this says otherwise, and starts
     * the thread that hands them over; the first line does so otherwise.
     * @throws std::system_error when the system has no thread to give
     */
    static void setSystemLog(const SystemLogSettings& settings);

    /**
     * Waits until the system log has the lines that were written before the call. Without a system logger that does not
     * take longer: the lines are lost then, which the trace group "SystemLog" says once at level 1. Any thread but
     * the regulation thread of a running unit.
     * @return false when the time passed before that
     */
    static bool waitForSystemLog(std::chrono::milliseconds limit);

    /**
     * @return how many lines the system log never got because too many waited already; the group "SystemLog" says so
     * at level 1 when it begins
     */
    static std::uint64_t lostSystemLogLines();

    /** Lets lines reach standard error, or not; they do unless this says otherwise. */
    static void setStandardErrorEnabled(bool bEnabled);

    /**
     * Hands every record written to a listener as well, in the thread that wrote it, also while the outputs are off.
     * @param listener replaces the one before; an empty function ends listening. Must not trace.
     */
    static void setListener(std::function<void(const TraceRecord&)> listener);
};
