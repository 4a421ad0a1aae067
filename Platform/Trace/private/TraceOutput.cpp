#include "Platform/Trace/private/TraceOutput.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>

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
    : m_pLogger(std::make_unique<spdlog::logger>("opc", std::make_shared<spdlog::sinks::stderr_sink_mt>())),
      m_troubleGroup(TraceGroups::get().join("SystemLog", TRACE_LEVEL_FAILURE)),
      m_systemLog([this](const std::string& sText) { writeSystemLogTrouble(sText); })
{
    m_pLogger->set_pattern("%Y-%m-%dT%H:%M:%S.%e %v");
}

void TraceOutput::write(const TraceLine& line) noexcept
{
    if (line.bToTrace && m_bStandardError) {
        attempt([this, &line] { writeToStandardError(line); });
    }
    if (line.bToSystemLog && m_bSystemLog) {
        attempt([this, &line] { writeToSystemLog(line); });
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
    m_systemLog.write(std::string(line.sGroup) + ": " + std::string(line.sText));
}

void TraceOutput::writeSystemLogTrouble(const std::string& sText)
{
    write({m_troubleGroup.sName, TRACE_LEVEL_FAILURE, "Platform/Trace/private/TraceOutput", __LINE__, sText,
           m_troubleGroup.nLevel >= TRACE_LEVEL_FAILURE, false});
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
