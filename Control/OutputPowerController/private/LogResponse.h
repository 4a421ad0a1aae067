/** @file
 * How the log commands build their responses.
 */
#pragma once

#include "Control/OutputPowerController/private/DiagnosticTrace.h"
#include "Control/OutputPowerController/private/OutputPowerControlLog.h"

#include <initializer_list>

/** Diagnostic code of a command that failed. */
inline constexpr unsigned long CODE_FAILED = 0x8000;

/**
 * Adds a value that nothing else refers to.
 * @return whether the vector took it; a value not taken is released
 */
inline bool addMember(XMLRPC_VALUE xVector, XMLRPC_VALUE xValue)
{
    const bool bTaken = XMLRPC_AddValueToVector(xVector, xValue) != 0;
    if (!bTaken) {
        XMLRPC_CleanupValue(xValue);
    }
    return bTaken;
}

inline bool addInt(XMLRPC_VALUE xVector, const char* pName, int nValue)
{
    return addMember(xVector, XMLRPC_CreateValueInt(pName, nValue));
}

inline bool addString(XMLRPC_VALUE xVector, const char* pName, const char* pText)
{
    // Length 0 lets the library measure the text.
    return addMember(xVector, XMLRPC_CreateValueString(pName, pText, 0));
}

/** Adds the member that says that a command was carried out. @return whether the response took it */
inline bool addStandardResponse(XMLRPC_VALUE xResponse)
{
    return addString(xResponse, "StandardResponse", "OK");
}

/** @return a fault of code eTI_E_FAILED, the caller's to release */
inline XMLRPC_VALUE createFailedFault(const char* pText)
{
    return XMLRPC_UtilityCreateFault(eTI_E_FAILED, pText);
}

/**
 * Gives a response up: traces it, then releases what has been built.
 * @param values what to release, in this order
 * @param pFaultText text of the fault
 * @param nLine the caller's line
 * @return the fault to answer instead
 */
inline XMLRPC_VALUE failToCreateResponse(std::initializer_list<XMLRPC_VALUE> values, const char* pFaultText,
                                         int nLine = __builtin_LINE())
{
    traceDiagnostic(TI_trace, CODE_FAILED, LOG_SOURCE_PATH, nLine, "Failed to create response vector");
    for (XMLRPC_VALUE xValue : values) {
        XMLRPC_CleanupValue(xValue);
    }
    return createFailedFault(pFaultText);
}
