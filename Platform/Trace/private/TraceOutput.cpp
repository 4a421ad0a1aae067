#include "Platform/Trace/private/TraceOutput.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <syslog.h>

#include <string>
#include <utility>

namespace
{

// A listener that traces must not meet itself.
thread_local bool t_bTelling = false;

/** Runs one of the outputs; the others still get the record when it fails. */
template <class TOutput> void attempt(TOutput output) noexcept
{
    try {
        output();
    }
    catch (...) {
        // There is nobody to tell: the trace itself is what failed.
        return;
    }
}

} // namespace

TraceOutput& TraceOutput::get()
{
    static auto* const pOutput = new TraceOutput;
    return *pOutput;
}

TraceOutput::TraceOutput()
    : m_pLogger(std::make_unique<spdlog::logger>("opc", std::make_shared<spdlog::sinks::stderr_sink_mt>()))
{
    m_pLogger->set_pattern("%Y-%m-%dT%H:%M:%S.%e %v");
    openlog("opc", LOG_PID, LOG_USER);
}

void TraceOutput::write(const TraceLine& line) noexcept
{
    if (line.bToTrace && m_bStandardError) {
        attempt([this, &line] { writeToStandardError(line); });
    }
    if (line.bToSystemLog && m_bSystemLog) {
        attempt([&line] { writeToSystemLog(line); });
    }
    if (m_bListening && !t_bTelling) {
        t_bTelling = true;
        attempt([this, &line] { tellListener(line); });
        t_bTelling = false;
    }
}

void TraceOutput::writeToStandardError(const TraceLine& line)
{
    m_pLogger->info("{} {} {}:{}: {}", line.sGroup, line.nLevel, line.sSourcePath, line.nLine, line.sText);
}

void TraceOutput::writeToSystemLog(const TraceLine& line)
{
    const std::string sLine = std::string(line.sGroup) + ": " + std::string(line.sText);
    syslog(LOG_INFO, "%s", sLine.c_str());
}

void TraceOutput::tellListener(const TraceLine& line)
{
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener) {
        m_listener({std::string(line.sGroup), line.nLevel, std::string(line.sSourcePath), line.nLine,
                    std::string(line.sText)});
    }
}

void TraceOutput::setListener(std::function<void(const TraceRecord&)> listener)
{
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    m_listener = std::move(listener);
    m_bListening = static_cast<bool>(m_listener);
}
