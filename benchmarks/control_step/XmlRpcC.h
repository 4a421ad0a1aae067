/** @file
 * The values of the log commands, built and written by the library xmlrpc-c; its header and that of the module's
 * library do not go together.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    SAMPLE_NUMBERS = 5,
    OBJECT_NUMBERS = 3
};

/** A written response; to be given back to freeXmlRpcCText(). */
typedef struct XmlRpcCText
{
    void* pBlock;
    const char* pText;
    unsigned long nSize;
} XmlRpcCText;

/** @param pNames names of a sample's numbers. @return the response to "Read" of the transient log; no text on failure
 */
XmlRpcCText writeSamplesByXmlRpcC(const char* const* pNames, const int (*pSamples)[SAMPLE_NUMBERS], int nSamples);

/** @return the response to "Read" of the OPC log, whose array has the name given; no text on failure */
XmlRpcCText writeObjectsByXmlRpcC(const char* pArray, const char* const* pNames, const int (*pValues)[OBJECT_NUMBERS],
                                  int nObjects);

void freeXmlRpcCText(XmlRpcCText text);

#ifdef __cplusplus
}
#endif
