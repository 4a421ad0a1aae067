#include "Control/OutputPowerController/private/LogResponse.h"

namespace
{

constexpr unsigned long CODE_CALLED = 0x800;
constexpr unsigned long CODE_INPUT_MISSING = 0xA102;

constexpr const char* NOT_CREATED = "eTI_E_FAILED, TI.ManageOPCTransientLog failed to create response vector";

template <class... TArguments> void trace(unsigned long nCode, int nLine, const char* pFormat, TArguments... arguments)
{
    traceDiagnostic(TI_trace, nCode, LOG_SOURCE_PATH, nLine, pFormat, arguments...);
}

/** @return the text of the request's member "RequestOption", or null when there is none or it is no string */
const char* requestOption(_xmlrpc_request* pRequest)
{
    // The library's look-ups answer null to null, so a request without parameters needs no test of its own.
    XMLRPC_VALUE xParameters = XMLRPC_VectorRewind(XMLRPC_RequestGetData(pRequest));
    XMLRPC_VALUE xOption =
        XMLRPC_VectorGetValueWithID_Case(xParameters, "RequestOption", XMLRPC_GetDefaultIdCaseComparison());
    return XMLRPC_GetValueType(xOption) == xmlrpc_string ? XMLRPC_GetValueString(xOption) : nullptr;
}

/** @return a struct of the sample's fields; a member that cannot be added is left out, the rest is worth sending */
XMLRPC_VALUE createSample(const OutputPowerControlLog::TransientLog& sample)
{
    XMLRPC_VALUE xSample = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
    addInt(xSample, "TxRfPowerSet", sample.txRfPowerSet);
    addInt(xSample, "TxRfPowerTarget", sample.txRfPowerTarget);
    addInt(xSample, "TxRfDetectedPower", sample.txRfDetectedPower);
    addInt(xSample, "TxIfPower", sample.txIfPower);
    addInt(xSample, "TxRfGain", sample.txRfGain);
    return xSample;
}

} // namespace

XMLRPC_VALUE OutputPowerControlLog::statichandleTIManageOPCTransientLog(void* vpThis, _xmlrpc_server* pServer,
                                                                        _xmlrpc_request* pRequest, void* pUserData)
{
    if (vpThis == nullptr) {
        return XMLRPC_UtilityCreateFault(
            eTI_E_REQUIRED_INPUT_MISSING,
            "eTI_E_REQUIRED_INPUT_MISSING, TI.ManageOPCTransientLog failed due to vpThis NULL pointer");
    }
    return static_cast<OutputPowerControlLog*>(vpThis)->handleTIManageOPCTransientLog(pServer, pRequest, pUserData);
}

XMLRPC_VALUE OutputPowerControlLog::handleTIManageOPCTransientLog(_xmlrpc_server* /*pServer*/,
                                                                  _xmlrpc_request* pRequest, void* /*pUserData*/)
{
    const char* pRequestOption = requestOption(pRequest);
    if (pRequestOption == nullptr) {
        trace(CODE_INPUT_MISSING, __LINE__,
              "COutputPowerControlLog_HandleTIManageOPCTransientLog: Required tag RequestOption of type string "
              "missing");
        return XMLRPC_UtilityCreateFault(
            eTI_E_REQUIRED_INPUT_MISSING,
            "eTI_E_REQUIRED_INPUT_MISSING, TI.ManageOPCTransientLog failed due to missing tag RequestOption");
    }
    trace(CODE_CALLED, __LINE__,
          "COutputPowerControlLog_HandleTIManageOPCTransientLog called for sRequestOption value:%s", pRequestOption);
    XMLRPC_VALUE xResponse = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
    const bool bWasActive = isTransientLogActive();
    switch (convertRequestStringToRequestEnum(pRequestOption)) {
    case eOPC_LOG_REQUEST_ENABLE:
        setTransientLogActive(false);
        resetTransientLog();
        setTransientLogActive(true);
        break;
    case eOPC_LOG_REQUEST_DISABLE:
        setTransientLogActive(false);
        break;
    case eOPC_LOG_REQUEST_SAVE_TO_SYSLOG:
        // No sample may be appended while the log is walked.
        setTransientLogActive(false);
        writeTransientLogToSyslog();
        setTransientLogActive(bWasActive);
        break;
    case eOPC_LOG_REQUEST_READ:
        return readTransientLog(xResponse, bWasActive);
    default:
        XMLRPC_CleanupValue(xResponse);
        return createFailedFault("eTI_E_FAILED, TI.ManageOPCTransientLog invalid request option");
    }
    return addStandardResponse(xResponse) ? xResponse : failToCreateResponse({xResponse}, NOT_CREATED);
}

XMLRPC_VALUE OutputPowerControlLog::readTransientLog(XMLRPC_VALUE xResponse, bool bWasActive)
{
    const unsigned int nSamples = getNumberOfSamplesInTransientLog();
    if (nSamples == 0) {
        trace(CODE_FAILED, __LINE__, "Cannot read empty log");
        XMLRPC_CleanupValue(xResponse);
        return createFailedFault("eTI_E_FAILED, TI.ManageOPCTransientLog can not read empty log");
    }
    setTransientLogActive(false);
    XMLRPC_VALUE xSamples = XMLRPC_CreateVector("OPCLog", xmlrpc_vector_array);
    TransientLog sample{};
    for (unsigned short nSample = 1; nSample <= nSamples; ++nSample) {
        const EAFResult nStatus =
            getSampleFromTransientLog(nSample, &sample.txRfPowerSet, &sample.txRfPowerTarget, &sample.txRfDetectedPower,
                                      &sample.txIfPower, &sample.txRfGain);
        XMLRPC_VALUE xSample = createSample(sample);
        if (EAF_isFailure(nStatus) || XMLRPC_AddValueToVector(xSamples, xSample) == 0) {
            // The log stays stopped: what it holds is then what the failed read met, for whoever looks into it.
            return failToCreateResponse({xSample, xSamples, xResponse}, NOT_CREATED);
        }
    }
    setTransientLogActive(bWasActive);
    if (!addInt(xResponse, "RadioChannelID", static_cast<int>(m_nChannel)) ||
        XMLRPC_AddValueToVector(xResponse, xSamples) == 0)
    {
        return failToCreateResponse({xSamples, xResponse}, NOT_CREATED);
    }
    return xResponse;
}
