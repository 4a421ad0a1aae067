/** @file
 * The two registries of the process and the list of what was looked up in vain.
 */
#pragma once

#include "Platform/Broker/IInterface.h"
#include "Platform/EAFResult.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

/** Names and what they stand for. May be used from any thread. */
template <class TInterface> class NameRegistry
{
public:
    EAFResult add(const std::string& sName, TInterface* pInterface)
    {
        if (pInterface == nullptr) {
            return EAF_NULL_POINTER;
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_interfaces.emplace(sName, pInterface).second ? EAF_OK : EAF_FAILED;
    }

    /** @param pInterface what the name must stand for, or null for anything */
    EAFResult remove(const std::string& sName, const TInterface* pInterface)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto it = m_interfaces.find(sName);
        if (it == m_interfaces.end() || (pInterface != nullptr && it->second != pInterface)) {
            return EAF_FAILED;
        }
        m_interfaces.erase(it);
        return EAF_OK;
    }

    TInterface* find(const std::string& sName) const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto it = m_interfaces.find(sName);
        return it == m_interfaces.end() ? nullptr : it->second;
    }

    void appendNames(std::vector<std::string>& names) const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& entry : m_interfaces) {
            names.push_back(entry.first);
        }
    }

private:
    mutable std::mutex m_mutex;
    std::map<std::string, TInterface*> m_interfaces;
};

/** Names that were looked up in vain, in order, each once. May be used from any thread. */
class MissedNames
{
public:
    void add(const std::string& sName);
    std::vector<std::string> all() const;
    void clear();

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_names;
};

/** What both brokers share. */
struct Brokers
{
    NameRegistry<IInterface> interfaces;
    NameRegistry<void> records;
    MissedNames missed;

    /** @return the one of the process; never destroyed, since modules may withdraw while the process ends */
    static Brokers& get();
};
