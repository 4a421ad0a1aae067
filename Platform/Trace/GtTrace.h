/** @file
 * Trace output, printf form. May be used from any thread; a record belongs to the thread that began it.
 */
#pragma once

#include "Platform/EAFResult.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A trace object: callers compare nLevel with the level of what they want to say before they say it. */
typedef struct GT_TraceObject
{
    int nLevel;        /**< callers begin no record above it; may change at any time, in one piece */
    const char* pName; /**< name that the trace shows; lives as long as the process */
} GT_TraceObject;

/** Trace object of the output power controller's entry points. */
extern EAF_PUBLIC GT_TraceObject OPC_trace;
/** Trace object of the test-interface commands. */
extern EAF_PUBLIC GT_TraceObject TI_trace;

/**
 * @param nCode diagnostic code of a record
 * @return level that a trace object must have reached for the record to be written
 */
EAF_PUBLIC int CPlxTraceHandler_DmLevel2GtLevel(unsigned long nCode);

/**
 * Begins a record.
 * @param pObject trace object that it belongs to
 * @param nLevel level of the record
 * @param pSourcePath source file of the caller
 * @param nLine line of the caller
 */
EAF_PUBLIC void GT_beginImpl(GT_TraceObject* pObject, int nLevel, const char* pSourcePath, int nLine);

/**
 * Adds text to the record that this thread has begun.
 * @param pFormat format and arguments as for printf
 */
EAF_PUBLIC void GT_rawprintf(const char* pFormat, ...);

/** Ends the record and writes it. */
EAF_PUBLIC void GT_endImpl(void);

#ifdef __cplusplus
}
#endif
