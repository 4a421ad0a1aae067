/** @file
 * Trace output, stream form.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <ostream>

/** One trace group of a class; not copied. May be used from any thread. */
class EAF_PUBLIC KmtTrace
{
public:
    /**
     * @param pGroup name of the group; must be a text that outlives the object
     * @param nLevel level that the group starts with; messages above the group's current level are dropped
     */
    KmtTrace(const char* pGroup, int nLevel);
    ~KmtTrace(); // NOLINT(performance-trivially-destructible): modules import it

    KmtTrace(const KmtTrace&) = delete;
    KmtTrace& operator=(const KmtTrace&) = delete;

    /**
     * Begins a message. Stream text and values into the result, then a newline and a flush, which end it.
     * @param nLevel 1 failure, 4 system log, 5 entry and information, 7 detail
     * @param pSourcePath source file of the caller
     * @param nLine line of the caller
     * @return stream of the calling thread, valid until that thread begins its next message
     */
    std::ostream& beginLogMsg(int nLevel, const char* pSourcePath, int nLine);

private:
    const char* m_pGroup;
    void* m_pState;
};
