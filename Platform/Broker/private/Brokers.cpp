#include "Platform/Broker/private/Brokers.h"

#include <algorithm>

namespace
{

// A caller that asks for ever new names must not fill the memory.
constexpr std::size_t MOST_MISSED_NAMES = 1000;

} // namespace

void MissedNames::add(const std::string& sName)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_names.size() < MOST_MISSED_NAMES && std::find(m_names.begin(), m_names.end(), sName) == m_names.end()) {
        m_names.push_back(sName);
    }
}

std::vector<std::string> MissedNames::all() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_names;
}

void MissedNames::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_names.clear();
}

Brokers& Brokers::get()
{
    static auto* const pBrokers = new Brokers;
    return *pBrokers;
}
