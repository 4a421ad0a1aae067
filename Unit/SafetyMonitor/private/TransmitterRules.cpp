#include "Unit/SafetyMonitor/TransmitterRules.h"

TransmitterRules::TransmitterRules(unsigned int nChannel, EHeardSides eSides, IViolationReceiver& receiver) noexcept
    : m_nChannel(nChannel), m_eSides(eSides), m_receiver(receiver)
{}

bool TransmitterRules::isAt(EOPCState eActing, EPosition ePosition) const noexcept
{
    return m_eActing == eActing && m_ePosition == ePosition;
}

bool TransmitterRules::isSwitchingOff() const noexcept
{
    return m_eActing == eOPC_TX_OFF_INITIATED || m_eActing == eOPC_TX_OFF_IN_PROGRESS;
}

void TransmitterRules::hear(EHeardCall eCall, std::int32_t nFirst, std::int32_t nSecond, std::int32_t nResult) noexcept
{
    m_calls.add({m_nStep, {nFirst, nSecond}, nResult, eCall});
}

void TransmitterRules::report(ESafetyRule eRule, std::int32_t nFirst, std::int32_t nSecond,
                              std::int32_t nThird) noexcept
{
    SafetyViolation violation;
    violation.eRule = eRule;
    violation.nChannel = m_nChannel;
    violation.nStep = m_nStep;
    violation.eState = m_eActing;
    violation.values = {nFirst, nSecond, nThird};
    m_calls.copyTo(violation);
    m_receiver.onViolation(violation);
}

/** @return whether the handler may be called at all now; reports it otherwise */
bool TransmitterRules::checkMoment() noexcept
{
    if (m_bStopped) {
        report(ESafetyRule::AfterStop);
        return false;
    }
    if (hearsCaller() && !m_bInStep) {
        report(ESafetyRule::OutsideStep);
        return false;
    }
    if (m_bSilent) {
        report(ESafetyRule::Silence, m_inputs.nTxPmin, m_inputs.nPctrlMax);
        return false;
    }
    return true;
}

/** Where steps are not heard, the calls that only a new one makes tell of it. */
void TransmitterRules::beginInferredStep() noexcept
{
    if (hearsCaller()) {
        return;
    }
    m_eActing = m_eState;
    m_ePosition = EPosition::Begin;
    m_bSilent = m_inputs.nPctrlMax == OPC_POWER_UNKNOWN && m_eState != eOPC_TX_ON;
}

// --- The caller's side -----------------------------------------------------------------------------------------------

void TransmitterRules::onSetTxPminPmax(std::int32_t nTxPmin) noexcept
{
    hear(EHeardCall::SetTxPminPmax, nTxPmin, 0, EAF_OK);
    m_inputs.nTxPmin = nTxPmin;
    m_inputs.nPctrlMin = nTxPmin;
}

void TransmitterRules::onRequestBegins(ETxPowerMode eMode) noexcept
{
    m_inputs.nMode = eMode == eTX_POWER_MODE_REPORT_THEN_LIMIT ? eTX_POWER_MODE_STEP_LIMITED : eMode;
}

void TransmitterRules::onRequestEnds(ERequestedTxPowerState eState, ETxPowerMode eMode, std::int32_t nResult) noexcept
{
    hear(EHeardCall::Request, eState, eMode, nResult);
    if (m_bInStep && m_ePosition == EPosition::SwitchedOff) {
        return; // from an observer of the switch-off, which has the last word
    }
    if (eState == eREQUESTED_TX_POWER_ON && !m_bOn) {
        m_eState = eOPC_TX_ON_INITIATED;
    }
    else if (eState == eREQUESTED_TX_POWER_OFF && m_bOn) {
        m_eState = eOPC_TX_OFF_INITIATED;
        m_bHeldReported = false;
    }
}

void TransmitterRules::onProductionTestBegins(bool bProductionTest, ERfDetectorLoopMode eLoopMode) noexcept
{
    m_inputs.bProductionTest = bProductionTest;
    m_eLoopMode = eLoopMode;
    m_bInProductionTest = true;
}

void TransmitterRules::onProductionTestEnds(std::int32_t nResult) noexcept
{
    hear(EHeardCall::SetProductionTest, m_inputs.bProductionTest ? 1 : 0, m_eLoopMode, nResult);
    m_bInProductionTest = false;
}

void TransmitterRules::onSetInterval(std::int32_t nIntervalMs) noexcept
{
    constexpr std::uint32_t SETTLING_MS = 24;
    constexpr std::uint32_t RAMP_MS = 100;
    constexpr std::int32_t SHORT_INTERVAL_MS = 6;
    hear(EHeardCall::SetInterval, nIntervalMs, 0, EAF_OK);
    const auto nInterval = static_cast<std::uint32_t>(nIntervalMs);
    if (nInterval == 0) {
        return; // which the controller does not survive
    }
    // Unsigned: beyond the time in question it wraps to a very large count.
    m_nWaitCycles = (SETTLING_MS - nInterval) / nInterval;
    m_nRampCycles = (RAMP_MS - nInterval) / nInterval;
    m_inputs.nMaxStep = nIntervalMs == SHORT_INTERVAL_MS ? 10 : 20;
}

void TransmitterRules::onStepBegins(std::int32_t nPtarget) noexcept
{
    ++m_nStep;
    hear(EHeardCall::StepBegins, nPtarget, 0, EAF_OK);
    m_bInStep = true;
    m_eActing = m_eState;
    m_ePosition = EPosition::Begin;
    m_bErrorSmall = false;
    m_bSilent =
        m_eState != eOPC_TX_ON && (m_inputs.nTxPmin == OPC_POWER_UNKNOWN || m_inputs.nPctrlMax == OPC_POWER_UNKNOWN);
    if (!m_bSilent && m_eActing == eOPC_TX_ON_IN_PROGRESS && m_nWaitLeft > 0) {
        --m_nWaitLeft;
        m_ePosition = EPosition::Waiting;
    }
}

void TransmitterRules::onStepEnds(std::int32_t nResult) noexcept
{
    hear(EHeardCall::StepEnds, nResult, 0, nResult);
    if (m_ePosition == EPosition::RampPowerSent) {
        finishRampStep();
    }
    if (isSwitchingOff()) {
        checkSwitchOff();
    }
    m_bInStep = false;
}

/** At the end of a step that had to go on with the switch-off. */
void TransmitterRules::checkSwitchOff() noexcept
{
    if (m_bSilent) {
        if (!m_bHeldReported) {
            m_bHeldReported = true;
            report(ESafetyRule::SwitchOffHeld, m_inputs.nTxPmin, m_inputs.nPctrlMax);
        }
        return;
    }
    if (m_ePosition == EPosition::Begin || m_ePosition == EPosition::TrafficOff) {
        report(ESafetyRule::SwitchOffMissed);
    }
}

void TransmitterRules::onStop() noexcept
{
    hear(EHeardCall::Stop, 0, 0, EAF_OK);
    m_bStopped = true;
}
