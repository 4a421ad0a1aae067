/** @file
 * A scene played to the module and to the model side by side.
 */
#pragma once

#include "Unit/SafetyMonitor/MonitoredController.h"
#include "Unit/SafetyMonitor/MonitoredHandler.h"
#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "tests/module/ScriptedClock.h"
#include "tests/module/matrix/ControllerModel.h"
#include "tests/module/matrix/Scenes.h"
#include "tests/support/ControllerTest.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/** A call that a run without a fault made. */
struct RecordedCall
{
    const Place* pPlace; /**< null when the behaviour knows no such call */
    Event call;
    std::size_t nOrdinal; /**< of this operation's calls, from 1 */
    std::size_t nAction;  /**< in which of the scene's actions, from 1 */
};

/** Counts the violations of each safety rule. */
class ViolationCount final : public IViolationReceiver
{
public:
    void onViolation(const SafetyViolation& violation) noexcept override
    {
        ++m_anCounts[static_cast<std::size_t>(violation.eRule)];
        m_last = violation;
    }

    std::array<std::size_t, SAFETY_RULES> m_anCounts{};
    SafetyViolation m_last;
};

/** What an action did. */
struct Outcome
{
    int nResult = 0;
    std::vector<Event> events;
    Members members{};
    Texts milestones;
    Texts failures; /**< traced at level 1 */
};

/**
 * Plays a scene with one fault, mends the handler and lets the controller settle. After every action module and model
 * must have done the same, and the module what the table of places says of refusals. The safety rules hear both sides
 * of the module; they must report what the scene or the fault breaks, and nothing else.
 */
class SceneRun
{
public:
    SceneRun(const Scene& scene, const LogSetting& logs, const Fault& fault);

    SceneRun(const SceneRun&) = delete;
    SceneRun& operator=(const SceneRun&) = delete;
    ~SceneRun();

    /** @return what was not as it should be, with scene, action, fault, expected and actual; empty when all was */
    std::string play();

    const std::vector<RecordedCall>& calls() const { return m_calls; }
    /** @return whether the machine waits for a limit that the handler called unknown */
    bool isWaitingForLimits() const { return m_controller->m_nPctrlMax == OPC_POWER_UNKNOWN; }
    /** @return whether the step under way overtook a request that came meanwhile and counted */
    bool isRequestOvertaken() const { return m_bOvertaken; }

private:
    void observe();
    void happenMeanwhile(EMeanwhile eMeanwhile);
    /** Does an action with both. @return what was wrong with it */
    std::string act(const Action& action, std::size_t nAction);
    int actOnModule(const Action& action);
    int actOnModel(const Action& action);
    Outcome takeModuleOutcome(int nResult);
    Outcome takeModelOutcome(int nResult);
    /** Keeps what the status makes of a request: it decides where the scene ends. */
    void foresee(const Action& action);
    void recordCalls(int nStateAtBegin, const Outcome& outcome, std::size_t nAction);
    std::string settle();
    /** @return what the safety rules reported of an action and should not have, or the other way round */
    std::string safetyDiffers(int nStateAtBegin, const Outcome& outcome);
    std::string where(const std::string& sAction) const;
    LogContents moduleLogs() const;

    Scene m_scene;
    LogSetting m_logs;
    Fault m_fault;
    ScriptedClock m_clock{{100, 0}};
    RecordingPlatform& m_platform = RecordingPlatform::get();
    FaultyHandler m_handler;
    FaultyHandler m_modelHandler;
    ViolationCount m_violations;
    std::array<std::size_t, SAFETY_RULES> m_anExpectedViolations{};
    TransmitterRules m_rules{0, EHeardSides::Both, m_violations};
    MonitoredHandler m_monitoredHandler;
    FakeFrequencyHandler m_frequency;
    FakeTemperatureHandler m_temperature;
    std::optional<ExposedController> m_controller;
    std::optional<MonitoredController> m_monitored; // what scenes call
    ControllerModel m_model;
    IOpcPctrlObserver m_pctrl{};
    IOpcPtargetObserver m_ptarget{};
    IOpcPredictedPctrlObserver m_predictedPctrl{};
    IOpcPowerModeObserver m_powerMode{};
    EOPCState m_eEnd = eOPC_TX_OFF;
    bool m_bOvertaken = false;
    bool m_bDelayUnheard = false; // whether a delayed switch-on has begun that the safety rules do not know of
    Members m_before{};
    std::array<std::size_t, static_cast<std::size_t>(EHandlerCall::Count)> m_anRecorded{};
    std::vector<RecordedCall> m_calls;
};
