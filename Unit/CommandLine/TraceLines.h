/** @file
 * Trace lines on a terminal that shows status lines.
 */
#pragma once

#include "Platform/Trace/TraceControl.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

/**
 * Takes the trace off standard error while it stands, so that it can be shown where it does not spoil the status lines.
 * Lines come from any thread; the lines are taken by one.
 */
class TraceLines
{
public:
    /** Lines kept until they are taken; more are counted only. */
    static constexpr std::size_t MAX_LINES = 100;

    /** @param bActive false leaves the trace alone */
    explicit TraceLines(bool bActive);
    ~TraceLines();

    TraceLines(const TraceLines&) = delete;
    TraceLines& operator=(const TraceLines&) = delete;

    /** @return the lines since the last call, with newlines between them; empty when there were none */
    std::string take();

private:
    void add(const TraceRecord& record);

    bool m_bActive;
    std::mutex m_mutex;
    std::deque<TraceRecord> m_records;
    std::uint64_t m_nDropped = 0;
};
