#include "Unit/SafetyMonitor/TransmitterRules.h"

namespace
{
// The transmitter's steps.
constexpr std::int32_t STEP_MUTE = 0;
constexpr std::int32_t STEP_OFF = 1;
constexpr std::int32_t STEP_POWER_UP = 2;
constexpr std::int32_t STEP_CARRIER = 3;
constexpr std::int32_t STEP_RAMP = 4;

bool isSwitchOnStep(std::int32_t nTxStep)
{
    return nTxStep == STEP_POWER_UP || nTxStep == STEP_CARRIER || nTxStep == STEP_RAMP;
}
} // namespace

bool TransmitterRules::isExpectedTxStep(std::int32_t nTxStep) const noexcept
{
    switch (nTxStep) {
    case STEP_POWER_UP:
        return isAt(eOPC_TX_ON_INITIATED, EPosition::LimitsRead);
    case STEP_CARRIER:
        return isAt(eOPC_TX_ON_IN_PROGRESS, EPosition::Begin);
    case STEP_RAMP:
        return isAt(eOPC_TX_ON_RAMPING, EPosition::Begin);
    case STEP_MUTE:
        return isAt(eOPC_TX_OFF_INITIATED, EPosition::TrafficOff);
    case STEP_OFF:
        return isAt(eOPC_TX_OFF_IN_PROGRESS, EPosition::Begin);
    default:
        return false;
    }
}

ESafetyRule TransmitterRules::brokenByTxStep(std::int32_t nTxStep) const noexcept
{
    if (isSwitchOnStep(nTxStep) && isSwitchingOff()) {
        return ESafetyRule::OnlySwitchOff;
    }
    if (isSwitchOnStep(nTxStep) && m_eActing == eOPC_TX_OFF) {
        return ESafetyRule::SwitchOnUnasked;
    }
    if (nTxStep == STEP_CARRIER && m_ePosition == EPosition::Waiting) {
        return ESafetyRule::SettlingTime;
    }
    if (nTxStep == STEP_MUTE && m_eActing == eOPC_TX_OFF_INITIATED) {
        return ESafetyRule::TrafficLeftOn;
    }
    return ESafetyRule::StepOrder;
}

/** Takes a step that the handler has taken, expected or not. */
void TransmitterRules::follow(std::int32_t nTxStep) noexcept
{
    switch (nTxStep) {
    case STEP_POWER_UP:
    case STEP_CARRIER:
        m_used = m_inputs;
        m_eState = nTxStep == STEP_POWER_UP ? eOPC_TX_ON_INITIATED : eOPC_TX_ON_IN_PROGRESS;
        m_eActing = m_eState;
        m_ePosition = EPosition::StepTaken;
        m_bOn = false;
        break;
    case STEP_RAMP:
        m_eState = eOPC_TX_ON_RAMPING;
        m_eActing = m_eState;
        m_ePosition = EPosition::StepTaken;
        if (hearsCaller() && m_nRampLeft-- <= 0) {
            m_nRampLeft = 0; // out of time: the ramp ends with this step, even if a call below fails
            m_eState = eOPC_TX_ON;
            m_bOn = true;
        }
        break;
    case STEP_MUTE:
        m_eState = eOPC_TX_OFF_IN_PROGRESS;
        m_ePosition = EPosition::Done;
        m_bOn = true; // until it is off
        break;
    case STEP_OFF:
        m_eState = eOPC_TX_OFF;
        m_ePosition = EPosition::SwitchedOff;
        m_bOn = false;
        break;
    default:
        break;
    }
}

void TransmitterRules::onSetTxState(std::int32_t nTxStep, EOPHResult nResult) noexcept
{
    hear(EHeardCall::SetTxState, nTxStep, 0, nResult);
    if (nTxStep == STEP_CARRIER || nTxStep == STEP_RAMP || nTxStep == STEP_OFF) {
        beginInferredStep();
    }
    if (checkMoment() && !isExpectedTxStep(nTxStep)) {
        report(brokenByTxStep(nTxStep), nTxStep, m_nWaitLeft + 1);
    }
    if (EAF_isFailure(nResult)) {
        m_ePosition = EPosition::Failed;
        return;
    }
    follow(nTxStep);
}

void TransmitterRules::onGetPctrlLimits(std::int32_t nLower, std::int32_t nUpper, EOPHResult nResult) noexcept
{
    hear(EHeardCall::GetPctrlLimits, nLower, nUpper, nResult);
    if (!hearsCaller() && !m_bOn) {
        m_eState = eOPC_TX_ON_INITIATED; // a request that was not heard
    }
    beginInferredStep();
    if (checkMoment() && !isAt(eOPC_TX_ON_INITIATED, EPosition::Begin)) {
        report(brokenByTxStep(STEP_POWER_UP), STEP_POWER_UP);
    }
    if (nLower != OPC_POWER_UNKNOWN) {
        m_inputs.nPctrlMin = nLower;
    }
    m_inputs.nPctrlMax = nUpper;
    m_used = m_inputs;
    m_eState = eOPC_TX_ON_INITIATED;
    m_eActing = m_eState;
    m_ePosition = EPosition::LimitsRead;
    m_bOn = false;
}

void TransmitterRules::onSetTraffic(bool bEnable, EOPHResult nResult) noexcept
{
    hear(EHeardCall::SetTraffic, bEnable ? 1 : 0, 0, nResult);
    if (bEnable) {
        if (isAt(eOPC_TX_ON_RAMPING, EPosition::RampPowerSent)) {
            // Whether its time is up is not known where steps are not heard.
            m_bErrorSmall = m_bErrorSmall || !hearsCaller();
            finishRampStep();
        }
        const bool bRampEnded = isAt(eOPC_TX_ON_RAMPING, EPosition::PowerSent) && m_eState == eOPC_TX_ON;
        if (checkMoment() && !bRampEnded) {
            report(ESafetyRule::TrafficTooEarly);
        }
        return;
    }
    if (!hearsCaller() && (m_bOn || m_eState == eOPC_TX_ON_RAMPING)) {
        m_eState = eOPC_TX_OFF_INITIATED; // a request that was not heard
        m_bOn = true;
    }
    beginInferredStep();
    if (checkMoment() && !isAt(eOPC_TX_OFF_INITIATED, EPosition::Begin)) {
        report(ESafetyRule::StepOrder, STEP_MUTE);
    }
    m_ePosition = EAF_isFailure(nResult) ? EPosition::Failed : EPosition::TrafficOff;
}

void TransmitterRules::finishRampStep() noexcept
{
    // A small error has the last word, also over what an observer of this step has requested.
    if (m_bErrorSmall) {
        m_eState = eOPC_TX_ON;
        m_bOn = true;
    }
    m_ePosition = EPosition::PowerSent;
}

void TransmitterRules::onTellProductionTest(ERfDetectorLoopMode eLoopMode, EOPHResult nResult) noexcept
{
    hear(EHeardCall::TellProductionTest, eLoopMode, 0, nResult);
    m_bProductionTestTold = true;
    if (m_bStopped) {
        report(ESafetyRule::AfterStop);
    }
    else if (hearsCaller() && !(m_bInProductionTest && eLoopMode == m_eLoopMode)) {
        report(ESafetyRule::OutsideStep);
    }
}

void TransmitterRules::onGetReducedGain(std::uint32_t nAmplifier, std::int32_t nReducedGain,
                                        EOPHResult nResult) noexcept
{
    hear(EHeardCall::GetReducedGain, static_cast<std::int32_t>(nAmplifier), nReducedGain, nResult);
    checkMoment();
}

void TransmitterRules::onGetTxPowerReadings(std::int32_t nIfPower, std::int32_t nRfGain, EOPHResult nResult) noexcept
{
    hear(EHeardCall::GetTxPowerReadings, nIfPower, nRfGain, nResult);
    checkMoment();
}

void TransmitterRules::onGetPmeasured(std::int32_t nPmeasured, EOPHResult nResult) noexcept
{
    hear(EHeardCall::GetPmeasured, nPmeasured, 0, nResult);
    if (!hearsCaller() && m_eState == eOPC_TX_ON_RAMPING) {
        m_eState = eOPC_TX_ON; // only the closed loop measures
        m_bOn = true;
    }
    beginInferredStep();
    checkMoment();
    if (isAt(eOPC_TX_ON, EPosition::Begin)) {
        m_ePosition = EAF_isFailure(nResult) ? EPosition::Failed : EPosition::Measured;
    }
}

void TransmitterRules::onCalculateDetectorUsage(std::int32_t nPctrl, std::int32_t nDetectorState,
                                                EOPHResult nResult) noexcept
{
    hear(EHeardCall::CalculateDetectorUsage, nPctrl, nDetectorState, nResult);
    checkMoment();
    if (isAt(eOPC_TX_ON_RAMPING, EPosition::StepTaken) || isAt(eOPC_TX_ON, EPosition::Measured)) {
        m_ePosition = EAF_isFailure(nResult) ? EPosition::Failed : EPosition::DetectorAsked;
        m_used = m_inputs; // observers may change them before the power is sent
    }
}
