/** @file
 * Takes the measures of a run, step by step.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"
#include "Simulation/Scenario/MeasureSettings.h"
#include "Simulation/Scenario/RunMeasures.h"

#include <cstdint>
#include <memory>

/** What the measures are made of: one step of a channel. Powers in hundredths of a dBm unless said otherwise. */
struct MeasuredStep
{
    std::int64_t nTimeUs = 0; /**< the step's deadline, since the run began */
    EOPCState eStateBefore = eOPC_UNDEFINED;
    EOPCState eState = eOPC_UNDEFINED; /**< after the step */
    bool bFailed = false;
    std::int32_t nRequested = 0;
    std::int32_t nPtarget = 0;
    std::int32_t nPctrl = 0;
    std::int32_t nLowerClamp = 0; /**< of the control power, as the closed loop holds it now */
    std::int32_t nUpperClamp = 0;
    std::int32_t nDetectorState = 0;
    double outputPowerDbm = 0.0;    /**< true power after the step; -infinity when nothing is radiated */
    double highestAllowedDbm = 0.0; /**< output power above it by more than the tolerance is spurious */
};

/**
 * Takes the measures that docs/simulation.md defines. Its memory does not grow with the run, and no step allocates.
 * Use it from one thread.
 */
class RunMeter
{
public:
    /** @param nIntervalUs the regulator's interval, for which a step counts; positive */
    RunMeter(const MeasureSettings& settings, std::int64_t nIntervalUs);
    ~RunMeter();

    RunMeter(const RunMeter&) = delete;
    RunMeter& operator=(const RunMeter&) = delete;

    /** Takes the next step in; steps ascend in time. */
    void add(const MeasuredStep& step);

    /** @return the measures so far; overruns and refused calls are for those to fill in who know them */
    RunMeasures measures() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> m_pImplementation;
};
