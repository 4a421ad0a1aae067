/** @file
 * The trace groups of the process and their levels.
 */
#pragma once

#include "Platform/Trace/TraceControl.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/** A group of the stream form. It outlives the trace objects that share it, whose module may be unloaded. */
struct TraceGroup
{
    std::string sName;
    std::atomic<int> nLevel{0};
    bool bJoined = false;   /**< a trace object has joined; guarded by the registry */
    bool bLevelSet = false; /**< the level is not the first trace object's to choose; guarded by the registry */
};

/** All groups. May be used from any thread. */
class TraceGroups
{
public:
    /** @return the one of the process; never destroyed, since modules trace while the process ends */
    static TraceGroups& get();

    /** @return the group of a trace object, which starts with the level given unless its level is known */
    TraceGroup& join(const char* pName, int nLevel);

    void setLevel(const std::string& sName, int nLevel);
    void setLevelOfAll(int nLevel);
    std::vector<TraceGroupLevel> levels() const;

private:
    TraceGroup& group(const std::string& sName);

    mutable std::mutex m_mutex;
    std::map<std::string, TraceGroup, std::less<>> m_groups;
    std::optional<int> m_nLevelOfNewGroups;
};
