/** @file
 * Steps of a run, made by hand.
 */
#pragma once

#include "Unit/Simulator/Scenario.h"
#include "Unit/Simulator/VirtualRun.h"
#include "tests/unit/SampleMaker.h"

#include <cstdint>

/** @return a closed-loop step with the output a little below a target of 10.12 dBm */
inline VirtualStep makeStep(std::uint64_t nTimeUs)
{
    VirtualStep step{};
    step.sample = makeSample();
    step.sample.nTimeUs = nTimeUs;
    step.outputPowerDbm = 10.0;
    step.nLowerClamp = -500;
    step.nUpperClamp = 2000;
    return step;
}

/** @return a scenario with a channel and nothing else */
inline Scenario makeScenario(double durationSeconds)
{
    Scenario scenario;
    scenario.sPath = "run.toml";
    scenario.durationSeconds = durationSeconds;
    scenario.unit.channels.resize(1);
    return scenario;
}

/** @return the measure of that name */
inline const RunMeasureKey* measureKey(const std::string& sName)
{
    for (const RunMeasureKey& key : runMeasureKeys()) {
        if (sName == key.pName) {
            return &key;
        }
    }
    return nullptr;
}
