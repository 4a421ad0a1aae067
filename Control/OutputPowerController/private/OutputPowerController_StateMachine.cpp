#include "Control/OutputPowerController/private/OutputPowerController.h"
#include "Control/OutputPowerController/private/RegulatorStep.h"

namespace
{

constexpr const char* STATE_MACHINE = "handleOPCStateMachine";

constexpr const char* STATE_NAMES[] = {"TX_OFF_INITIATED",
                                       "TX_OFF_IN_PROGRESS",
                                       "TX_OFF",
                                       "DELAYED_TX_ON_INITIATED",
                                       "DELAYED_TX_ON_IN_PROGRESS",
                                       "TX_ON_INITIATED",
                                       "TX_ON_IN_PROGRESS",
                                       "TX_ON_RAMPING",
                                       "TX_ON",
                                       "UNDEFINED"};

/** The ramp ends at an error of at most this, in either direction. */
constexpr int RAMP_END_ERROR = 100;
/** A delayed switch-on stays until more than this has passed. */
constexpr unsigned int DELAYED_TX_ON_MS = 1099;

} // namespace

const char* OutputPowerController::getOPCStateName(EOPCState eState) const
{
    return STATE_NAMES[eState];
}

int OutputPowerController::setRequestedTxPowerState(ERequestedTxPowerState eState, ETxPowerMode eMode)
{
    static constexpr const char* OPERATION = "setRequestedTxPowerState";
    beginTrace(5) << OPERATION << "(): Turn transmitter " << (eState != eREQUESTED_TX_POWER_OFF ? "ON" : "OFF")
                  << std::endl;
    if (eMode != m_eTxPowerMode) {
        m_eTxPowerMode = eMode;
        notifyPowerModeObservers(eMode);
        // Reported once as it came, then kept as step-limited: a later request with it is reported again.
        if (m_eTxPowerMode == eTX_POWER_MODE_REPORT_THEN_LIMIT) {
            m_eTxPowerMode = eTX_POWER_MODE_STEP_LIMITED;
        }
    }
    // The actual status decides, not the state: a sequence under way is not turned back, an on request restarts it.
    // What is ignored writes nothing, since the regulating thread may be moving the state at the same time.
    const bool bOn = m_eTxPowerActualStatus != eTX_POWER_ACTUAL_OFF;
    switch (eState) {
    case eREQUESTED_TX_POWER_OFF:
        if (bOn) {
            m_eOPCState = eOPC_TX_OFF_INITIATED;
        }
        return EAF_OK;
    case eREQUESTED_TX_POWER_ON:
        if (!bOn) {
            m_eOPCState = eOPC_TX_ON_INITIATED;
        }
        return EAF_OK;
    default:
        beginTrace(1) << OPERATION << "(): called with unknown power state " << eState << std::endl;
        return EAF_NULL_POINTER;
    }
}

int OutputPowerController::handleOPCStateMachine()
{
    traceStateChange();
    if (m_nTxPmin == OPC_POWER_UNKNOWN || m_nPctrlMax == OPC_POWER_UNKNOWN) {
        return EAF_OK;
    }
    switch (m_eOPCState) {
    case eOPC_TX_OFF_INITIATED:
        return stepTxOffInitiated();
    case eOPC_TX_OFF_IN_PROGRESS:
        return stepTxOffInProgress();
    case eOPC_TX_OFF:
        return EAF_OK;
    case eOPC_DELAYED_TX_ON_INITIATED:
        return stepDelayedTxOnInitiated();
    case eOPC_DELAYED_TX_ON_IN_PROGRESS:
        return stepDelayedTxOnInProgress();
    case eOPC_TX_ON_INITIATED:
        return stepTxOnInitiated();
    case eOPC_TX_ON_IN_PROGRESS:
        return stepTxOnInProgress();
    case eOPC_TX_ON_RAMPING:
        return stepTxOnRamping();
    default:
        beginTrace(1) << STATE_MACHINE << "(): unhandled state " << m_eOPCState << std::endl;
        return EAF_FAILED;
    }
}

void OutputPowerController::traceStateChange()
{
    if (m_eOPCState != m_ePreviousOPCState) {
        beginTrace(5) << STATE_MACHINE << "(): OPC state changed. New state " << m_eOPCState << ", Old state "
                      << m_ePreviousOPCState << std::endl;
    }
    m_ePreviousOPCState = m_eOPCState;
    if (m_eOPCState != eOPC_TX_OFF) {
        beginTrace(5) << STATE_MACHINE << "(): OPC: state " << getOPCStateName(m_eOPCState) << " (" << m_eOPCState
                      << ")" << std::endl;
    }
}

int OutputPowerController::stepTxOffInitiated()
{
    beginTrace(5) << STATE_MACHINE << "(): eOPC_TX_OFF_INITIATED" << std::endl;
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    if (EAF_isFailure(oph.setZembraMlmTrafTx(oph.vpThis, false))) {
        return traceFailure(STATE_MACHINE, "(): failed to disable Zembra Mlm Traf TX in OPH");
    }
    if (EAF_isFailure(oph.setTxState(oph.vpThis, 0))) {
        return traceFailure(STATE_MACHINE, "(): failed to set TX state in OPH");
    }
    m_eOPCState = eOPC_TX_OFF_IN_PROGRESS;
    return EAF_OK;
}

int OutputPowerController::stepTxOffInProgress()
{
    beginTrace(5) << STATE_MACHINE << "(): eOPC_TX_OFF_IN_PROGRESS" << std::endl;
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    if (EAF_isFailure(oph.setTxState(oph.vpThis, 1))) {
        return traceFailure(STATE_MACHINE, "(): failed to set TX state in OPH");
    }
    m_nPctrl = OPC_POWER_OFF;
    m_nPtarget = OPC_POWER_OFF;
    m_nPredictedPctrl = OPC_POWER_OFF;
    notifyObservers();
    beginTrace(4) << STATE_MACHINE << "():   TX OFF" << std::endl;
    m_eTxPowerActualStatus = eTX_POWER_ACTUAL_OFF;
    m_eOPCState = eOPC_TX_OFF;
    return EAF_OK;
}

// No operation enters this state yet; it and the next are kept for a caller that wants the transmitter on later.
int OutputPowerController::stepDelayedTxOnInitiated()
{
    beginTrace(5) << STATE_MACHINE << "(): eOPC_DELAYED_TX_ON_INITIATED" << std::endl;
    clock_gettime(CLOCK_MONOTONIC, &m_tsDelayedTxOnStart);
    m_eOPCState = eOPC_DELAYED_TX_ON_IN_PROGRESS;
    return EAF_OK;
}

int OutputPowerController::stepDelayedTxOnInProgress()
{
    beginTrace(7) << STATE_MACHINE << "(): eOPC_DELAYED_TX_ON_IN_PROGRESS" << std::endl;
    if (calculateElapsedTimeMillisec(&m_tsDelayedTxOnStart) > DELAYED_TX_ON_MS) {
        m_eOPCState = eOPC_TX_ON_INITIATED;
    }
    return EAF_OK;
}

int OutputPowerController::stepTxOnInitiated()
{
    beginTrace(5) << STATE_MACHINE << "(): eOPC_TX_ON_INITIATED" << std::endl;
    m_nPctrl = m_nTxPmin;
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    std::int32_t nLower = 0;
    std::int32_t nUpper = 0;
    // Not checked: a handler that cannot tell leaves both limits at 0 unless it wrote them.
    oph.getPctrlLimits(oph.vpThis, &nLower, &nUpper);
    if (nLower != OPC_POWER_UNKNOWN) {
        m_nPctrlMin = nLower;
    }
    m_nPctrlMax = nUpper;
    if (EAF_isFailure(oph.setTxState(oph.vpThis, 2))) {
        return traceFailure(STATE_MACHINE, "(): failed to set TX state ON initiated in OPH");
    }
    if (EAF_isFailure(oph.setOutputPower(oph.vpThis, m_nPctrl, m_nPtarget))) {
        return traceFailure(STATE_MACHINE, "(): failed to set Pctrl in OPH");
    }
    m_nTxOnInProgressCount = static_cast<int>(m_nTxOnInProgressCycles);
    m_eOPCState = eOPC_TX_ON_IN_PROGRESS;
    return EAF_OK;
}

int OutputPowerController::stepTxOnInProgress()
{
    beginTrace(5) << STATE_MACHINE << "(): eOPC_TX_ON_IN_PROGRESS" << std::endl;
    if (m_nTxOnInProgressCount > 0) {
        --m_nTxOnInProgressCount;
        return EAF_OK;
    }
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    if (EAF_isFailure(oph.setTxState(oph.vpThis, 3))) {
        return traceFailure(STATE_MACHINE, "(): failed to set TX state ON in progress in OPH");
    }
    if (EAF_isFailure(oph.setOutputPower(oph.vpThis, m_nPctrl, m_nPtarget))) {
        return traceFailure(STATE_MACHINE, "(): failed to set Pctrl in OPH");
    }
    m_nRampingCount = static_cast<int>(m_nRampingCycles);
    m_eOPCState = eOPC_TX_ON_RAMPING;
    return EAF_OK;
}

int OutputPowerController::stepTxOnRamping()
{
    beginTrace(5) << STATE_MACHINE << "(): eOPC_TX_ON_RAMPING" << std::endl;
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    if (EAF_isFailure(oph.setTxState(oph.vpThis, 4))) {
        return traceFailure(STATE_MACHINE, "(): failed to set TX state ON in OPH");
    }
    if (m_nRampingCount > 0) {
        --m_nRampingCount;
    }
    else {
        // Out of time: the ramp ends with this step whatever the error, even if a handler call below fails.
        m_eOPCState = eOPC_TX_ON;
        m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
    }
    if (EAF_isFailure(oph.calculateDetectorUsage(oph.vpThis, m_nPctrl, m_eRfDetectorLoopMode, &m_eOPHDetectorState))) {
        return traceFailure(STATE_MACHINE, "(): failed to calculate usage of detector");
    }
    // The state is read anew: the last step of a ramp that ran out of time goes by the gain of TX_ON.
    const int nGainPercent = gainInUse(m_eOPCState);
    m_nPowerError = RegulatorStep::wrapSubtract(m_nPtarget, m_nPmeasured);
    // The ramp's lower limit is the requested minimum, not the closed loop's m_nPctrlMin.
    m_nPctrl = RegulatorStep::rampPctrl(m_nPctrl, nGainPercent, m_nPowerError, m_nTxPmin, m_nPctrlMax);
    if (EAF_isFailure(setPctrl())) {
        return traceFailure(STATE_MACHINE, "(): failed to set Pctrl");
    }
    // During the ramp all three lists are told Pctrl, and the last notified values stay those of before the ramp.
    notifyPctrlObservers(m_nPctrl);
    notifyPtargetObservers(m_nPctrl);
    notifyPredictedPctrlObservers(m_nPctrl);
    if (m_nPowerError >= -RAMP_END_ERROR && m_nPowerError <= RAMP_END_ERROR) {
        m_eOPCState = eOPC_TX_ON;
        m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
    }
    if (m_eOPCState == eOPC_TX_ON) {
        finishTxOn();
    }
    return EAF_OK;
}

void OutputPowerController::finishTxOn()
{
    beginTrace(4) << STATE_MACHINE << "():   TX ON" << std::endl;
    const IOutputPowerHandlerCStruct& oph = *m_pOutputPowerHandler;
    if (EAF_isFailure(oph.setZembraMlmTrafTx(oph.vpThis, true))) {
        // Only traced: the transmitter is on and regulated all the same.
        traceFailure(STATE_MACHINE, "(): failed to enable Zembra Mlm Traf TX in OPH");
    }
    beginTrace(5) << STATE_MACHINE << "(): OPC: state " << getOPCStateName(m_eOPCState) << " (" << m_eOPCState << ")"
                  << std::endl;
}
