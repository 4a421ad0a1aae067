#include "Control/OutputPowerController/private/OutputPowerControlLog.h"
#include "Control/OutputPowerController/private/OutputPowerController.h"
#include "Control/OutputPowerController/private/RegulatorStep.h"

#include <array>

int OutputPowerController::regulate(int nPtarget)
{
    int nOffsetBandwidth = 0;
    if (EAF_isFailure(getBilinearTableValue(m_calTablePtargetOverBandwidthToPTargetOffset, nPtarget, m_nChannelSpacing,
                                            &nOffsetBandwidth)))
    {
        return traceFailure("regulate",
                            "(): failed to get value from table m_calTablePtargetOverBandwidthToPTargetOffset");
    }
    int nOffsetTemperature = 0;
    if (EAF_isFailure(getBilinearTableValue(m_calTableFrequencyOverTemperatureToPTargetOffset, m_nTxFrequency,
                                            m_nTemperature, &nOffsetTemperature)))
    {
        return traceFailure("regulate",
                            "(): failed to get value from table m_calTableFrequencyOverTemperatureToPTargetOffset");
    }
    m_nPtarget = RegulatorStep::wrapAdd(RegulatorStep::wrapAdd(nPtarget, nOffsetBandwidth), nOffsetTemperature);
    if (m_eOPCState != eOPC_TX_ON) {
        m_nPmeasured = m_nPctrl;
        return handleOPCStateMachine();
    }
    return regulateClosedLoop();
}

int OutputPowerController::regulateClosedLoop()
{
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    std::int32_t nPmeasured = 0;
    if (EAF_isFailure(oph.getPmeasured(oph.vpThis, &nPmeasured))) {
        return traceFailure("regulate", "(): failed to get P measured");
    }
    m_nPmeasured = nPmeasured;
    if (EAF_isFailure(oph.calculateDetectorUsage(oph.vpThis, m_nPctrl, m_eRfDetectorLoopMode, &m_eOPHDetectorState))) {
        return traceFailure("regulate", "(): failed to calculate usage of detector");
    }
    applyClosedLoopStep();
    if (m_nPredictedPctrl != m_nLastNotifiedPredictedPctrl) {
        m_nLastNotifiedPredictedPctrl = m_nPredictedPctrl;
        notifyPredictedPctrlObservers(m_nPredictedPctrl);
    }
    if (EAF_isFailure(setPctrl())) {
        return traceFailure("regulate", "(): failed to set Pctrl");
    }
    notifyObservers();
    return EAF_OK;
}

void OutputPowerController::applyClosedLoopStep()
{
    const RegulatorStep::ClosedLoopResult result =
        RegulatorStep::closedLoop({.nPtarget = m_nPtarget,
                                   .nPmeasured = m_nPmeasured,
                                   .nPctrl = m_nPctrl,
                                   .nGainPercent = gainInUse(eOPC_TX_ON),
                                   .nPctrlMin = m_nPctrlMin,
                                   .nPctrlMax = m_nPctrlMax,
                                   .nMaxPctrlStep = m_nMaxPctrlStep,
                                   .bStepLimited = m_eTxPowerMode == eTX_POWER_MODE_STEP_LIMITED,
                                   .bProductionTestMode = m_bProductionTestMode});
    m_nPowerError = result.nPowerError;
    m_nPctrl = result.nPctrl;
    m_nPredictedPctrl = result.nPredictedPctrl;
}

int OutputPowerController::gainInUse(EOPCState eState) const
{
    // A detector state that is no row of the table, as from a handler that wrote none, moves nothing.
    const bool bRow = m_eOPHDetectorState >= 0 && m_eOPHDetectorState < DETECTOR_STATES;
    return bRow ? m_anGain[m_eOPHDetectorState][eState] : 0;
}

int OutputPowerController::setPctrl()
{
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    const EOPHResult eOPHResult = oph.setOutputPower(oph.vpThis, m_nPctrl, m_nPtarget);
    if (EAF_isFailure(eOPHResult)) {
        beginTrace(1) << "setPctrl"
                      << "(): Failed to set output power in OPH (eOPHResult = " << std::hex << eOPHResult << std::dec
                      << std::endl;
        return EAF_FAILED;
    }
    std::int32_t nReading = 0; // the handler's own, not logged
    std::int32_t nIfPower = 0;
    std::int32_t nRfGain = 0;
    if (m_pLog->isTransientLogActive() || m_pLog->isOpcLogActive()) {
        oph.getTxPowerReadings(oph.vpThis, &nReading, &nIfPower, &nRfGain);
    }
    // The logs call these two the power setting and the power target; they are fed the other way round on purpose.
    if (m_pLog->isTransientLogActive()) {
        m_pLog->addSampleToTransientLog(m_nPtarget, m_nPctrl, m_nPmeasured, nIfPower, nRfGain);
    }
    if (m_pLog->isOpcLogActive()) {
        feedOpcLog(nIfPower, nRfGain);
    }
    return EAF_OK;
}

void OutputPowerController::feedOpcLog(int nIfPower, int nRfGain)
{
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    std::array<std::int32_t, MAX_GAIN_BLOCKS> anReducedGain{};
    // Compared signed: a negative number of gain blocks reads no amplifier.
    for (int nAmplifier = 1; nAmplifier <= m_nNumberOfGainBlocks; ++nAmplifier) {
        const EOPHResult eOPHResult =
            oph.getReducedGainFromAmplifier(oph.vpThis, static_cast<std::uint32_t>(nAmplifier),
                                            &anReducedGain[static_cast<std::size_t>(nAmplifier - 1)]);
        if (EAF_isFailure(eOPHResult)) {
            // The blank missing before "for" is part of the text.
            beginTrace(1) << "setPctrl"
                          << "(): failed to get Reduced Gain From Amplifier " << nAmplifier << "for channel "
                          << m_nChannel << " (eOPHResult = " << std::hex << eOPHResult << std::dec << std::endl;
        }
    }
    m_pLog->writeToOpcLog(m_nPtarget, m_nPctrl, m_nPmeasured, nIfPower, nRfGain, anReducedGain[0], anReducedGain[1],
                          anReducedGain[2], anReducedGain[3], anReducedGain[4], anReducedGain[5]);
}

void OutputPowerController::setRegulatorInterval(int nInterval)
{
    m_nRegulatorInterval = nInterval;
    deriveCyclesFromInterval();
    m_nMaxPctrlStep = nInterval == 6 ? 10 : 20;
}

void OutputPowerController::deriveCyclesFromInterval()
{
    // Unsigned on purpose: an interval beyond the time in question wraps to a very large count.
    const unsigned int nInterval = static_cast<unsigned int>(m_nRegulatorInterval);
    m_nTxOnInProgressCycles = (24U - nInterval) / nInterval;
    m_nRampingCycles = (100U - nInterval) / nInterval;
}
