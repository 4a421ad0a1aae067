/** @file
 * Runs a scenario in virtual time.
 */
#pragma once

#include "Simulation/Scenario/RunMeasures.h"
#include "Unit/Process/StepSample.h"
#include "Unit/SafetyMonitor/ViolationStore.h"
#include "Unit/Simulator/Scenario.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/** A step of a run, with what only a simulation knows. */
struct VirtualStep
{
    StepSample sample;            /**< its lateness is what slow handler calls took of the step's own time */
    double outputPowerDbm = 0.0;  /**< true power after the step; -infinity when nothing is radiated */
    std::int32_t nLowerClamp = 0; /**< of the control power in the closed loop as it holds now, hundredths of a dBm */
    std::int32_t nUpperClamp = 0;
};

/** Is told every step of a run. */
class IStepReceiver
{
public:
    virtual void onStep(const VirtualStep& step) = 0;

protected:
    ~IStepReceiver() = default;
};

/**
 * The run of a scenario: the modules that the unit would load, at deadlines that nobody waits for. The same scenario
 * gives the same run, to the last bit. One run at a time in a process: modules and platform exist once. Use it from one
 * thread.
 */
class VirtualRun
{
public:
    /**
     * Loads and starts the modules.
     * @param nTraceLevel of all trace groups, on standard error; 0 for silence
     * @throws ConfigurationError for bad input
     * @throws UnitStartError when a module fails
     */
    explicit VirtualRun(const Scenario& scenario, int nTraceLevel = 0);
    ~VirtualRun();

    VirtualRun(const VirtualRun&) = delete;
    VirtualRun& operator=(const VirtualRun&) = delete;

    /** @return number of deadlines in the whole run */
    std::uint64_t totalSteps() const;

    /** @return deadlines so far, skipped ones included */
    std::uint64_t stepsDone() const;

    /**
     * Goes on with the run.
     * @param nMaxSteps stops after so many steps, so that the caller can show progress
     * @param pReceiver is told every step; null for nobody, which costs the least
     * @return false when the run is over
     */
    bool proceed(std::uint64_t nMaxSteps, IStepReceiver* pReceiver);

    /** @return the measures of the run so far */
    RunMeasures measures() const;

    /** @return what went wrong without ending the run; a line each */
    std::vector<std::string> warnings() const;

    /** @return the breaches of safety rules so far */
    const ViolationStore& violations() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> m_pImplementation;
};
