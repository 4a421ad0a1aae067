/** @file
 * Steps made by hand, one after another.
 */
#pragma once

#include "Simulation/Scenario/RunMeter.h"

#include <cstdint>

/** Feeds a meter; what is not said stays as it was. Starts in the closed loop at 10 dBm without an error. */
class StepSequence
{
public:
    static constexpr std::int64_t INTERVAL_US = 6000;

    explicit StepSequence(const MeasureSettings& settings = {}) : m_meter(settings, INTERVAL_US)
    {
        step.eStateBefore = eOPC_TX_ON;
        step.eState = eOPC_TX_ON;
        step.nPctrl = 1000;
        step.nLowerClamp = -500;
        step.nUpperClamp = 2000;
        step.highestAllowedDbm = 20.0;
        reference(1000);
    }

    MeasuredStep step; /**< the next one; its time is the sequence's */

    void reference(std::int32_t nCentiDbm)
    {
        step.nPtarget = nCentiDbm;
        step.nRequested = nCentiDbm;
    }

    /** Adds steps whose output is this much above the target. */
    void add(int nSteps, double errorDb = 0.0)
    {
        for (int nStep = 0; nStep < nSteps; ++nStep) {
            addOutput(step.nPtarget / 100.0 + errorDb);
        }
    }

    void addOutput(double outputDbm)
    {
        step.nTimeUs = m_nTimeUs;
        step.outputPowerDbm = outputDbm;
        m_meter.add(step);
        m_nTimeUs += INTERVAL_US;
    }

    /** Adds steps in one state, that stay there. */
    void addIn(EOPCState eState, int nSteps, double errorDb = -100.0) { addFrom(eState, eState, nSteps, errorDb); }

    void addFrom(EOPCState eBefore, EOPCState eAfter, int nSteps, double errorDb)
    {
        step.eStateBefore = eBefore;
        step.eState = eAfter;
        add(nSteps, errorDb);
        step.eStateBefore = eOPC_TX_ON;
        step.eState = eOPC_TX_ON;
    }

    void skipDeadlines(int nDeadlines) { m_nTimeUs += nDeadlines * INTERVAL_US; }

    RunMeasures measures() const { return m_meter.measures(); }

private:
    RunMeter m_meter;
    std::int64_t m_nTimeUs = 0;
};
