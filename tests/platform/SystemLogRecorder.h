/** @file
 * Stands in for the C library's system log and keeps what is sent to it.
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
    static void clear();

    /** @return the identity and facility of the last openlog() */
    static std::string identity();
    static int facility();
};
