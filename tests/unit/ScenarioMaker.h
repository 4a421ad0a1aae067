/** @file
 * Scenarios for tests, made without a file.
 */
#pragma once

#include "Unit/Simulator/VirtualRun.h"

#include <limits>
#include <string>
#include <utility>
#include <vector>

/** @return the module of that name of this build */
inline ModuleConfiguration builtModule(const std::string& sName, EModuleScope eScope = EModuleScope::Channel)
{
    return {sName, OPC_LIBRARY_FOLDER "/lib" + sName + ".so", eScope, 0};
}

/** @return one channel with the standard modules and nothing that happens */
inline Scenario quietScenario(double durationSeconds)
{
    Scenario scenario;
    scenario.sPath = "test";
    scenario.durationSeconds = durationSeconds;
    scenario.unit.sPath = "test";
    scenario.unit.modules = {builtModule("TemperatureHandler", EModuleScope::Unit), builtModule("FrequencyHandler"),
                             builtModule("OutputPowerHandler"), builtModule("OutputPowerController")};
    scenario.unit.channels.emplace_back();
    return scenario;
}

/** @return an event that nothing happens at */
inline ScenarioEvent eventAt(double seconds)
{
    ScenarioEvent event;
    event.atSeconds = seconds;
    return event;
}

/** @return the request of a transmitter on or off */
inline ScenarioEvent requestAt(double seconds, bool bOn)
{
    ScenarioEvent event = eventAt(seconds);
    event.on = bOn;
    return event;
}

/** @return a scenario whose transmitter is switched on at its beginning */
inline Scenario scenarioOn(double durationSeconds)
{
    Scenario scenario = quietScenario(durationSeconds);
    scenario.events.push_back(requestAt(0.0, true));
    return scenario;
}

/** @return a fault of an operation, from a time on */
inline FaultConfiguration faultAt(double seconds, EHandlerOperation eOperation, EHandlerFault eKind)
{
    FaultConfiguration configuration;
    configuration.eOperation = eOperation;
    configuration.fault.eKind = eKind;
    configuration.atSeconds = seconds;
    return configuration;
}

/** Keeps every step. */
class StepList final : public IStepReceiver
{
public:
    void onStep(const VirtualStep& step) override { steps.push_back(step); }
    std::vector<VirtualStep> steps;
};

inline constexpr std::uint64_t ALL_STEPS = std::numeric_limits<std::uint64_t>::max();

/** @return every step of the whole run */
inline std::vector<VirtualStep> stepsOf(const Scenario& scenario)
{
    VirtualRun run(scenario);
    StepList list;
    run.proceed(ALL_STEPS, &list);
    return std::move(list.steps);
}
