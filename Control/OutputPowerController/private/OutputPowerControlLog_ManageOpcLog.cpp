#include "Control/OutputPowerController/private/LogResponse.h"

#include <string_view>

namespace
{

constexpr const char* NOT_CREATED = "eTI_E_FAILED, TI.ManageLogs OpcLog failed to create response vector";

// The array's name is cut here: it is whole for channels of one digit only. Test tools look for the cut name; the name
// in the broker is whole.
constexpr std::size_t ARRAY_NAME_LENGTH = 33;

/** One object of the response. */
struct LoggedObject
{
    std::string sName;
    std::int32_t nActual;
    std::int32_t nMin;
    std::int32_t nMax;
};

std::vector<LoggedObject> loggedObjects(const OutputPowerControlLog::OpcLog& log)
{
    std::vector<LoggedObject> objects = {
        {"TxRfPowerSet", log.txRfPowerSetActual, log.txRfPowerSetMin, log.txRfPowerSetMax},
        {"TxRfPowerTarget", log.txRfPowerTargetActual, log.txRfPowerTargetMin, log.txRfPowerTargetMax},
        {"TxRfDetectedPower", log.txRfDetectedPowerActual, log.txRfDetectedPowerMin, log.txRfDetectedPowerMax},
        {"TxIfPower", log.txIfPowerActual, log.txIfPowerMin, log.txIfPowerMax},
        {"TxRfGain", log.txRfGainActual, log.txRfGainMin, log.txRfGainMax},
        // One value in all three places, so that every object has the same members.
        {"TxRfGainInitial", log.txRfGainInitial, log.txRfGainInitial, log.txRfGainInitial}};
    for (int i = 0; i < 6; ++i) {
        objects.push_back({"GainReductionAmplifier" + std::to_string(i + 1), log.gainReductionAmplifierActual[i],
                           log.gainReductionAmplifierMin[i], log.gainReductionAmplifierMax[i]});
    }
    return objects;
}

} // namespace

XMLRPC_VALUE OutputPowerControlLog::staticManageOpcLog(void* vpThis, char* sRequestOption)
{
    if (vpThis == nullptr) {
        return XMLRPC_UtilityCreateFault(
            eTI_E_REQUIRED_INPUT_MISSING,
            "eTI_E_REQUIRED_INPUT_MISSING, TI.ManageLogs for OPCLog failed due to vpThis NULL pointer");
    }
    return static_cast<OutputPowerControlLog*>(vpThis)->manageOpcLog(sRequestOption);
}

XMLRPC_VALUE OutputPowerControlLog::manageOpcLog(char* sRequestOption)
{
    XMLRPC_VALUE xResponse = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
    const std::string_view sOption(sRequestOption);
    if (sOption == "Start") {
        resetOpcLog();
        setOpcLogActive(true);
    }
    else if (sOption == "Stop") {
        setOpcLogActive(false);
    }
    else if (sOption == "Read") {
        return readOpcLog(xResponse, false);
    }
    else if (sOption == "ReadAndReset") {
        return readOpcLog(xResponse, true);
    }
    else if (sOption == "SaveToSysLog") {
        writeOpcLogToSyslog();
    }
    else {
        XMLRPC_CleanupValue(xResponse);
        return createFailedFault("eTI_E_FAILED, TI.ManageLogs OpcLog invalid request option");
    }
    return addStandardResponse(xResponse) ? xResponse : failToCreateResponse({xResponse}, NOT_CREATED);
}

XMLRPC_VALUE OutputPowerControlLog::readOpcLog(XMLRPC_VALUE xResponse, bool bReset)
{
    OpcLog log;
    readFromOpcLog(&log);
    const std::string sArrayName =
        ("Channel." + std::to_string(m_nChannel) + ".TxOutputPowerControlLog").substr(0, ARRAY_NAME_LENGTH);
    XMLRPC_VALUE xObjects = XMLRPC_CreateVector(sArrayName.c_str(), xmlrpc_vector_array);
    for (const LoggedObject& object : loggedObjects(log)) {
        XMLRPC_VALUE xObject = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
        // A member that cannot be added is left out: the object is still worth sending.
        addString(xObject, "ObjectName", object.sName.c_str());
        addInt(xObject, "ActualValue", object.nActual);
        addInt(xObject, "MinValue", object.nMin);
        addInt(xObject, "MaxValue", object.nMax);
        if (XMLRPC_AddValueToVector(xObjects, xObject) == 0) {
            return failToCreateResponse({xObject, xObjects, xResponse}, NOT_CREATED);
        }
    }
    if (XMLRPC_AddValueToVector(xResponse, xObjects) == 0) {
        // Only the response is released: a library that took the array before it failed would release it twice.
        XMLRPC_CleanupValue(xResponse);
        traceDiagnostic(TI_trace, CODE_FAILED, LOG_SOURCE_PATH, __LINE__, "Failed to add XMLRPC value to vector.");
        // Without the code's name in front, unlike every other fault of the command; test tools compare the whole text.
        return createFailedFault("Failed to add XMLRPC value to vector.");
    }
    if (bReset) {
        resetOpcLog();
    }
    return xResponse;
}
