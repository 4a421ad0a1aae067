/** @file
 * What a run in virtual time is made of.
 */
#pragma once

#include "Simulation/Scenario/RunMeter.h"
#include "Unit/Clock/DeadlineSchedule.h"
#include "Unit/Process/FaultSchedule.h"
#include "Unit/Process/NotifiedTemperature.h"
#include "Unit/Process/UnitProcess.h"
#include "Unit/Simulator/VirtualRun.h"
#include "Unit/Simulator/private/EventQueue.h"
#include "Unit/Simulator/private/Timeline.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class ISimulatedTransmitter;

/** See VirtualRun. */
class RunEngine
{
public:
    RunEngine(const Scenario& scenario, int nTraceLevel);
    ~RunEngine() = default;

    RunEngine(const RunEngine&) = delete;
    RunEngine& operator=(const RunEngine&) = delete;

    std::uint64_t totalSteps() const { return m_nTotalSteps; }
    std::uint64_t stepsDone() const;
    bool proceed(std::uint64_t nMaxSteps, IStepReceiver* pReceiver);
    RunMeasures measures() const;
    std::vector<std::string> warnings() const;
    const ViolationStore& violations() const;

private:
    void start();
    void step(IStepReceiver* pReceiver);
    void happen(std::int64_t nNowNs);
    void act(const EventQueue::Due& due);
    void setGains(const std::optional<GainPercent>& gain, EOPCState eState, const EventQueue::Due& due);
    void setFaults(std::int64_t nNowNs);
    void judge(long nResult, const EventQueue::Due& due, const char* pWhat);
    void fill(VirtualStep& step) const;
    void measure(const VirtualStep& step);

    Scenario m_scenario;
    Timeline m_timeline;
    EventQueue m_events;
    FaultSchedule m_faults;
    UnitProcess m_process;
    RadioChannel* m_pChannel = nullptr;
    ISimulatedTransmitter* m_pTransmitter = nullptr;
    NotifiedTemperature m_temperature{nullptr};
    DeadlineSchedule m_deadlines;
    std::uint64_t m_nTotalSteps;
    double m_simulatedSeconds = 0.0; // between the last deadline and this one
    std::uint64_t m_nOverruns = 0;
    VirtualStep m_step;
    RunMeter m_meter;
    std::vector<bool> m_warnedOf; // by event
    std::vector<std::string> m_warnings;
};
