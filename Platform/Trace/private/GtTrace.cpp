#include "Platform/Trace/GtTrace.h"

#include "Platform/Trace/private/TraceThread.h"

#include <cstdarg>

namespace
{

// Failures and warnings alone, until somebody asks for more.
constexpr int INITIAL_LEVEL = 3;

} // namespace

GT_TraceObject OPC_trace = {INITIAL_LEVEL, "OPC"};
GT_TraceObject TI_trace = {INITIAL_LEVEL, "TI"};

int CPlxTraceHandler_DmLevel2GtLevel(unsigned long nCode)
{
    switch (nCode) {
    case 0x8000: // failed
    case 0x8002: // null pointer
        return 1;
    case 0xA102: // warning
        return 2;
    case 0x800: // information
        return 5;
    default:
        return 7;
    }
}

void GT_beginImpl(GT_TraceObject* pObject, int nLevel, const char* pSourcePath, int nLine)
{
    TraceThread::current().codeRecord().begin(pObject, nLevel, pSourcePath, nLine);
}

void GT_rawprintf(const char* pFormat, ...)
{
    va_list arguments;
    va_start(arguments, pFormat);
    TraceThread::current().codeRecord().print(pFormat, arguments);
    va_end(arguments);
}

void GT_endImpl(void)
{
    TraceThread::current().codeRecord().end();
}
