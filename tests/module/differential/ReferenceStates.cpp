// The states of the machine as lists of effects, and what each effect does.
#include "tests/module/differential/ReferenceController.h"

#include <span>

namespace Differential
{
namespace
{
constexpr std::int64_t OFF = -9900;
constexpr std::int64_t UNKNOWN = -10000;
constexpr std::int64_t DELAY_MS = 1100;
constexpr std::int64_t RAMPING = 7;
constexpr std::int64_t ON = 8;

using enum EEffect;

constexpr Effect OFF_INITIATED[] = {{Say, 5, "eOPC_TX_OFF_INITIATED"},
                                    {SetTraffic, 0, "failed to disable Zembra Mlm Traf TX in OPH"},
                                    {TakeTxStep, 0, "failed to set TX state in OPH"},
                                    {Enter, 1}};
constexpr Effect OFF_IN_PROGRESS[] = {{Say, 5, "eOPC_TX_OFF_IN_PROGRESS"},
                                      {TakeTxStep, 1, "failed to set TX state in OPH"},
                                      {ReportOff},
                                      {Say, 4, "  TX OFF"},
                                      {SetStatus, 0},
                                      {Enter, 2}};
constexpr Effect DELAYED_INITIATED[] = {{Say, 5, "eOPC_DELAYED_TX_ON_INITIATED"}, {StampTime}, {Enter, 4}};
constexpr Effect DELAYED_IN_PROGRESS[] = {{Say, 7, "eOPC_DELAYED_TX_ON_IN_PROGRESS"}, {WaitForDelay}, {Enter, 5}};
constexpr Effect ON_INITIATED[] = {{Say, 5, "eOPC_TX_ON_INITIATED"},
                                   {StartPower},
                                   {ReadLimits},
                                   {TakeTxStep, 2, "failed to set TX state ON initiated in OPH"},
                                   {SendPower, 0, "failed to set Pctrl in OPH"},
                                   {LoadWait},
                                   {Enter, 6}};
constexpr Effect ON_IN_PROGRESS[] = {{Say, 5, "eOPC_TX_ON_IN_PROGRESS"},
                                     {CountWait},
                                     {TakeTxStep, 3, "failed to set TX state ON in progress in OPH"},
                                     {SendPower, 0, "failed to set Pctrl in OPH"},
                                     {LoadRamp},
                                     {Enter, RAMPING}};
constexpr Effect ON_RAMPING[] = {{Say, 5, "eOPC_TX_ON_RAMPING"},
                                 {TakeTxStep, 4, "failed to set TX state ON in OPH"},
                                 {CountRamp},
                                 {UseDetector, 0, "failed to calculate usage of detector"},
                                 {MovePower},
                                 {SendAndLog, 0, "failed to set Pctrl"},
                                 {TellPower},
                                 {JudgeError},
                                 {Say, 4, "  TX ON"},
                                 {TryTraffic, 1, "failed to enable Zembra Mlm Traf TX in OPH"},
                                 {SayState}};

struct State
{
    const char* pName;
    std::span<const Effect> effects;
    bool bActs;
};

const std::array<State, STATES> STATE_TABLE = {{{"TX_OFF_INITIATED", OFF_INITIATED, true},
                                                {"TX_OFF_IN_PROGRESS", OFF_IN_PROGRESS, true},
                                                {"TX_OFF", {}, true},
                                                {"DELAYED_TX_ON_INITIATED", DELAYED_INITIATED, true},
                                                {"DELAYED_TX_ON_IN_PROGRESS", DELAYED_IN_PROGRESS, true},
                                                {"TX_ON_INITIATED", ON_INITIATED, true},
                                                {"TX_ON_IN_PROGRESS", ON_IN_PROGRESS, true},
                                                {"TX_ON_RAMPING", ON_RAMPING, true},
                                                {"TX_ON", {}, false},
                                                {"UNDEFINED", {}, false}}};

const std::string MACHINE = "handleOPCStateMachine(): ";
} // namespace

std::string ReferenceController::stateText() const
{
    return MACHINE + "OPC: state " + STATE_TABLE[static_cast<std::size_t>(m_nState)].pName + " (" +
           std::to_string(m_nState) + ")";
}

void ReferenceController::enter(std::int64_t nState)
{
    m_nState = nState;
    m_environment.countFor(&m_coverage, nState);
}

std::int64_t ReferenceController::stepStateMachine()
{
    if (m_nState != m_nPreviousState) {
        trace(5, MACHINE + "OPC state changed. New state " + std::to_string(m_nState) + ", Old state " +
                     std::to_string(m_nPreviousState));
    }
    m_nPreviousState = m_nState;
    if (m_nState != 2) {
        trace(5, stateText());
    }
    if (m_nTxPmin == UNKNOWN || m_nPctrlMax == UNKNOWN) {
        m_coverage.count(m_nTxPmin == UNKNOWN ? ECorner::RequestedMinimumUnknown : ECorner::UpperLimitUnknown);
        return 0;
    }
    const State& state = STATE_TABLE[static_cast<std::size_t>(m_nState)];
    if (!state.bActs) {
        trace(1, MACHINE + "unhandled state " + std::to_string(m_nState));
        return 0x8000;
    }
    for (const Effect& effect : state.effects) {
        const EGoOn eGoOn = carryOut(effect);
        if (eGoOn != EGoOn::Next) {
            return eGoOn == EGoOn::Fail ? 0x8000 : 0;
        }
    }
    return 0;
}

ReferenceController::EGoOn ReferenceController::judge(std::int32_t nHandlerResult, const char* pText)
{
    if (isRefused(nHandlerResult)) {
        trace(1, MACHINE + pText);
        return EGoOn::Fail;
    }
    return EGoOn::Next;
}

ReferenceController::EGoOn ReferenceController::carryOut(const Effect& effect)
{
    switch (effect.eEffect) {
    case Say:
        trace(static_cast<int>(effect.nArgument), MACHINE + effect.pText);
        return EGoOn::Next;
    case SayState:
        trace(5, stateText());
        return EGoOn::Next;
    case SetStatus:
        m_nStatus = effect.nArgument;
        return EGoOn::Next;
    case Enter:
        enter(effect.nArgument);
        return EGoOn::Next;
    case TakeTxStep:
        return judge(m_environment.setTxState(static_cast<std::int32_t>(effect.nArgument)), effect.pText);
    case SetTraffic:
        return judge(m_environment.setTraffic(effect.nArgument != 0), effect.pText);
    case TryTraffic:
        (void)judge(m_environment.setTraffic(effect.nArgument != 0), effect.pText);
        return EGoOn::Next;
    case UseDetector:
        return judge(m_environment.calculateDetectorUsage(static_cast<std::int32_t>(m_nPctrl),
                                                          static_cast<std::int32_t>(m_nLoopMode), &m_nDetector),
                     effect.pText);
    case SendPower:
        return judge(
            m_environment.setOutputPower(static_cast<std::int32_t>(m_nPctrl), static_cast<std::int32_t>(m_nPtarget)),
            effect.pText);
    case SendAndLog:
        return judge(sendAndLog() ? 0 : 0x8000, effect.pText);
    case CountRamp:
    case MovePower:
    case TellPower:
    case JudgeError:
        return rampEffect(effect);
    default:
        return switchEffect(effect);
    }
}

ReferenceController::EGoOn ReferenceController::switchEffect(const Effect& effect)
{
    switch (effect.eEffect) {
    case ReportOff:
        m_nPctrl = m_nPtarget = m_nPredicted = OFF;
        tellChanges();
        break;
    case StampTime:
        m_delayBegan = m_environment.now();
        break;
    case WaitForDelay:
        return waitForDelay();
    case StartPower:
        m_nPctrl = m_nTxPmin;
        break;
    case ReadLimits:
        readLimits();
        break;
    case LoadWait:
        m_nWaitCount = m_nWaitCycles;
        break;
    case LoadRamp:
        m_nRampCount = m_nRampCycles;
        break;
    case CountWait:
        if (m_nWaitCount > 0) {
            --m_nWaitCount;
            return EGoOn::Stop;
        }
        break;
    default:
        break;
    }
    return EGoOn::Next;
}

ReferenceController::EGoOn ReferenceController::waitForDelay()
{
    const Time now = m_environment.now();
    const std::int64_t nNanoseconds =
        (now.nSeconds - m_delayBegan.nSeconds) * 1'000'000'000 + now.nNanoseconds - m_delayBegan.nNanoseconds;
    const std::int64_t nMilliseconds = nNanoseconds / 1'000'000;
    const bool bOver = (nMilliseconds & 0xFFFFFFFF) >= DELAY_MS;
    if (nMilliseconds == DELAY_MS - 1 || nMilliseconds == DELAY_MS) {
        m_coverage.count(bOver ? ECorner::DelayJustOver : ECorner::DelayOneMillisecondShort);
    }
    if (nMilliseconds > 0xFFFFFFFF) {
        m_coverage.count(ECorner::DelayWrapped);
    }
    m_coverage.count(bOver ? ECorner::DelayOver : ECorner::DelayNotOver);
    return bOver ? EGoOn::Next : EGoOn::Stop;
}

void ReferenceController::readLimits()
{
    std::int32_t nLower = 0;
    std::int32_t nUpper = 0;
    (void)m_environment.getPctrlLimits(&nLower, &nUpper);
    m_coverage.count(nLower == UNKNOWN ? ECorner::HandlerLowerLimitUnknown : ECorner::HandlerLowerLimitTaken);
    m_nPctrlMin = nLower == UNKNOWN ? m_nPctrlMin : nLower;
    m_nPctrlMax = nUpper;
}

ReferenceController::EGoOn ReferenceController::rampEffect(const Effect& effect)
{
    switch (effect.eEffect) {
    case CountRamp:
        if (m_nRampCount > 0) {
            --m_nRampCount;
            break;
        }
        m_coverage.count(ECorner::RampOutOfTime);
        enter(ON);
        m_nStatus = 1;
        break;
    case MovePower:
        movePower();
        break;
    case TellPower:
        // All three lists are told the control power, and none is remembered as told.
        for (const std::size_t nList : {0U, 1U, 2U}) {
            tell(nList, m_nPctrl);
        }
        m_bTold = true;
        break;
    default:
        if (std::abs(m_nError) == 100) {
            m_coverage.count(ECorner::RampErrorOfExactlyOneHundred);
        }
        if (std::abs(m_nError) == 101) {
            m_coverage.count(ECorner::RampErrorOfOneHundredAndOne);
        }
        if (std::abs(m_nError) <= m_constants.nRampErrorBound) {
            enter(ON);
            m_nStatus = 1;
        }
        return m_nState == ON ? EGoOn::Next : EGoOn::Stop;
    }
    return EGoOn::Next;
}

void ReferenceController::movePower()
{
    const std::int64_t nGain = gainFor(m_nState);
    m_nError = wrapped(m_nPtarget - m_nPmeasured);
    const std::int64_t nCandidate = wrapped(m_nPctrl + correction(nGain));
    const std::int64_t nBefore = m_nPctrl;
    if (nCandidate > m_nPctrlMax) {
        m_coverage.count(ECorner::RampAboveUpperLimit);
        m_nPctrl = m_nPctrlMax;
    }
    else if (nCandidate < m_nTxPmin) {
        m_coverage.count(m_nTxPmin == m_nPctrlMin ? ECorner::RampBelowRequestedMinimum
                                                  : ECorner::RampBelowRequestedMinimumNotLoopMinimum);
        m_nPctrl = m_nTxPmin;
    }
    else {
        m_nPctrl = nCandidate;
    }
    if (m_nPctrl == nBefore) {
        m_coverage.count(ECorner::RampToldUnchangedPower);
    }
}
} // namespace Differential
