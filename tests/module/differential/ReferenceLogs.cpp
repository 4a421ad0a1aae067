#include "tests/module/differential/ReferenceLogs.h"

#include <algorithm>

namespace Differential
{
namespace
{
constexpr const char* PREFIX = " RQX.OPCL Control/OutputPowerController/private/OutputPowerControlLog: ";
constexpr const char* OK = "{StandardResponse=\"OK\",}";
// Of the objects in the response and in the dump, by quantity.
constexpr std::array<const char*, 5> NAMES = {"TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower", "TxIfPower",
                                              "TxRfGain"};
constexpr std::size_t NAME_BYTES = 33; // of the response's array
// Names in the registry do not end there.
constexpr const char* LOG_NAME = ".TxOutputPowerControlLog";

std::string fault(int nCode, const std::string& sText)
{
    return "fault " + std::to_string(nCode) + " \"" + sText + "\"";
}

std::string transientFault(const char* pText)
{
    return fault(4, std::string("eTI_E_FAILED, TI.ManageOPCTransientLog ") + pText);
}

/** @return the object of quantity @p i, of the twelve; the sixth is the initial gain */
std::string objectName(std::size_t i)
{
    return i < NAMES.size()    ? NAMES[i]
           : i == NAMES.size() ? std::string("TxRfGainInitial")
                               : "GainReductionAmplifier" + std::to_string(i - NAMES.size());
}
} // namespace

std::string channelName(const std::string& sBase, std::uint32_t nChannel)
{
    return nChannel == 0 ? sBase : sBase + "_" + std::to_string(nChannel);
}

ReferenceLogs::ReferenceLogs(Environment& environment, Coverage& coverage, std::uint32_t nChannel,
                             const Constants& constants)
    : m_environment(environment), m_coverage(coverage), m_sChannel(std::to_string(nChannel)),
      m_sChannelId(std::to_string(static_cast<std::int32_t>(nChannel))), m_constants(constants)
{
    trace(5, "Enter: OutputPowerControlLog()");
}

void ReferenceLogs::trace(int nLevel, const std::string& sText)
{
    m_environment.log().line("trace ", nLevel, PREFIX, sText);
}

void ReferenceLogs::testTrace(std::int32_t nLevel, const char* pCode, const std::string& sText)
{
    if (m_environment.testTraceLevel() >= nLevel) {
        m_environment.log().line("TI ", nLevel, " Control/OutputPowerController/private/OutputPowerControlLog: ", sText,
                                 "      code: ", pCode);
    }
}

void ReferenceLogs::initialize()
{
    trace(5, "Enter: initialize() for channel " + m_sChannel);
    m_samples.clear();
    resetOpc();
    EventLog& log = m_environment.log();
    log.line("registerInterface ",
             m_sChannel == "0" ? "IOutputPowerControlLog" : "IOutputPowerControlLog_" + m_sChannel);
    log.line("CInterfaceBroker_GetInstance");
    log.line("CInterfaceBroker_RegisterInterface Channel.", m_sChannel, LOG_NAME);
    log.line("CInterfaceBroker_RegisterInterface TIManageOPCTransientLogCh", m_sChannel);
    log.line("CInterfaceBroker_DestroyInstance");
    trace(5, "Exit: initialize() finished successfully for channel " + m_sChannel);
}

void ReferenceLogs::uninitialize()
{
    trace(5, "Enter: unInitialize() for channel " + m_sChannel);
    EventLog& log = m_environment.log();
    log.line("CInterfaceBroker_GetInstance");
    log.line("CInterfaceBroker_UnregisterInterface Channel.", m_sChannel, LOG_NAME);
    log.line("CInterfaceBroker_UnregisterInterface TIManageOPCTransientLogCh", m_sChannel);
    log.line("unregisterInterface ",
             m_sChannel == "0" ? "IOutputPowerControlLog" : "IOutputPowerControlLog_" + m_sChannel);
}

void ReferenceLogs::restart()
{
    if (m_bTransientActive) {
        m_samples.clear();
    }
    if (m_bOpcActive) {
        resetOpc();
    }
    if (m_bTransientActive && m_bOpcActive) {
        m_coverage.count(ECorner::LogsRestarted);
    }
}

void ReferenceLogs::resetOpc()
{
    m_statistics = {};
    m_nInitialGain = 0;
    m_bFirst = true;
}

void ReferenceLogs::writeOpc(const Quantities& quantities)
{
    const bool bSeed = m_bFirst || !m_bOpcActive;
    m_bFirst = m_bFirst && !m_bOpcActive;
    if (bSeed) {
        m_coverage.count(ECorner::OpcLogSeeded);
    }
    for (std::size_t i = 0; i < QUANTITIES; ++i) {
        Statistics& seen = m_statistics[i];
        const std::int64_t nValue = quantities[i];
        if (bSeed) {
            seen = {nValue, nValue, nValue};
            if (nValue < 0) {
                m_coverage.count(ECorner::OpcLogNegativeSeedHasNoZero);
            }
            continue;
        }
        if (nValue < seen.nMin) {
            m_coverage.count(ECorner::OpcLogMinimumFell);
        }
        if (nValue > seen.nMax) {
            m_coverage.count(ECorner::OpcLogMaximumRose);
        }
        seen = {std::min(seen.nMin, nValue), nValue, std::max(seen.nMax, nValue)};
    }
}

void ReferenceLogs::addSample(const Sample& sample)
{
    if (m_samples.size() == m_constants.nTransientSamples) {
        m_coverage.count(ECorner::TransientLogFull);
        return;
    }
    const bool bLast = m_samples.size() + 1 == m_constants.nTransientSamples;
    if (bLast) {
        m_coverage.count(ECorner::TransientLogLastSample);
    }
    else if (!m_samples.empty()) {
        m_samples.back()[2] = sample[2];
    }
    m_samples.push_back(sample);
}

void ReferenceLogs::opcCommand(std::size_t nOption)
{
    const std::string sOption = OPC_LOG_OPTIONS[nOption];
    if (sOption == "Start" || sOption == "Stop") {
        if (sOption == "Start") {
            resetOpc();
        }
        m_bOpcActive = sOption == "Start";
        respond(OK);
    }
    else if (sOption == "Read" || sOption == "ReadAndReset") {
        if (!m_bFirst) {
            m_coverage.count(ECorner::OpcLogReadWithSamples);
        }
        respond(opcResponse());
        if (sOption == "ReadAndReset") {
            resetOpc();
        }
    }
    else if (sOption == "SaveToSysLog") {
        dumpOpc();
        respond(OK);
    }
    else {
        respond(fault(4, "eTI_E_FAILED, TI.ManageLogs OpcLog invalid request option"));
    }
}

std::string ReferenceLogs::opcResponse() const
{
    std::string sResponse = "{" + ("Channel." + m_sChannel + LOG_NAME).substr(0, NAME_BYTES) + "=[";
    for (std::size_t i = 0; i <= QUANTITIES; ++i) {
        const Statistics initial = {m_nInitialGain, m_nInitialGain, m_nInitialGain};
        const Statistics& object = i < 5 ? m_statistics[i] : i == 5 ? initial : m_statistics[i - 1];
        sResponse += "{ObjectName=\"" + objectName(i) + "\",ActualValue=" + std::to_string(object.nActual) +
                     ",MinValue=" + std::to_string(object.nMin) + ",MaxValue=" + std::to_string(object.nMax) + ",},";
    }
    return sResponse + "],}";
}

void ReferenceLogs::dumpOpc()
{
    trace(4, "****** START OF OPC LOG ******");
    for (std::size_t i = 0; i <= QUANTITIES; ++i) {
        const std::string sName = objectName(i);
        const Statistics initial = {m_nInitialGain, m_nInitialGain, m_nInitialGain};
        const Statistics& object = i < 5 ? m_statistics[i] : i == 5 ? initial : m_statistics[i - 1];
        // The initial gain has no name for the latest value.
        m_environment.log().line("trace 4", PREFIX, sName, i == 5 ? "" : "Actual", " = ", object.nActual, ", ", sName,
                                 "Min = ", object.nMin, ", ", sName, "Max = ", object.nMax);
    }
    trace(4, "****** END OF OPC LOG ******");
}

void ReferenceLogs::transientCommand(std::size_t nOption)
{
    if (nOption == OPTION_NOT_GIVEN || nOption == OPTION_IS_INTEGER) {
        testTrace(2, "0xa102",
                  "COutputPowerControlLog_HandleTIManageOPCTransientLog: Required tag RequestOption of type string "
                  "missing");
        respond(fault(2, "eTI_E_REQUIRED_INPUT_MISSING, TI.ManageOPCTransientLog failed due to missing tag "
                         "RequestOption"));
        return;
    }
    const std::string sOption = TRANSIENT_LOG_OPTIONS[nOption];
    testTrace(5, "0x800",
              "COutputPowerControlLog_HandleTIManageOPCTransientLog called for sRequestOption value:" + sOption);
    if (sOption == "Enable") {
        m_samples.clear();
        m_bTransientActive = true;
        respond(OK);
    }
    else if (sOption == "Disable") {
        m_bTransientActive = false;
        respond(OK);
    }
    else if (sOption == "SaveToSysLog") {
        dumpSamples();
        respond(OK);
    }
    else if (sOption != "Read") {
        respond(transientFault("invalid request option"));
    }
    else if (m_samples.empty()) {
        m_coverage.count(ECorner::TransientLogReadEmpty);
        testTrace(1, "0x8000", "Cannot read empty log");
        respond(transientFault("can not read empty log"));
    }
    else {
        if (m_samples.size() == m_constants.nTransientSamples) {
            m_coverage.count(ECorner::TransientLogReadFull);
        }
        respond(transientResponse());
    }
}

std::string ReferenceLogs::transientResponse() const
{
    std::string sResponse = "{RadioChannelID=" + m_sChannelId + ",OPCLog=[";
    for (const Sample& sample : m_samples) {
        sResponse += "{";
        for (std::size_t i = 0; i < sample.size(); ++i) {
            sResponse += std::string(NAMES[i]) + "=" + std::to_string(sample[i]) + ",";
        }
        sResponse += "},";
    }
    return sResponse + "],}";
}

void ReferenceLogs::dumpSamples()
{
    if (m_samples.empty()) {
        return;
    }
    trace(4, "****** START OF OPC TRANSIENT LOG ******");
    trace(4, "SampleNumber, TxRfPowerSet, TxRfPowerTarget, TxRfDetectedPower, TxIfPower, TxRfGain");
    for (std::size_t i = 0; i < m_samples.size(); ++i) {
        std::string sLine = std::to_string(i + 1);
        for (const std::int64_t nField : m_samples[i]) {
            sLine += ", " + std::to_string(nField);
        }
        trace(4, sLine);
    }
    trace(4, "****** END OF OPC TRANSIENT LOG ******");
}
} // namespace Differential
