/** @file
 * Trace records that carry a diagnostic code.
 */
#pragma once

#include "Platform/Trace/GtTrace.h"

/**
 * Writes a record if its trace object's level admits its code.
 * @param object trace object
 * @param nCode diagnostic code, which decides the level and is printed
 * @param pSourcePath source path that the record carries
 * @param nLine source line that the record carries
 * @param pFormat format and arguments of the text, as for printf
 */
template <class... TArguments>
void traceDiagnostic(GT_TraceObject& object, unsigned long nCode, const char* pSourcePath, int nLine,
                     const char* pFormat, TArguments... arguments)
{
    const int nLevel = CPlxTraceHandler_DmLevel2GtLevel(nCode);
    if (object.nLevel < nLevel) {
        return;
    }
    GT_beginImpl(&object, nLevel, pSourcePath, nLine);
    GT_rawprintf(pFormat, arguments...);
    GT_rawprintf("      code: %#lx\n", nCode);
    GT_endImpl();
}
