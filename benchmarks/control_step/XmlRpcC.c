#include "benchmarks/control_step/XmlRpcC.h"

#include <string.h>
#include <xmlrpc-c/base.h>

static void addMember(xmlrpc_env* pEnv, xmlrpc_value* pStruct, const char* pName, xmlrpc_value* pValue)
{
    xmlrpc_struct_set_value(pEnv, pStruct, pName, pValue);
    xmlrpc_DECREF(pValue);
}

static void addElement(xmlrpc_env* pEnv, xmlrpc_value* pArray, xmlrpc_value* pValue)
{
    xmlrpc_array_append_item(pEnv, pArray, pValue);
    xmlrpc_DECREF(pValue);
}

/** Writes a value, which it releases. */
static XmlRpcCText written(xmlrpc_env* pEnv, xmlrpc_value* pResponse)
{
    XmlRpcCText text = {NULL, NULL, 0};
    xmlrpc_mem_block* const pBlock = xmlrpc_mem_block_new(pEnv, 0);
    xmlrpc_serialize_response(pEnv, pBlock, pResponse);
    xmlrpc_DECREF(pResponse);
    if (!pEnv->fault_occurred) {
        text.pBlock = pBlock;
        text.pText = xmlrpc_mem_block_contents(pBlock);
        text.nSize = xmlrpc_mem_block_size(pBlock);
    }
    xmlrpc_env_clean(pEnv);
    return text;
}

XmlRpcCText writeSamplesByXmlRpcC(const char* const* pNames, const int (*pSamples)[SAMPLE_NUMBERS], int nSamples)
{
    xmlrpc_env env;
    xmlrpc_env_init(&env);
    xmlrpc_value* const pArray = xmlrpc_array_new(&env);
    for (int nSample = 0; nSample < nSamples; ++nSample) {
        xmlrpc_value* const pSample = xmlrpc_struct_new(&env);
        for (int n = 0; n < SAMPLE_NUMBERS; ++n) {
            addMember(&env, pSample, pNames[n], xmlrpc_int_new(&env, pSamples[nSample][n]));
        }
        addElement(&env, pArray, pSample);
    }
    xmlrpc_value* const pResponse = xmlrpc_struct_new(&env);
    addMember(&env, pResponse, "RadioChannelID", xmlrpc_int_new(&env, 0));
    addMember(&env, pResponse, "OPCLog", pArray);
    return written(&env, pResponse);
}

XmlRpcCText writeObjectsByXmlRpcC(const char* pArray, const char* const* pNames, const int (*pValues)[OBJECT_NUMBERS],
                                  int nObjects)
{
    static const char* const VALUE_NAMES[OBJECT_NUMBERS] = {"ActualValue", "MinValue", "MaxValue"};
    xmlrpc_env env;
    xmlrpc_env_init(&env);
    xmlrpc_value* const pObjects = xmlrpc_array_new(&env);
    for (int nObject = 0; nObject < nObjects; ++nObject) {
        xmlrpc_value* const pObject = xmlrpc_struct_new(&env);
        addMember(&env, pObject, "ObjectName", xmlrpc_string_new(&env, pNames[nObject]));
        for (int n = 0; n < OBJECT_NUMBERS; ++n) {
            addMember(&env, pObject, VALUE_NAMES[n], xmlrpc_int_new(&env, pValues[nObject][n]));
        }
        addElement(&env, pObjects, pObject);
    }
    xmlrpc_value* const pResponse = xmlrpc_struct_new(&env);
    addMember(&env, pResponse, pArray, pObjects);
    return written(&env, pResponse);
}

void freeXmlRpcCText(XmlRpcCText text)
{
    xmlrpc_mem_block_free(text.pBlock);
}
