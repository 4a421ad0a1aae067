#include "Control/OutputPowerController/private/OutputPowerController.h"

void OutputPowerController::onChange(IFrequencyHandler* pHandler)
{
    const int nTxFrequency = pHandler->getTxFrequency();
    beginTrace(5) << "onChange"
                  << "(): Tx frequency changed from " << m_nTxFrequency << " to " << nTxFrequency << std::endl;
    m_nTxFrequency = nTxFrequency;
}

void OutputPowerController::notifyTemperature(int nTemperature)
{
    m_nTemperature = nTemperature;
    beginTrace(5) << "notifyTemperature"
                  << "(): New temperature = " << nTemperature << " for channel " << m_nChannel << std::endl;
}

void OutputPowerController::staticNotifyTemperature(void* vpThis, int nTemperature)
{
    if (vpThis != nullptr) {
        static_cast<OutputPowerController*>(vpThis)->notifyTemperature(nTemperature);
    }
}

void OutputPowerController::setTxPminPmax(int nTxPmin, unsigned int nTxPmax)
{
    beginTrace(5) << "setTxPminPmax"
                  << "(): txPmin= " << nTxPmin << ", txPmax = " << nTxPmax << std::endl;
    m_nTxPmin = nTxPmin;
    m_nPctrlMin = nTxPmin;
}

int OutputPowerController::setProductionTestSettings(bool bProductionTest, ERfDetectorLoopMode eLoopMode)
{
    m_bProductionTestMode = bProductionTest;
    m_eRfDetectorLoopMode = eLoopMode;
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    if (EAF_isFailure(oph.setProductionTestSettings(oph.vpThis, eLoopMode))) {
        return traceFailure("setProductionTestSettings", "(): failed to set production test settings in OPH");
    }
    return EAF_OK;
}

void OutputPowerController::setGain(EOPHDetectorState eDetectorState, EOPCState eState, int nGainPercent)
{
    m_anGain[eDetectorState][eState] = nGainPercent;
}

int OutputPowerController::getGain(EOPHDetectorState eDetectorState, EOPCState eState) const
{
    return m_anGain[eDetectorState][eState];
}

EOPCState OutputPowerController::getOPCState() const
{
    return m_eOPCState;
}

ETxPowerActualStatus OutputPowerController::getTxPowerActualStatus() const
{
    return m_eTxPowerActualStatus;
}

int OutputPowerController::getPctrl() const
{
    return m_eTxPowerActualStatus != eTX_POWER_ACTUAL_OFF ? m_nPctrl : OPC_POWER_OFF;
}

int OutputPowerController::getPmeasured() const
{
    return m_nPmeasured;
}

void OutputPowerController::getLogData(int* pPtarget, int* pPctrl, int* pPowerError, int* pPmeasured, int* pTxPmin,
                                       int* pPctrlMax, EOPCState* pState, EOPHDetectorState* pDetectorState) const
{
    *pPtarget = m_nPtarget;
    *pPctrl = m_nPctrl;
    *pPowerError = m_nPowerError;
    *pPmeasured = m_nPmeasured;
    *pTxPmin = m_nTxPmin;
    *pPctrlMax = m_nPctrlMax;
    *pState = m_eOPCState;
    *pDetectorState = m_eOPHDetectorState;
}
