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
    eTI_E_REQUIRED_INPUT_MISSING = 2, /**< an input that the command needs is missing */
    eTI_E_FAILED = 4                  /**< the command failed, or an input is not known to it */
} ETIErrorCode;

/** Handler of one test-interface method. The value returned is the caller's to release. */
typedef struct TIMethodCStruct
{
    void* vpThis; /**< passed back as first argument */

    /**
     * Carries out a request, in the thread that regulates.
     * @param vpThis the log
     * @param pServer server that the request came to; not used
     * @param pRequest the request, not null; stays the caller's
     * @param pUserData not used
     * @return the answer or a fault, the caller's to release
     */
    // In one line, since Doxygen reads no declaration where clang-format would break it.
    // clang-format off
    XMLRPC_VALUE (*handle)(void* vpThis, struct _xmlrpc_server* pServer, struct _xmlrpc_request* pRequest, void* pUserData);
    // clang-format on
} TIMethodCStruct;

/** A log's handler of the log management command. The value returned is the caller's to release. */
typedef struct ManageLogsCStruct
{
    void* vpThis; /**< passed back as first argument */

    /**
     * Carries out an option, in the thread that regulates.
     * @param vpThis the log
     * @param sRequestOption the option's text, not null; stays the caller's
     * @return the answer or a fault, the caller's to release
     */
    XMLRPC_VALUE (*manageLogs)(void* vpThis, char* sRequestOption);
} ManageLogsCStruct;

#ifdef __cplusplus
}
#endif
