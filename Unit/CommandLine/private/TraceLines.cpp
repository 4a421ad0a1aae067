#include "Unit/CommandLine/TraceLines.h"

#include <fmt/format.h>

#include <map>
#include <utility>

TraceLines::TraceLines(bool bActive) : m_bActive(bActive)
{
    if (m_bActive) {
        TraceControl::setListener([this](const TraceRecord& record) { add(record); });
        TraceControl::setStandardErrorEnabled(false);
    }
}

TraceLines::~TraceLines()
{
    if (m_bActive) {
        TraceControl::setStandardErrorEnabled(true);
        TraceControl::setListener({});
    }
}

void TraceLines::add(const TraceRecord& record)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_records.size() < MAX_LINES) {
        m_records.push_back(record);
    }
    else {
        ++m_nDropped;
    }
}

std::string TraceLines::take()
{
    std::deque<TraceRecord> records;
    std::uint64_t nDropped = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        records.swap(m_records);
        nDropped = std::exchange(m_nDropped, 0);
    }
    if (records.empty()) {
        return {};
    }
    // The listener is told of lines that go to the system log only, too.
    std::map<std::string, int> levels;
    for (const TraceGroupLevel& group : TraceControl::levels()) {
        levels[group.sGroup] = group.nLevel;
    }
    std::string sText;
    for (const TraceRecord& record : records) {
        if (record.nLevel <= levels[record.sGroup]) {
            sText += fmt::format("{}{} {} {}", sText.empty() ? "" : "\n", record.sGroup, record.nLevel, record.sText);
        }
    }
    return nDropped == 0 ? sText : sText + fmt::format("\n{} more trace lines", nDropped);
}
