#include "tests/module/matrix/SceneRun.h"

#include "Control/OutputPowerController/private/OutputPowerControlLog.h"
#include "tests/module/matrix/RefusalRules.h"
#include "tests/module/step/StepModel.h"

#include <bit>
#include <sstream>
#include <utility>

namespace
{
constexpr int MAX_SETTLING_STEPS = 60;

Members membersOf(const ExposedController& c)
{
    Members m{};
    m[STATE] = c.m_eOPCState;
    m[PREVIOUS_STATE] = c.m_ePreviousOPCState;
    m[STATUS] = c.m_eTxPowerActualStatus;
    m[POWER_MODE] = c.m_eTxPowerMode;
    m[PCTRL] = c.m_nPctrl;
    m[PTARGET] = c.m_nPtarget;
    m[PMEASURED] = c.m_nPmeasured;
    m[PREDICTED] = c.m_nPredictedPctrl;
    m[LAST_PTARGET] = c.m_nLastNotifiedPtarget;
    m[LAST_PCTRL] = c.m_nLastNotifiedPctrl;
    m[LAST_PREDICTED] = c.m_nLastNotifiedPredictedPctrl;
    m[TX_PMIN] = c.m_nTxPmin;
    m[PCTRL_MIN] = c.m_nPctrlMin;
    m[PCTRL_MAX] = c.m_nPctrlMax;
    m[WAIT_COUNT] = c.m_nTxOnInProgressCount;
    m[RAMP_COUNT] = c.m_nRampingCount;
    m[DETECTOR] = c.m_eOPHDetectorState;
    m[POWER_ERROR] = c.m_nPowerError;
    m[LOOP_MODE] = c.m_eRfDetectorLoopMode;
    m[PRODUCTION_TEST] = c.m_bProductionTestMode ? 1 : 0;
    m[DELAY_START_MS] = std::int64_t{c.m_tsDelayedTxOnStart.tv_sec} * 1000 + c.m_tsDelayedTxOnStart.tv_nsec / 1000000;
    return m;
}

template <class TTable> TTable& tableOf(IInterface_c& interface)
{
    return *static_cast<TTable*>(interface.getCStruct());
}

template <EEventKind KIND> void recordTold(void* vpThis, unsigned int /*nChannel*/, int nValue)
{
    static_cast<FaultyHandler*>(vpThis)->m_events.push_back({KIND, EHandlerCall::Count, nValue, 0, EAF_OK});
}

void recordToldMode(void* vpThis, unsigned int nChannel, ETxPowerMode eMode)
{
    recordTold<EEventKind::ToldPowerMode>(vpThis, nChannel, eMode);
}

std::string textOf(const Outcome& outcome)
{
    std::ostringstream text;
    text << "result " << std::hex << outcome.nResult << std::dec << "; " << textOf(outcome.events) << "; milestones";
    for (const std::string& sMilestone : outcome.milestones) {
        text << " \"" << sMilestone << '"';
    }
    return text.str();
}
} // namespace

SceneRun::SceneRun(const Scene& scene, const LogSetting& logs, const Fault& fault)
    : m_scene(scene), m_logs(logs), m_fault(fault),
      m_monitoredHandler(tableOf<IOutputPowerHandlerCStruct>(m_handler), m_rules), m_model(m_modelHandler, logs)
{
    m_platform.reset();
    m_platform.publish("IOutputPowerHandler.0", &m_monitoredHandler);
    m_platform.publish("IFrequencyHandler_Tx", &m_frequency);
    m_platform.publish("ITemperatureHandler", &m_temperature);
    m_controller.emplace(0U);
    m_controller->onModuleInit();
    m_monitored.emplace(tableOf<IOutputPowerControllerCStruct>(*m_controller), m_rules);
    m_monitored->setTxPminPmax(SCENE_TX_PMIN, 0);
    m_model.setLimits(SCENE_TX_PMIN);
    if (scene.nIntervalMs != 0) {
        m_monitored->setRegulatorInterval(scene.nIntervalMs);
        m_model.setInterval(scene.nIntervalMs);
    }
    for (int nRow = 0; nRow < 3; ++nRow) {
        const auto eRow = static_cast<EOPHDetectorState>(nRow);
        m_controller->setGain(eRow, eOPC_TX_ON_RAMPING, scene.nRampGain + 5 * nRow);
        m_controller->setGain(eRow, eOPC_TX_ON, scene.nLoopGain - 10 * nRow);
        m_model.m_anGain[static_cast<std::size_t>(nRow)][7] = scene.nRampGain + 5 * nRow;
        m_model.m_anGain[static_cast<std::size_t>(nRow)][8] = scene.nLoopGain - 10 * nRow;
    }
    m_controller->m_nNumberOfGainBlocks = logs.nGainBlocks;
    m_controller->m_pLog->setTransientLogActive(logs.bTransientLog);
    m_controller->m_pLog->setOpcLogActive(logs.bOpcLog);
    m_model.advanceMs(100000);
    observe();
    m_platform.clearRecords();
}

SceneRun::~SceneRun()
{
    m_monitored.reset();
    m_controller.reset();
    m_platform.reset();
}

void SceneRun::observe()
{
    m_pctrl = {&m_handler, &recordTold<EEventKind::ToldPctrl>};
    m_ptarget = {&m_handler, &recordTold<EEventKind::ToldPtarget>};
    m_predictedPctrl = {&m_handler, &recordTold<EEventKind::ToldPredictedPctrl>};
    m_powerMode = {&m_handler, &recordToldMode};
    m_controller->registerPctrlObserver(&m_pctrl);
    m_controller->registerPtargetObserver(&m_ptarget);
    m_controller->registerPredictedPctrlObserver(&m_predictedPctrl);
    m_controller->registerPowerModeObserver(&m_powerMode);
    m_handler.m_meanwhile = [this](EMeanwhile eMeanwhile) { happenMeanwhile(eMeanwhile); };
    m_modelHandler.m_meanwhile = [this](EMeanwhile eMeanwhile) {
        if (eMeanwhile == EMeanwhile::TimePasses) {
            m_model.advanceMs(FaultyHandler::SLOW_CALL_MS);
        }
        else if (eMeanwhile >= EMeanwhile::OnRequest) {
            m_model.request(eMeanwhile == EMeanwhile::OnRequest ? 1 : 0, 1);
        }
    };
}

std::string SceneRun::play()
{
    m_handler.plan(m_fault);
    m_modelHandler.plan(m_fault);
    for (std::size_t i = 0; i < m_scene.actions.size(); ++i) {
        const std::string sWrong = act(m_scene.actions[i], i + 1);
        if (!sWrong.empty()) {
            return where("action " + std::to_string(i + 1) + " (" + textOf(m_scene.actions[i]) + ")") + sWrong;
        }
    }
    m_handler.mend();
    m_modelHandler.mend();
    const std::string sWrong = settle();
    return sWrong.empty() ? sWrong : where("settling") + sWrong;
}

std::string SceneRun::settle()
{
    const auto isAtRest = [this] {
        const EOPCState eState = m_controller->m_eOPCState;
        return eState == eOPC_TX_ON || eState == eOPC_TX_OFF;
    };
    int nSteps = 0;
    do {
        std::string sWrong = act({EAction::Regulate, SETTLING_POWER}, m_scene.actions.size() + 1);
        if (!sWrong.empty()) {
            return sWrong;
        }
    } while (!isAtRest() && !isWaitingForLimits() && ++nSteps < MAX_SETTLING_STEPS);
    if (!(moduleLogs() == m_model.logs())) {
        return "the logs hold something else than they should";
    }
    const bool bOtherEnd = !isWaitingForLimits() && m_controller->m_eOPCState != m_eEnd;
    // A request that comes while a step runs may be overtaken by it: the model tells which.
    m_bOvertaken = bOtherEnd && m_fault.eMeanwhile >= EMeanwhile::OnRequest;
    if (bOtherEnd && !m_bOvertaken) {
        return "expected to end in state " + std::to_string(m_eEnd) + ", actually in " +
               std::to_string(m_controller->m_eOPCState);
    }
    return isAtRest() || isWaitingForLimits() ? "" : "still in state " + std::to_string(m_controller->m_eOPCState);
}

std::string SceneRun::act(const Action& action, std::size_t nAction)
{
    m_before = membersOf(*m_controller);
    foresee(action);
    const Outcome actual = takeModuleOutcome(actOnModule(action));
    const Outcome expected = takeModelOutcome(actOnModel(action));
    const int nStateAtBegin = static_cast<int>(m_before[STATE]);
    recordCalls(nStateAtBegin, actual, nAction);
    if (actual.nResult != expected.nResult || actual.events != expected.events ||
        actual.milestones != expected.milestones) {
        return "expected " + textOf(expected) + "\n  actual   " + textOf(actual);
    }
    if (actual.members != expected.members) {
        return "members, expected | actual:" + differencesOf(expected.members, actual.members);
    }
    std::string sViolation = RefusalRules::violation(nStateAtBegin, m_before, actual);
    return sViolation.empty() ? safetyDiffers(nStateAtBegin, actual) : sViolation;
}

std::string SceneRun::safetyDiffers(int nStateAtBegin, const Outcome& outcome)
{
    if (m_fault.eMeanwhile >= EMeanwhile::OnRequest) {
        return {}; // the rules hear a handler's call once it is over, and want calls one after the other
    }
    for (const Event& event : outcome.events) {
        // Nobody requested what the delayed switch-on does; once told so, the rules go along with it.
        if (event.eCall == EHandlerCall::GetPctrlLimits && m_bDelayUnheard) {
            ++m_anExpectedViolations[static_cast<std::size_t>(ESafetyRule::SwitchOnUnasked)];
            m_bDelayUnheard = false;
        }
        // Limits that cross, as extreme ones do, let a power through that is above the upper one.
        const bool bMargin = outcome.members[PRODUCTION_TEST] != 0 && nStateAtBegin == eOPC_TX_ON;
        const std::int64_t nUpper = StepModel::wrapped(outcome.members[PCTRL_MAX] + (bMargin ? 2000 : 0));
        const bool bNoLimit = nStateAtBegin == eOPC_TX_ON_INITIATED && nUpper == OPC_POWER_UNKNOWN;
        if (event.eCall == EHandlerCall::SetOutputPower && event.nFirst > nUpper && !bNoLimit) {
            ++m_anExpectedViolations[static_cast<std::size_t>(ESafetyRule::CrossedLimits)];
        }
    }
    for (std::size_t i = 0; i < SAFETY_RULES; ++i) {
        if (m_violations.m_anCounts[i] != m_anExpectedViolations[i]) {
            return std::string("violations of ") + safetyRuleName(static_cast<ESafetyRule>(i)) + ", expected " +
                   std::to_string(m_anExpectedViolations[i]) + ", actual " +
                   std::to_string(m_violations.m_anCounts[i]) + "\n  the latest: " + violationText(m_violations.m_last);
        }
    }
    return {};
}

Outcome SceneRun::takeModuleOutcome(int nResult)
{
    Outcome outcome{nResult, std::exchange(m_handler.m_events, {}), membersOf(*m_controller), {}, {}};
    for (RecordedTrace& trace : m_platform.traces()) {
        if (!trace.bWellEnded || trace.sSourcePath != CONTROLLER_SOURCE_PATH) {
            outcome.failures.push_back("NOT WELL TRACED: " + trace.sText);
        }
        else if (trace.nLevel == 1) {
            outcome.failures.push_back(std::move(trace.sText));
        }
        else if (trace.nLevel == 4) {
            outcome.milestones.push_back(std::move(trace.sText));
        }
    }
    m_platform.clearRecords();
    return outcome;
}

Outcome SceneRun::takeModelOutcome(int nResult)
{
    return {nResult,
            std::exchange(m_modelHandler.m_events, {}),
            m_model.members(),
            std::exchange(m_model.m_milestones, {}),
            {}};
}

void SceneRun::recordCalls(int nStateAtBegin, const Outcome& outcome, std::size_t nAction)
{
    if (m_fault.eCall != EHandlerCall::Count || nAction > m_scene.actions.size()) {
        return;
    }
    for (const Event& event : outcome.events) {
        if (event.isCall()) {
            const std::size_t nOrdinal = ++m_anRecorded[static_cast<std::size_t>(event.eCall)];
            m_calls.push_back({findPlace(nStateAtBegin, event), event, nOrdinal, nAction});
        }
    }
}

std::string SceneRun::where(const std::string& sAction) const
{
    return std::string("scene \"") + m_scene.pName + "\", " + m_logs.pName + ", fault \"" + m_fault.sName + "\" at " +
           nameOf(m_fault.eCall) + " number " + std::to_string(m_fault.nOrdinal) + "; " + sAction + ":\n  ";
}

LogContents SceneRun::moduleLogs() const
{
    OutputPowerControlLog& log = *m_controller->m_pLog;
    LogContents contents;
    OutputPowerControlLog::OpcLog record;
    log.readFromOpcLog(&record);
    contents.opcLog = std::bit_cast<std::array<std::int32_t, 34>>(record);
    contents.samples.resize(log.getNumberOfSamplesInTransientLog());
    for (std::size_t i = 0; i < contents.samples.size(); ++i) {
        std::array<std::int32_t, 5>& sample = contents.samples[i];
        log.getSampleFromTransientLog(static_cast<unsigned short>(i + 1), &sample[0], &sample[1], &sample[2],
                                      &sample[3], &sample[4]);
    }
    return contents;
}
