#include "Platform/Trace/private/TraceGroups.h"

#include "Platform/Trace/GtTrace.h"

#include <array>

namespace
{

const std::array<GT_TraceObject*, 2> TRACE_OBJECTS = {&OPC_trace, &TI_trace};

// Modules read the level as a plain int, so it is stored in one piece.
void storeLevel(GT_TraceObject& object, int nLevel)
{
    std::atomic_ref<int>(object.nLevel).store(nLevel, std::memory_order_relaxed);
}

int loadLevel(GT_TraceObject& object)
{
    return std::atomic_ref<int>(object.nLevel).load(std::memory_order_relaxed);
}

} // namespace

TraceGroups& TraceGroups::get()
{
    static auto* const pGroups = new TraceGroups;
    return *pGroups;
}

TraceGroup& TraceGroups::group(const std::string& sName)
{
    const auto [it, bNew] = m_groups.try_emplace(sName);
    TraceGroup& group = it->second;
    if (bNew) {
        group.sName = sName;
        if (m_nLevelOfNewGroups) {
            group.nLevel = *m_nLevelOfNewGroups;
            group.bLevelSet = true;
        }
    }
    return group;
}

TraceGroup& TraceGroups::join(const char* pName, int nLevel)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    TraceGroup& joined = group(pName != nullptr ? pName : "");
    if (!joined.bLevelSet) {
        joined.nLevel = nLevel;
        joined.bLevelSet = true;
    }
    joined.bJoined = true;
    return joined;
}

void TraceGroups::setLevel(const std::string& sName, int nLevel)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (GT_TraceObject* const pObject : TRACE_OBJECTS) {
        if (sName == pObject->pName) {
            storeLevel(*pObject, nLevel);
        }
    }
    TraceGroup& changed = group(sName);
    changed.nLevel = nLevel;
    changed.bLevelSet = true;
}

void TraceGroups::setLevelOfAll(int nLevel)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_nLevelOfNewGroups = nLevel;
    for (GT_TraceObject* const pObject : TRACE_OBJECTS) {
        storeLevel(*pObject, nLevel);
    }
    for (auto& entry : m_groups) {
        entry.second.nLevel = nLevel;
        entry.second.bLevelSet = true;
    }
}

std::vector<TraceGroupLevel> TraceGroups::levels() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::map<std::string, int> levels;
    for (GT_TraceObject* const pObject : TRACE_OBJECTS) {
        levels.emplace(pObject->pName, loadLevel(*pObject));
    }
    for (const auto& entry : m_groups) {
        if (entry.second.bJoined) {
            levels.emplace(entry.first, entry.second.nLevel);
        }
    }
    std::vector<TraceGroupLevel> result;
    result.reserve(levels.size());
    for (const auto& entry : levels) {
        result.push_back({entry.first, entry.second});
    }
    return result;
}
