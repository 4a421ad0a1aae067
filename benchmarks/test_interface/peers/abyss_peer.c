/** @file
 * Answers TI.ManageOPCTransientLog as the unit does, with the HTTP server of the library xmlrpc-c.
 *
 * usage: abyss_peer SAMPLES     (a line of five integers per sample); prints its address
 */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <xmlrpc-c/base.h>
#include <xmlrpc-c/server.h>
#include <xmlrpc-c/server_abyss.h>

enum
{
    MEMBERS = 5,
    MAX_SAMPLES = 1000,
    MAX_WAITING = 16,
    MAX_REQUESTS_PER_CONNECTION = 2000000000
};

static const char* const MEMBER_NAMES[MEMBERS] = {"TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower",
                                                  "TxRfGain"};
static int s_samples[MAX_SAMPLES][MEMBERS];
static int s_nSamples = 0;

static void require(int bWell, const char* pWhat)
{
    if (!bWell) {
        (void)fprintf(stderr, "abyss_peer: %s\n", pWhat);
        exit(1);
    }
}

static void readSamples(const char* pPath)
{
    FILE* const pFile = fopen(pPath, "r");
    require(pFile != NULL, "cannot read the samples");
    char line[128];
    while (s_nSamples < MAX_SAMPLES && fgets(line, sizeof line, pFile) != NULL) {
        char* pAt = line;
        for (int n = 0; n < MEMBERS; ++n) {
            s_samples[s_nSamples][n] = (int)strtol(pAt, &pAt, 10);
        }
        ++s_nSamples;
    }
    (void)fclose(pFile);
    require(s_nSamples > 0, "no samples");
}

static void addMember(xmlrpc_env* pEnv, xmlrpc_value* pStruct, const char* pName, xmlrpc_value* pValue)
{
    xmlrpc_struct_set_value(pEnv, pStruct, pName, pValue);
    xmlrpc_DECREF(pValue);
}

static xmlrpc_value* makeSample(xmlrpc_env* pEnv, const int* pSample)
{
    xmlrpc_value* const pStruct = xmlrpc_struct_new(pEnv);
    for (int n = 0; n < MEMBERS; ++n) {
        addMember(pEnv, pStruct, MEMBER_NAMES[n], xmlrpc_int_new(pEnv, pSample[n]));
    }
    return pStruct;
}

static xmlrpc_value* manageTransientLog(xmlrpc_env* pEnv, xmlrpc_value* pParameters, void* pServer, void* pCall)
{
    (void)pServer;
    (void)pCall;
    const char* pOption = NULL;
    xmlrpc_decompose_value(pEnv, pParameters, "({s:s,*})", "RequestOption", &pOption);
    if (pEnv->fault_occurred) {
        return NULL;
    }
    const int bRead = strcmp(pOption, "Read") == 0;
    free((void*)pOption);
    if (!bRead) {
        xmlrpc_env_set_fault(pEnv, XMLRPC_TYPE_ERROR, "invalid request option");
        return NULL;
    }
    xmlrpc_value* const pSamples = xmlrpc_array_new(pEnv);
    for (int n = 0; n < s_nSamples; ++n) {
        xmlrpc_value* const pSample = makeSample(pEnv, s_samples[n]);
        xmlrpc_array_append_item(pEnv, pSamples, pSample);
        xmlrpc_DECREF(pSample);
    }
    xmlrpc_value* const pResponse = xmlrpc_struct_new(pEnv);
    addMember(pEnv, pResponse, "RadioChannelID", xmlrpc_int_new(pEnv, 0));
    addMember(pEnv, pResponse, "OPCLog", pSamples);
    return pResponse;
}

static int listenAnywhere(void)
{
    const int nSocket = socket(AF_INET, SOCK_STREAM, 0);
    struct sockaddr_in address = {0};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    require(nSocket >= 0 && bind(nSocket, (const struct sockaddr*)&address, sizeof address) == 0, "cannot bind");
    socklen_t nSize = sizeof address;
    require(getsockname(nSocket, (struct sockaddr*)&address, &nSize) == 0, "no port");
    require(listen(nSocket, MAX_WAITING) == 0, "cannot listen"); // before anyone learns the port
    printf("http://127.0.0.1:%u/RPC2\n", (unsigned int)ntohs(address.sin_port));
    (void)fflush(stdout);
    return nSocket;
}

int main(int nArguments, char** ppArguments)
{
    require(nArguments == 2, "usage: abyss_peer SAMPLES");
    readSamples(ppArguments[1]);
    (void)signal(SIGPIPE, SIG_IGN);

    xmlrpc_env env;
    xmlrpc_env_init(&env);
    xmlrpc_registry* const pRegistry = xmlrpc_registry_new(&env);
    require(!env.fault_occurred, "no registry");
    struct xmlrpc_method_info3 method = {0};
    method.methodName = "TI.ManageOPCTransientLog";
    method.methodFunction = manageTransientLog;
    xmlrpc_registry_add_method3(&env, pRegistry, &method);

    xmlrpc_server_abyss_parms parameters = {0};
    parameters.registryP = pRegistry;
    parameters.socket_bound = 1;
    parameters.socket_handle = listenAnywhere();
    parameters.keepalive_timeout = 60;
    parameters.keepalive_max_conn = MAX_REQUESTS_PER_CONNECTION; // the library's own limit is 30
    xmlrpc_server_abyss(&env, &parameters, XMLRPC_APSIZE(socket_handle));
    require(!env.fault_occurred, env.fault_string);
    return 0;
}
