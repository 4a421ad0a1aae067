#include "Unit/SafetyMonitor/TransmitterRules.h"

#include <cstdlib>
#include <limits>

namespace
{
constexpr std::int32_t PRODUCTION_TEST_MARGIN = 2000;
constexpr std::int32_t RAMP_END_ERROR = 100;

// Powers wrap in 32 bits, as the controller's do.
std::int32_t wrapAdd(std::int32_t nA, std::int32_t nB)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nA) + static_cast<std::uint32_t>(nB));
}

std::int32_t wrapSubtract(std::int32_t nA, std::int32_t nB)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(nA) - static_cast<std::uint32_t>(nB));
}
} // namespace

bool TransmitterRules::isPowerExpected() const noexcept
{
    switch (m_eActing) {
    case eOPC_TX_ON_INITIATED:
    case eOPC_TX_ON_IN_PROGRESS:
        return m_ePosition == EPosition::StepTaken;
    case eOPC_TX_ON_RAMPING:
    case eOPC_TX_ON:
        return m_ePosition == EPosition::DetectorAsked;
    default:
        return false;
    }
}

ESafetyRule TransmitterRules::brokenByPower() const noexcept
{
    if (m_eActing == eOPC_TX_OFF || isSwitchingOff()) {
        return ESafetyRule::PowerWhileOff;
    }
    const bool bReadings =
        m_eActing == eOPC_TX_ON || (m_eActing == eOPC_TX_ON_RAMPING && m_ePosition != EPosition::Begin);
    const bool bSent = m_ePosition == EPosition::PowerSent || m_ePosition == EPosition::RampPowerSent;
    return bReadings && !bSent ? ESafetyRule::UnmeasuredPower : ESafetyRule::StepOrder;
}

void TransmitterRules::onSetOutputPower(std::int32_t nPctrl, std::int32_t nPtarget, EOPHResult nResult) noexcept
{
    hear(EHeardCall::SetOutputPower, nPctrl, nPtarget, nResult);
    const bool bExpected = isPowerExpected();
    if (checkMoment()) {
        if (!bExpected) {
            report(brokenByPower(), nPctrl);
        }
        else if (m_eActing == eOPC_TX_ON_INITIATED || m_eActing == eOPC_TX_ON_IN_PROGRESS) {
            judgeStartPower(nPctrl);
        }
        else {
            judgeLoopPower(nPctrl);
        }
    }
    const std::int32_t nPctrlBefore = m_nPctrl;
    m_nPctrl = nPctrl; // a controller goes on from it even if the handler refused it
    if (EAF_isFailure(nResult)) {
        m_ePosition = EPosition::Failed;
    }
    else if (bExpected) {
        followPower(nPtarget, nPctrlBefore);
    }
}

void TransmitterRules::judgeStartPower(std::int32_t nPctrl) noexcept
{
    // The second power of a switch-on is the first one, whatever limit was set in between.
    const bool bFirst = m_eActing == eOPC_TX_ON_INITIATED;
    const std::int32_t nStartPower = bFirst ? m_used.nTxPmin : m_nPctrl;
    if ((!bFirst || hearsCaller()) && nPctrl != nStartPower) {
        report(ESafetyRule::StartPower, nPctrl, nStartPower);
        return;
    }
    // Without an upper limit the machine stops after this step.
    if (m_used.nPctrlMax != OPC_POWER_UNKNOWN && nPctrl > m_used.nPctrlMax) {
        report(hearsCaller() ? ESafetyRule::CrossedLimits : ESafetyRule::UpperLimit, nPctrl, m_used.nPctrlMax, nPctrl);
    }
}

void TransmitterRules::judgeLoopPower(std::int32_t nPctrl) noexcept
{
    if (m_eActing == eOPC_TX_ON_RAMPING) {
        judgeRange(nPctrl, {m_used.nTxPmin, m_used.nPctrlMax});
        return;
    }
    const Range range = closedLoopRange();
    if (judgeRange(nPctrl, range)) {
        judgeStepSize(nPctrl, range);
    }
}

TransmitterRules::Range TransmitterRules::closedLoopRange() const noexcept
{
    // Where the caller is not heard, production test may be on since the handler was first told of it.
    const bool bProductionTest = hearsCaller() ? m_used.bProductionTest : m_bProductionTestTold;
    const std::int32_t nMargin = bProductionTest ? PRODUCTION_TEST_MARGIN : 0;
    return {wrapSubtract(m_used.nPctrlMin, nMargin), wrapAdd(m_used.nPctrlMax, nMargin)};
}

/** @return whether the power is within the limits in force; reports it otherwise */
bool TransmitterRules::judgeRange(std::int32_t nPctrl, const Range& range) noexcept
{
    if (nPctrl > range.nUpper) {
        const bool bCrossed = hearsCaller() && range.nLower > range.nUpper && nPctrl == range.nLower;
        report(bCrossed ? ESafetyRule::CrossedLimits : ESafetyRule::UpperLimit, nPctrl, range.nUpper, range.nLower);
        return false;
    }
    // The upper limit wins where they cross. The lower one is the caller's.
    if (hearsCaller() && nPctrl < range.nLower && nPctrl != range.nUpper) {
        report(ESafetyRule::LowerLimit, nPctrl, range.nLower);
        return false;
    }
    return true;
}

void TransmitterRules::judgeStepSize(std::int32_t nPctrl, const Range& range) noexcept
{
    const bool bLimited = hearsCaller() && !m_used.bProductionTest && m_used.nMode == eTX_POWER_MODE_STEP_LIMITED;
    const std::int64_t nBound = bLimited ? m_used.nMaxStep : LARGEST_STEP;
    const std::int64_t nBefore = m_nPctrl;
    const std::int64_t nMove = nPctrl - nBefore;
    // A limit that has moved past the power takes it along, however far.
    const bool bTakenDown = nMove < 0 && nPctrl == range.nUpper;
    const bool bTakenUp = nMove > 0 && (!hearsCaller() || nPctrl == range.nLower);
    const bool bWraps = nBefore + nBound > std::numeric_limits<std::int32_t>::max() ||
                        nBefore - nBound < std::numeric_limits<std::int32_t>::min();
    if (std::abs(nMove) > nBound && !bTakenDown && !bTakenUp && !bWraps) {
        report(ESafetyRule::StepSize, nPctrl, m_nPctrl, static_cast<std::int32_t>(nBound));
    }
}

/** Goes on after a power that was expected and that the handler took. */
void TransmitterRules::followPower(std::int32_t nPtarget, std::int32_t nPctrlBefore) noexcept
{
    m_ePosition = EPosition::PowerSent;
    if (m_eActing == eOPC_TX_ON_INITIATED) {
        m_nWaitLeft = static_cast<std::int32_t>(m_nWaitCycles);
        m_eState = eOPC_TX_ON_IN_PROGRESS;
    }
    else if (m_eActing == eOPC_TX_ON_IN_PROGRESS) {
        m_nRampLeft = static_cast<std::int32_t>(m_nRampCycles);
        m_eState = eOPC_TX_ON_RAMPING;
    }
    else if (m_eActing == eOPC_TX_ON_RAMPING) {
        // The ramp has no measurement: the power sent before stands for it.
        const std::int32_t nError = wrapSubtract(nPtarget, nPctrlBefore);
        m_bErrorSmall = nError >= -RAMP_END_ERROR && nError <= RAMP_END_ERROR;
        m_ePosition = EPosition::RampPowerSent;
    }
}
