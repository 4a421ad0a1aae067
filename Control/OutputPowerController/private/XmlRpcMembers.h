/** @file
 * Adds members to XML-RPC values without losing those that are not taken.
 */
#pragma once

#include <xmlrpc-epi/xmlrpc.h>

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
