#include "Platform/Trace/KmtTrace.h"

#include "Platform/Trace/private/TraceThread.h"

KmtTrace::KmtTrace(const char* pGroup, int nLevel)
    : m_pGroup(pGroup), m_pState(&TraceGroups::get().join(m_pGroup, nLevel))
{}

KmtTrace::~KmtTrace() = default;

std::ostream& KmtTrace::beginLogMsg(int nLevel, const char* pSourcePath, int nLine)
{
    return TraceThread::current().beginMessage(*static_cast<const TraceGroup*>(m_pState), nLevel, pSourcePath, nLine);
}
