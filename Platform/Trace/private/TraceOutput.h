/** @file
 * Where trace records go: standard error, the system log, the listener.
 */
#pragma once

#include "Platform/Trace/TraceControl.h"
#include "Platform/Trace/private/SystemLog.h"
#include "Platform/Trace/private/TraceGroups.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>

namespace spdlog
{
class logger;
} // namespace spdlog

/** Level of failures, which the trace's own troubles are. */
constexpr int TRACE_LEVEL_FAILURE = 1;

/** Level of the lines that always reach the system log. */
constexpr int TRACE_LEVEL_SYSTEM_LOG = 4;

/** A record on its way out; the texts are the writing thread's. */
struct TraceLine
{
    std::string_view sGroup;
    int nLevel;
    std::string_view sSourcePath;
    int nLine;
    std::string_view sText;
    bool bToTrace;     /**< to standard error */
    bool bToSystemLog; /**< to the system log */
};

/** Writes records. May be used from any thread. */
class TraceOutput
{
public:
    /** @return the one of the process; never destroyed, since modules trace while the process ends */
    static TraceOutput& get();

    /** Writes a record; what cannot be written is lost, since tracing must not disturb its caller. */
    void write(const TraceLine& line) noexcept;

    SystemLog& systemLog() { return m_systemLog; }
    void setSystemLogEnabled(bool bEnabled) { m_bSystemLog = bEnabled; }
    void setStandardErrorEnabled(bool bEnabled) { m_bStandardError = bEnabled; }
    void setListener(std::function<void(const TraceRecord&)> listener);

private:
    TraceOutput();

    void writeToStandardError(const TraceLine& line);
    void writeToSystemLog(const TraceLine& line);
    void writeSystemLogTrouble(const std::string& sText);
    void tellListener(const TraceLine& line);

    std::atomic<bool> m_bSystemLog{true};
    std::atomic<bool> m_bStandardError{true};
    std::unique_ptr<spdlog::logger> m_pLogger;
    const TraceGroup& m_troubleGroup; // of the system log's own troubles
    SystemLog m_systemLog;

    std::atomic<bool> m_bListening{false};
    std::mutex m_listenerMutex; // held while the listener is called, so that a replaced one is not running any more
    std::function<void(const TraceRecord&)> m_listener;
};
