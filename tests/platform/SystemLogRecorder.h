/** @file
 * Stands in for the C library's system log and its logger, and keeps what is sent to it.
 */
#pragma once

#include <string>
#include <vector>

/** A line that was sent. */
struct SystemLogLine
{
    int nPriority;
    std::string sText;
};

/** What was sent since the last clear(). May be used from any thread. */
class SystemLogRecorder
{
public:
    static std::vector<SystemLogLine> lines();

    /** Forgets the lines, and has a logger that takes them as they come. */
    static void clear();

    /** @return the identity, options and facility of the last openlog() */
    static std::string identity();
    static int options();
    static int facility();

    /** Keeps senders waiting until release(), as a logger does that hangs. */
    static void hold();
    static void release();

    /**
     * @param nError what connecting to the logger's socket ends with; 0 for a logger that is there
     * @param bStream whether the socket is of the stream kind
     */
    static void setLogger(int nError, bool bStream);
};
