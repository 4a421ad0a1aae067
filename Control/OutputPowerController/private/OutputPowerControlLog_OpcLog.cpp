#include "Control/OutputPowerController/private/OutputPowerControlLog.h"

#include <algorithm>

namespace
{

/** One quantity of the record. */
struct Quantity
{
    std::int32_t& nMin;
    std::int32_t& nActual;
    std::int32_t& nMax;

    void seed(std::int32_t nValue) const
    {
        nMin = nValue;
        nActual = nValue;
        nMax = nValue;
    }

    void accumulate(std::int32_t nValue) const
    {
        nActual = nValue;
        nMin = std::min(nValue, nMin);
        nMax = std::max(nValue, nMax);
    }
};

/** Calls a function with each of the eleven quantities and its new value. */
template <class TCall>
void forEachQuantity(OutputPowerControlLog::OpcLog& log, const std::int32_t (&anValue)[11], TCall call)
{
    call(Quantity{log.txRfPowerSetMin, log.txRfPowerSetActual, log.txRfPowerSetMax}, anValue[0]);
    call(Quantity{log.txRfPowerTargetMin, log.txRfPowerTargetActual, log.txRfPowerTargetMax}, anValue[1]);
    call(Quantity{log.txRfDetectedPowerMin, log.txRfDetectedPowerActual, log.txRfDetectedPowerMax}, anValue[2]);
    call(Quantity{log.txIfPowerMin, log.txIfPowerActual, log.txIfPowerMax}, anValue[3]);
    call(Quantity{log.txRfGainMin, log.txRfGainActual, log.txRfGainMax}, anValue[4]);
    for (int i = 0; i < 6; ++i) {
        call(Quantity{log.gainReductionAmplifierMin[i], log.gainReductionAmplifierActual[i],
                      log.gainReductionAmplifierMax[i]},
             anValue[5 + i]);
    }
}

/** Streams one line of the dump: a quantity's name three times with its values. */
void writeQuantity(std::ostream& stream, const std::string& sName, std::int32_t nActual, std::int32_t nMin,
                   std::int32_t nMax)
{
    stream << sName << "Actual = " << nActual << ", " << sName << "Min = " << nMin << ", " << sName << "Max = " << nMax
           << std::endl;
}

} // namespace

void OutputPowerControlLog::writeToOpcLog(int nTxRfPowerSet, int nTxRfPowerTarget, int nTxRfDetectedPower,
                                          int nTxIfPower, int nTxRfGain, int nGainReductionAmplifier1,
                                          int nGainReductionAmplifier2, int nGainReductionAmplifier3,
                                          int nGainReductionAmplifier4, int nGainReductionAmplifier5,
                                          int nGainReductionAmplifier6)
{
    const std::int32_t anValue[11] = {nTxRfPowerSet,
                                      nTxRfPowerTarget,
                                      nTxRfDetectedPower,
                                      nTxIfPower,
                                      nTxRfGain,
                                      nGainReductionAmplifier1,
                                      nGainReductionAmplifier2,
                                      nGainReductionAmplifier3,
                                      nGainReductionAmplifier4,
                                      nGainReductionAmplifier5,
                                      nGainReductionAmplifier6};
    if (m_bOpcLogActive && !m_bOpcLogFirstSample) {
        forEachQuantity(m_opcLog, anValue,
                        [](const Quantity& quantity, std::int32_t nValue) { quantity.accumulate(nValue); });
        return;
    }
    // The first sample stays pending until one comes while the log is active, so that the zeros of a reset never count.
    if (m_bOpcLogActive) {
        m_bOpcLogFirstSample = false;
    }
    forEachQuantity(m_opcLog, anValue, [](const Quantity& quantity, std::int32_t nValue) { quantity.seed(nValue); });
}

void OutputPowerControlLog::writeInitialTxRfGainToOpcLog(int nTxRfGain)
{
    m_opcLog.txRfGainInitial = nTxRfGain;
}

void OutputPowerControlLog::readFromOpcLog(OpcLog* pOpcLog)
{
    *pOpcLog = m_opcLog;
}

void OutputPowerControlLog::resetOpcLog()
{
    m_opcLog = {};
    m_bOpcLogFirstSample = true;
}

void OutputPowerControlLog::setOpcLogActive(bool bActive)
{
    m_bOpcLogActive = bActive;
}

bool OutputPowerControlLog::isOpcLogActive() const
{
    return m_bOpcLogActive;
}

void OutputPowerControlLog::writeOpcLogToSyslog()
{
    const OpcLog& log = m_opcLog;
    beginTrace(4) << "****** START OF OPC LOG ******" << std::endl;
    writeQuantity(beginTrace(4), "TxRfPowerSet", log.txRfPowerSetActual, log.txRfPowerSetMin, log.txRfPowerSetMax);
    writeQuantity(beginTrace(4), "TxRfPowerTarget", log.txRfPowerTargetActual, log.txRfPowerTargetMin,
                  log.txRfPowerTargetMax);
    writeQuantity(beginTrace(4), "TxRfDetectedPower", log.txRfDetectedPowerActual, log.txRfDetectedPowerMin,
                  log.txRfDetectedPowerMax);
    writeQuantity(beginTrace(4), "TxIfPower", log.txIfPowerActual, log.txIfPowerMin, log.txIfPowerMax);
    writeQuantity(beginTrace(4), "TxRfGain", log.txRfGainActual, log.txRfGainMin, log.txRfGainMax);
    // One value in the shape of the other lines, so that whoever parses the dump meets one kind of line only.
    beginTrace(4) << "TxRfGainInitial = " << log.txRfGainInitial << ", "
                  << "TxRfGainInitialMin = " << log.txRfGainInitial << ", "
                  << "TxRfGainInitialMax = " << log.txRfGainInitial << std::endl;
    for (int i = 0; i < 6; ++i) {
        writeQuantity(beginTrace(4), "GainReductionAmplifier" + std::to_string(i + 1),
                      log.gainReductionAmplifierActual[i], log.gainReductionAmplifierMin[i],
                      log.gainReductionAmplifierMax[i]);
    }
    beginTrace(4) << "****** END OF OPC LOG ******" << std::endl;
}
