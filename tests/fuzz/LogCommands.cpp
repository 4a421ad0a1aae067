// The log commands of the module against a model of what they may answer, on the platform's doubles.
#include "Control/OutputPowerController/private/OutputPowerControlLog.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/RecordingPlatform.h"

#include <algorithm>
#include <array>

namespace
{
using EOption = OutputPowerControlLog::EOPCLogRequestOption;

constexpr std::array<const char*, 7> OPTIONS = {"Start", "Enable",       "Stop",        "Disable",
                                                "Read",  "ReadAndReset", "SaveToSysLog"};

/** An input is a sequence of operations that end with a NUL; the first letter of each says what it is. */
enum EOperation : char
{
    TRANSIENT_OPTION = 'T',  /**< the rest is an option, in a request made by the library */
    TRANSIENT_REQUEST = 'X', /**< the rest is a call in XML-RPC, as it comes from a client */
    STATISTICS_OPTION = 'O', /**< the rest is an option */
    SAMPLES = 'S',           /**< the rest are the values of samples, and their number */
    RESTART = 'R'
};

/** What the log answered, checked for what holds for every answer. */
class Answer
{
public:
    explicit Answer(XMLRPC_VALUE value) : m_value(value)
    {
        require(m_value != nullptr, "no answer");
        const std::string sText = writeXmlRpcResponse(m_value.get());
        require(!checkXmlRpc(sText, EXmlRpcMessage::Response), "an answer that is no response: " + sText);
    }

    bool isFault() const { return XMLRPC_ValueIsFault(m_value.get()) != 0; }
    int faultCode() const { return XMLRPC_GetValueFaultCode(m_value.get()); }
    int samples() const { return XMLRPC_VectorSize(XMLRPC_VectorGetValueWithID(m_value.get(), "OPCLog")); }

private:
    XmlRpcValue m_value;
};

/** A log, and what it must hold. */
class ModelledLog
{
public:
    ModelledLog() { require(m_log.initialize() == EAF_OK, "the log does not start"); }
    ~ModelledLog() { m_log.unInitialize(); }
    ModelledLog(const ModelledLog&) = delete;
    ModelledLog& operator=(const ModelledLog&) = delete;

    void operate(const std::string& sOperation)
    {
        const std::string sRest = sOperation.substr(std::min<std::size_t>(sOperation.size(), 1));
        switch (sOperation.empty() ? '\0' : sOperation.front()) {
        case TRANSIENT_OPTION:
            return transientOption(sRest);
        case TRANSIENT_REQUEST:
            return transientRequest(sRest);
        case STATISTICS_OPTION:
            return statisticsOption(sRest);
        case SAMPLES:
            return addSamples(sRest);
        case RESTART:
            m_log.logsRestart();
            m_nSamples = m_bActive ? 0 : m_nSamples;
            break;
        default:
            break;
        }
        check();
    }

private:
    void transientOption(const std::string& sOption)
    {
        checkConversion(sOption);
        XmlRpcValue members = makeXmlRpcStruct(nullptr);
        addXmlRpcValue(members.get(), makeXmlRpcString("RequestOption", sOption));
        XmlRpcValue data = makeXmlRpcArray(nullptr);
        addXmlRpcValue(data.get(), std::move(members));
        const XmlRpcRequest request(XMLRPC_RequestNew());
        XMLRPC_RequestSetData(request.get(), data.release());
        checkTransient(sOption, request.get());
    }

    void transientRequest(const std::string& sText)
    {
        if (checkXmlRpc(sText, EXmlRpcMessage::Call)) {
            return;
        }
        const XmlRpcRequest request = parseXmlRpc(sText, EXmlRpcMessage::Call);
        XMLRPC_VALUE members = XMLRPC_VectorRewind(XMLRPC_RequestGetData(request.get()));
        XMLRPC_VALUE option =
            XMLRPC_VectorGetValueWithID_Case(members, "RequestOption", XMLRPC_GetDefaultIdCaseComparison());
        if (XMLRPC_GetValueType(option) == xmlrpc_string) {
            checkTransient(XMLRPC_GetValueString(option), request.get());
            return;
        }
        const Answer answer = ask(request.get());
        require(answer.isFault() && answer.faultCode() == eTI_E_REQUIRED_INPUT_MISSING,
                "a request without an option is answered");
        check();
    }

    Answer ask(XMLRPC_REQUEST request)
    {
        return Answer(OutputPowerControlLog::statichandleTIManageOPCTransientLog(&m_log, nullptr, request, nullptr));
    }

    void checkTransient(const std::string& sOption, XMLRPC_REQUEST request)
    {
        const bool bRead = sOption == "Read";
        const bool bKnown = bRead || sOption == "Enable" || sOption == "Disable" || sOption == "SaveToSysLog";
        const Answer answer = ask(request);
        require(answer.isFault() == (!bKnown || (bRead && m_nSamples == 0)), "the wrong answer to " + sOption);
        require(!answer.isFault() || answer.faultCode() == eTI_E_FAILED, "the wrong fault for " + sOption);
        require(!bRead || answer.isFault() || answer.samples() == static_cast<int>(m_nSamples),
                "the wrong number of samples");
        if (sOption == "Enable") {
            m_nSamples = 0;
        }
        m_bActive = sOption == "Enable" || (m_bActive && sOption != "Disable");
        check();
    }

    void statisticsOption(std::string sOption)
    {
        checkConversion(sOption);
        const bool bKnown = sOption == "Start" || sOption == "Stop" || sOption == "Read" || sOption == "ReadAndReset" ||
                            sOption == "SaveToSysLog";
        const Answer answer(OutputPowerControlLog::staticManageOpcLog(&m_log, sOption.data()));
        require(answer.isFault() != bKnown, "the wrong answer to " + sOption);
        require(!answer.isFault() || answer.faultCode() == eTI_E_FAILED, "the wrong fault for " + sOption);
        m_bStatistics = sOption == "Start" || (m_bStatistics && sOption != "Stop");
        check();
    }

    void checkConversion(const std::string& sOption) const
    {
        const auto* const pKnown = std::find(OPTIONS.begin(), OPTIONS.end(), sOption);
        require(m_log.convertRequestStringToRequestEnum(sOption) == static_cast<EOption>(pKnown - OPTIONS.begin()),
                "the wrong option for " + sOption);
    }

    void addSamples(const std::string& sValues)
    {
        for (const char cValue : sValues) {
            const int nValue = cValue * 100;
            m_log.addSampleToTransientLog(nValue, nValue + 1, nValue + 2, nValue + 3, nValue + 4);
            m_log.writeToOpcLog(nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue);
            m_nSamples += m_bActive && m_nSamples < OutputPowerControlLog::MAX_TRANSIENT_LOG_SAMPLES ? 1U : 0U;
        }
        check();
    }

    void check() const
    {
        require(m_log.getNumberOfSamplesInTransientLog() == m_nSamples, "the log holds another number of samples");
        require(m_log.isTransientLogActive() == m_bActive, "the transient log is on where it should be off");
        require(m_log.isOpcLogActive() == m_bStatistics, "the statistics are on where they should be off");
    }

    OutputPowerControlLog m_log{3};
    std::size_t m_nSamples = 0;
    bool m_bActive = false;
    bool m_bStatistics = false;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    RecordingPlatform::get().reset();
    ModelledLog log;
    for (const std::string& sOperation : splitText(inputText(pData, nSize), '\0')) {
        log.operate(sOperation);
    }
    require(RecordingPlatform::get().areTracesWellFormed(), "a message to the trace that is not whole");
    return 0;
}
