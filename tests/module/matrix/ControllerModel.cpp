#include "tests/module/matrix/ControllerModel.h"

#include "tests/module/step/StepModel.h"

#include <algorithm>

namespace
{
constexpr std::int64_t UNKNOWN = -10000;
constexpr std::int64_t OFF = -9900;

constexpr int DONE = 0;
constexpr int FAILED = 0x8000;

enum EState
{
    OFF_INITIATED,
    OFF_IN_PROGRESS,
    IS_OFF,
    DELAY_INITIATED,
    DELAY_IN_PROGRESS,
    ON_INITIATED,
    ON_IN_PROGRESS,
    RAMPING,
    IS_ON
};

std::int32_t narrowed(std::int64_t nValue)
{
    return static_cast<std::int32_t>(nValue);
}
} // namespace

ControllerModel::ControllerModel(FaultyHandler& handler, const LogSetting& logs) : m_handler(handler), m_setting(logs)
{
    m[STATE] = IS_OFF;
    m[PREVIOUS_STATE] = 9;
    m[POWER_MODE] = 3;
    m[PCTRL] = m[PTARGET] = m[PREDICTED] = m[PCTRL_MIN] = UNKNOWN;
    m[DETECTOR] = 3;
}

void ControllerModel::setLimits(int nTxPmin)
{
    m[TX_PMIN] = m[PCTRL_MIN] = nTxPmin;
}

void ControllerModel::setInterval(int nIntervalMs)
{
    m_nWaitCycles = (24 - nIntervalMs) / nIntervalMs;
    m_nRampCycles = (100 - nIntervalMs) / nIntervalMs;
    m_nMaxStep = nIntervalMs == 6 ? 10 : 20;
}

int ControllerModel::request(int nState, int nMode)
{
    if (nMode != m[POWER_MODE]) {
        tell(EEventKind::ToldPowerMode, nMode);
        m[POWER_MODE] = nMode == 2 ? 0 : nMode;
    }
    if (nState != m[STATUS]) {
        m[STATE] = nState == 0 ? OFF_INITIATED : ON_INITIATED;
    }
    return DONE;
}

int ControllerModel::setProductionTest(bool bOn, int nLoopMode)
{
    m[PRODUCTION_TEST] = bOn ? 1 : 0;
    m[LOOP_MODE] = nLoopMode;
    return goesOn(m_handler.setProductionTestSettings(nLoopMode)) ? DONE : FAILED;
}

int ControllerModel::regulate(int nRequested)
{
    m[PTARGET] = nRequested;
    m_nStateAtBegin = static_cast<int>(m[STATE]);
    if (m[STATE] == IS_ON) {
        return closeLoop();
    }
    m[PMEASURED] = m[PCTRL];
    m[PREVIOUS_STATE] = m[STATE];
    const bool bLimitsKnown = m[TX_PMIN] != UNKNOWN && m[PCTRL_MAX] != UNKNOWN;
    return bLimitsKnown ? stepMachine() : DONE;
}

int ControllerModel::stepMachine()
{
    switch (m_nStateAtBegin) {
    case OFF_INITIATED:
        return switchOffFirst();
    case OFF_IN_PROGRESS:
        return switchOffSecond();
    case IS_OFF:
        return DONE;
    case DELAY_INITIATED:
        m[DELAY_START_MS] = m_nNowMs;
        m[STATE] = DELAY_IN_PROGRESS;
        return DONE;
    case DELAY_IN_PROGRESS:
        m[STATE] = m_nNowMs - m[DELAY_START_MS] >= 1100 ? ON_INITIATED : DELAY_IN_PROGRESS;
        return DONE;
    case ON_INITIATED:
        return switchOnFirst();
    case ON_IN_PROGRESS:
        return switchOnSecond();
    default:
        return ramp();
    }
}

int ControllerModel::switchOffFirst()
{
    if (!goesOn(m_handler.setTraffic(false)) || !goesOn(m_handler.setTxState(0))) {
        return FAILED;
    }
    m[STATE] = OFF_IN_PROGRESS;
    return DONE;
}

int ControllerModel::switchOffSecond()
{
    if (!goesOn(m_handler.setTxState(1))) {
        return FAILED;
    }
    m[PCTRL] = m[PTARGET] = m[PREDICTED] = OFF;
    tellChange(EEventKind::ToldPtarget, PTARGET, LAST_PTARGET);
    tellChange(EEventKind::ToldPctrl, PCTRL, LAST_PCTRL);
    tellChange(EEventKind::ToldPredictedPctrl, PREDICTED, LAST_PREDICTED);
    m_milestones.emplace_back("handleOPCStateMachine():   TX OFF");
    m[STATUS] = 0;
    m[STATE] = IS_OFF;
    return DONE;
}

int ControllerModel::switchOnFirst()
{
    m[PCTRL] = m[TX_PMIN];
    std::int32_t nLower = 0;
    std::int32_t nUpper = 0;
    const bool bToldLimits = goesOn(m_handler.getPctrlLimits(&nLower, &nUpper));
    m[PCTRL_MIN] = nLower != UNKNOWN ? nLower : m[PCTRL_MIN];
    m[PCTRL_MAX] = nUpper;
    if (!bToldLimits || !goesOn(m_handler.setTxState(2)) ||
        !goesOn(m_handler.setOutputPower(narrowed(m[PCTRL]), narrowed(m[PTARGET]))))
    {
        return FAILED;
    }
    m[WAIT_COUNT] = m_nWaitCycles;
    m[STATE] = ON_IN_PROGRESS;
    return DONE;
}

int ControllerModel::switchOnSecond()
{
    if (m[WAIT_COUNT] > 0) {
        --m[WAIT_COUNT];
        return DONE;
    }
    if (!goesOn(m_handler.setTxState(3)) || !goesOn(m_handler.setOutputPower(narrowed(m[PCTRL]), narrowed(m[PTARGET]))))
    {
        return FAILED;
    }
    m[RAMP_COUNT] = m_nRampCycles;
    m[STATE] = RAMPING;
    return DONE;
}

int ControllerModel::ramp()
{
    if (!goesOn(m_handler.setTxState(4))) {
        return FAILED;
    }
    if (m[RAMP_COUNT] > 0) {
        --m[RAMP_COUNT];
    }
    else {
        m[STATE] = IS_ON;
        m[STATUS] = 1;
    }
    std::int32_t nDetector = narrowed(m[DETECTOR]);
    const bool bUsage =
        goesOn(m_handler.calculateDetectorUsage(narrowed(m[PCTRL]), narrowed(m[LOOP_MODE]), &nDetector));
    m[DETECTOR] = nDetector;
    if (!bUsage) {
        return FAILED;
    }
    m[POWER_ERROR] = StepModel::wrapped(m[PTARGET] - m[PMEASURED]);
    m[PCTRL] =
        StepModel::rampPctrl(m[PCTRL], gain(static_cast<int>(m[STATE])), m[POWER_ERROR], m[TX_PMIN], m[PCTRL_MAX]);
    if (!send()) {
        return FAILED;
    }
    tell(EEventKind::ToldPctrl, m[PCTRL]);
    tell(EEventKind::ToldPtarget, m[PCTRL]);
    tell(EEventKind::ToldPredictedPctrl, m[PCTRL]);
    if (m[POWER_ERROR] >= -100 && m[POWER_ERROR] <= 100) {
        m[STATE] = IS_ON;
        m[STATUS] = 1;
    }
    if (m[STATE] != IS_ON) {
        return DONE;
    }
    m_milestones.emplace_back("handleOPCStateMachine():   TX ON");
    return goesOn(m_handler.setTraffic(true)) ? DONE : FAILED;
}

int ControllerModel::closeLoop()
{
    std::int32_t nPmeasured = 0;
    if (!goesOn(m_handler.getPmeasured(&nPmeasured))) {
        return FAILED;
    }
    m[PMEASURED] = nPmeasured;
    std::int32_t nDetector = narrowed(m[DETECTOR]);
    const bool bUsage =
        goesOn(m_handler.calculateDetectorUsage(narrowed(m[PCTRL]), narrowed(m[LOOP_MODE]), &nDetector));
    m[DETECTOR] = nDetector;
    if (!bUsage) {
        return FAILED;
    }
    const RegulatorStep::ClosedLoopResult result =
        StepModel::closedLoop({.nPtarget = narrowed(m[PTARGET]),
                               .nPmeasured = nPmeasured,
                               .nPctrl = narrowed(m[PCTRL]),
                               .nGainPercent = gain(IS_ON),
                               .nPctrlMin = narrowed(m[PCTRL_MIN]),
                               .nPctrlMax = narrowed(m[PCTRL_MAX]),
                               .nMaxPctrlStep = m_nMaxStep,
                               .bStepLimited = m[POWER_MODE] == 0,
                               .bProductionTestMode = m[PRODUCTION_TEST] != 0});
    m[POWER_ERROR] = result.nPowerError;
    m[PCTRL] = result.nPctrl;
    m[PREDICTED] = result.nPredictedPctrl;
    tellChange(EEventKind::ToldPredictedPctrl, PREDICTED, LAST_PREDICTED);
    if (!send()) {
        return FAILED;
    }
    tellChange(EEventKind::ToldPtarget, PTARGET, LAST_PTARGET);
    tellChange(EEventKind::ToldPctrl, PCTRL, LAST_PCTRL);
    return DONE;
}

bool ControllerModel::send()
{
    if (!goesOn(m_handler.setOutputPower(narrowed(m[PCTRL]), narrowed(m[PTARGET])))) {
        return false;
    }
    if (!m_setting.bTransientLog && !m_setting.bOpcLog) {
        return true;
    }
    std::int32_t nReading = 0;
    std::int32_t nIfPower = 0;
    std::int32_t nRfGain = 0;
    m_handler.getTxPowerReadings(&nReading, &nIfPower, &nRfGain);
    if (m_setting.bTransientLog) {
        // A sample's detected power is known with the next one.
        if (!m_contents.samples.empty()) {
            m_contents.samples.back()[2] = narrowed(m[PMEASURED]);
        }
        m_contents.samples.push_back(
            {narrowed(m[PTARGET]), narrowed(m[PCTRL]), narrowed(m[PMEASURED]), nIfPower, nRfGain});
    }
    if (m_setting.bOpcLog) {
        feedOpcLog(nIfPower, nRfGain);
    }
    return true;
}

void ControllerModel::feedOpcLog(std::int32_t nIfPower, std::int32_t nRfGain)
{
    std::array<std::int32_t, 11> values = {narrowed(m[PTARGET]), narrowed(m[PCTRL]), narrowed(m[PMEASURED]), nIfPower,
                                           nRfGain};
    std::int32_t* pGain = &values[5];
    for (int i = 1; i <= m_setting.nGainBlocks; ++i) {
        m_handler.getReducedGainFromAmplifier(i, pGain++);
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        // Five triples, one value of its own, then three arrays of six.
        const std::size_t nMin = i < 5 ? 3 * i : 16 + (i - 5);
        const std::size_t nGap = i < 5 ? 1 : 6;
        std::int32_t& nMinimum = m_contents.opcLog[nMin];
        std::int32_t& nMaximum = m_contents.opcLog[nMin + 2 * nGap];
        m_contents.opcLog[nMin + nGap] = values[i];
        nMinimum = m_bOpcLogEmpty ? values[i] : std::min(nMinimum, values[i]);
        nMaximum = m_bOpcLogEmpty ? values[i] : std::max(nMaximum, values[i]);
    }
    m_bOpcLogEmpty = false;
}

int ControllerModel::gain(int nState) const
{
    const std::int64_t nRow = m[DETECTOR];
    return nRow < 0 || nRow > 2 ? 0 : m_anGain[static_cast<std::size_t>(nRow)][static_cast<std::size_t>(nState)];
}

bool ControllerModel::goesOn(EOPHResult nResult) const
{
    if (nResult < FAILED) {
        return true;
    }
    const Event& call = *std::find_if(m_handler.m_events.rbegin(), m_handler.m_events.rend(),
                                      [](const Event& event) { return event.isCall(); });
    const Place* const pPlace = findPlace(m_nStateAtBegin, call);
    return pPlace != nullptr && pPlace->eRefusal != ERefusal::Stops;
}

void ControllerModel::tell(EEventKind eKind, std::int64_t nValue)
{
    m_handler.m_events.push_back({eKind, EHandlerCall::Count, narrowed(nValue), 0, EAF_OK});
}

void ControllerModel::tellChange(EEventKind eKind, EMember eValue, EMember eLast)
{
    if (m[eValue] != m[eLast]) {
        m[eLast] = m[eValue];
        tell(eKind, m[eValue]);
    }
}
