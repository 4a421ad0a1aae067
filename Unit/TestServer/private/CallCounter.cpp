#include "Unit/TestServer/CallCounter.h"

void CallCounter::expect(const std::vector<std::string>& methods)
{
    const std::lock_guard lock(m_mutex);
    for (const std::string& sMethod : methods) {
        m_counts.try_emplace(sMethod);
    }
}

void CallCounter::countResult(const std::string& sMethod)
{
    const std::lock_guard lock(m_mutex);
    ++m_counts[sMethod].nCalls;
}

void CallCounter::countFault(const std::string& sMethod, int nCode)
{
    const std::lock_guard lock(m_mutex);
    CallCounts& counts = m_counts[sMethod];
    ++counts.nCalls;
    ++counts.faults[nCode];
}

std::map<std::string, CallCounts> CallCounter::counts() const
{
    const std::lock_guard lock(m_mutex);
    return m_counts;
}
