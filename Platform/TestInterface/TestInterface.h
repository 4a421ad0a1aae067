/** @file
 * What a module registers in the C interface broker to be called by the test interface.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <xmlrpc-epi/xmlrpc.h>

#ifdef __cplusplus
extern "C" {
#endif

struct _xmlrpc_server;
struct _xmlrpc_request;

/** Fault codes of test-interface commands. */
typedef enum ETIErrorCode
{
    eTI_E_REQUIRED_INPUT_MISSING = 2,
    eTI_E_FAILED = 4
} ETIErrorCode;

/** Handler of one test-interface method. The value returned is the caller's to release. */
typedef struct TIMethodCStruct
{
    void* vpThis; /**< passed back as first argument */
    XMLRPC_VALUE(*handle)
    (void* vpThis, struct _xmlrpc_server* pServer, struct _xmlrpc_request* pRequest, void* pUserData);
} TIMethodCStruct;

/** A log's handler of the log management command. The value returned is the caller's to release. */
typedef struct ManageLogsCStruct
{
    void* vpThis; /**< passed back as first argument */
    XMLRPC_VALUE (*manageLogs)(void* vpThis, char* sRequestOption);
} ManageLogsCStruct;

#ifdef __cplusplus
}
#endif
