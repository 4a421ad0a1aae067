#include "tests/support/RecordingPlatform.h"

#include "Platform/Trace/GtTrace.h"
#include "tests/support/TraceDoubles.h"

#include <algorithm>
#include <climits>
#include <utility>

namespace
{
constexpr int TRACE_OBJECT_LEVEL = 7;

void setTraceObjectLevels(int nLevel)
{
    OPC_trace.nLevel = nLevel;
    TI_trace.nLevel = nLevel;
}
} // namespace

RecordingPlatform& RecordingPlatform::get()
{
    // Never destroyed: modules trace while the process ends.
    static RecordingPlatform* const s_pPlatform = new RecordingPlatform;
    return *s_pPlatform;
}

void RecordingPlatform::reset()
{
    setQuiet(false);
    m_script = PlatformScript{};
    clearRecords();
    TraceDoubles::resetFormat();
}

void RecordingPlatform::clearRecords()
{
    TraceDoubles::closeOpenMessages();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.clear();
    m_traces.clear();
}

void RecordingPlatform::setQuiet(bool bQuiet)
{
    TraceDoubles::closeOpenMessages();
    m_bQuiet = bQuiet;
    setTraceObjectLevels(bQuiet ? INT_MIN : TRACE_OBJECT_LEVEL);
}

CCalibrationTable& RecordingPlatform::table(const std::string& sName)
{
    CCalibrationTable& table = m_script.tables[sName];
    table.sName = sName;
    return table;
}

void* RecordingPlatform::record(const std::string& sName) const
{
    const auto found = m_script.records.find(sName);
    return found == m_script.records.end() ? nullptr : found->second;
}

std::vector<std::string> RecordingPlatform::calls() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
}

std::vector<std::string> RecordingPlatform::callsOf(const std::string& sPrefix) const
{
    std::vector<std::string> matching = calls();
    matching.erase(std::remove_if(matching.begin(), matching.end(),
                                  [&sPrefix](const std::string& sCall) { return sCall.rfind(sPrefix, 0) != 0; }),
                   matching.end());
    return matching;
}

std::size_t RecordingPlatform::indexOfCall(const std::string& sCall) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<std::size_t>(std::find(m_calls.begin(), m_calls.end(), sCall) - m_calls.begin());
}

std::vector<RecordedTrace> RecordingPlatform::traces() const
{
    TraceDoubles::closeOpenMessages();
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_traces;
}

std::vector<std::string> RecordingPlatform::traceTexts(int nLevel) const
{
    std::vector<std::string> texts;
    for (const RecordedTrace& trace : traces()) {
        if (trace.nLevel == nLevel) {
            texts.push_back((trace.bWellEnded ? "" : "NOT ENDED: ") + trace.sText);
        }
    }
    return texts;
}

bool RecordingPlatform::areTracesWellFormed() const
{
    const std::vector<RecordedTrace> all = traces();
    return std::all_of(all.begin(), all.end(), [](const RecordedTrace& trace) { return trace.bWellEnded; });
}

std::vector<std::string> RecordingPlatform::traceObjects() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_traceObjects;
}

void RecordingPlatform::append(std::string sCall)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(std::move(sCall));
}

void RecordingPlatform::appendTrace(RecordedTrace trace)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    trace.nCallsBefore = m_calls.size();
    m_traces.push_back(std::move(trace));
}

void RecordingPlatform::addTraceObject(const char* pGroup, int nLevel)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_traceObjects.push_back(std::string(pGroup) + ", " + std::to_string(nLevel));
}

void RecordingPlatform::removeTraceObject(const char* pGroup)
{
    const std::string sPrefix = std::string(pGroup) + ", ";
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find_if(m_traceObjects.begin(), m_traceObjects.end(),
                                    [&sPrefix](const std::string& sObject) { return sObject.rfind(sPrefix, 0) == 0; });
    if (found != m_traceObjects.end()) {
        m_traceObjects.erase(found);
    }
}
