#include "Platform/Trace/TraceControl.h"

#include "Platform/Threads/ThreadRules.h"
#include "Platform/Trace/private/TraceGroups.h"
#include "Platform/Trace/private/TraceOutput.h"

#include <utility>

void TraceControl::setLevel(const std::string& sGroup, int nLevel)
{
    TraceGroups::get().setLevel(sGroup, nLevel);
}

void TraceControl::setLevelOfAll(int nLevel)
{
    TraceGroups::get().setLevelOfAll(nLevel);
}

std::vector<TraceGroupLevel> TraceControl::levels()
{
    return TraceGroups::get().levels();
}

void TraceControl::setSystemLogEnabled(bool bEnabled)
{
    TraceOutput::get().setSystemLogEnabled(bEnabled);
}

void TraceControl::setSystemLog(const SystemLogSettings& settings)
{
    TraceOutput::get().systemLog().setSettings(settings);
}

bool TraceControl::waitForSystemLog(std::chrono::milliseconds limit)
{
    refuseThreadRole(EThreadRole::Regulation, "TraceControl::waitForSystemLog");
    return TraceOutput::get().systemLog().wait(limit);
}

std::uint64_t TraceControl::lostSystemLogLines()
{
    return TraceOutput::get().systemLog().lostLines();
}

void TraceControl::setStandardErrorEnabled(bool bEnabled)
{
    TraceOutput::get().setStandardErrorEnabled(bEnabled);
}

void TraceControl::setListener(std::function<void(const TraceRecord&)> listener)
{
    TraceOutput::get().setListener(std::move(listener));
}
