#include "Control/OutputPowerController/private/OutputPowerControlLog.h"

void OutputPowerControlLog::addSampleToTransientLog(int nTxRfPowerSet, int nTxRfPowerTarget, int nTxRfDetectedPower,
                                                    int nTxIfPower, int nTxRfGain)
{
    const std::size_t nSamples = m_vTransientLog.size();
    if (nSamples == MAX_TRANSIENT_LOG_SAMPLES || !m_bTransientLogActive) {
        return;
    }
    // A step's power is measured in the next step. The last sample leaves the one before it uncorrected: those who
    // evaluate the log count on that.
    if (nSamples != 0 && nSamples < MAX_TRANSIENT_LOG_SAMPLES - 1) {
        m_vTransientLog.back().txRfDetectedPower = nTxRfDetectedPower;
    }
    m_vTransientLog.push_back({nTxRfPowerSet, nTxRfPowerTarget, nTxRfDetectedPower, nTxIfPower, nTxRfGain});
}

EAFResult OutputPowerControlLog::getSampleFromTransientLog(unsigned short nSample, int* pTxRfPowerSet,
                                                           int* pTxRfPowerTarget, int* pTxRfDetectedPower,
                                                           int* pTxIfPower, int* pTxRfGain)
{
    static constexpr const char* OPERATION = "getSampleFromTransientLog";
    if (m_vTransientLog.empty()) {
        beginTrace(1) << OPERATION << "() "
                      << "No sample entries in log" << std::endl;
        return EAF_FAILED;
    }
    if (nSample > m_vTransientLog.size()) {
        beginTrace(1) << OPERATION << "() "
                      << "Requested sample number does not exist" << std::endl;
        return EAF_FAILED;
    }
    const TransientLog& sample = m_vTransientLog[nSample - 1U];
    *pTxRfPowerSet = sample.txRfPowerSet;
    *pTxRfPowerTarget = sample.txRfPowerTarget;
    *pTxRfDetectedPower = sample.txRfDetectedPower;
    *pTxIfPower = sample.txIfPower;
    *pTxRfGain = sample.txRfGain;
    return EAF_OK;
}

unsigned int OutputPowerControlLog::getNumberOfSamplesInTransientLog() const
{
    return static_cast<unsigned int>(m_vTransientLog.size());
}

void OutputPowerControlLog::resetTransientLog()
{
    m_vTransientLog.clear();
}

void OutputPowerControlLog::setTransientLogActive(bool bActive)
{
    m_bTransientLogActive = bActive;
}

bool OutputPowerControlLog::isTransientLogActive() const
{
    return m_bTransientLogActive;
}

void OutputPowerControlLog::writeTransientLogToSyslog()
{
    if (m_vTransientLog.empty()) {
        return;
    }
    beginTrace(4) << "****** START OF OPC TRANSIENT LOG ******" << std::endl;
    beginTrace(4) << "SampleNumber, TxRfPowerSet, TxRfPowerTarget, TxRfDetectedPower, TxIfPower, TxRfGain" << std::endl;
    int nSample = 0;
    for (const TransientLog& sample : m_vTransientLog) {
        beginTrace(4) << ++nSample << ", " << sample.txRfPowerSet << ", " << sample.txRfPowerTarget << ", "
                      << sample.txRfDetectedPower << ", " << sample.txIfPower << ", " << sample.txRfGain << std::endl;
    }
    beginTrace(4) << "****** END OF OPC TRANSIENT LOG ******" << std::endl;
}
