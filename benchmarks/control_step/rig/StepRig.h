/** @file
 * Controllers of the built module, loaded as the unit loads it, among surroundings that do nothing.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerControlLog_c.h"
#include "Unit/Process/LoadedModule.h"
#include "benchmarks/control_step/rig/StepFloor.h"
#include "benchmarks/control_step/rig/Surroundings.h"

#include <memory>
#include <string>
#include <vector>

/** Steps between two restarts of the logs; the transient log holds 200 samples, and one that is full takes none. */
inline constexpr int STEPS_PER_LOG = 128;

/** Turns every trace group off; failures and the system log's lines go nowhere either. */
void silenceTrace();

/** Makes a controller write lines of trace: setting a limit writes one, of two texts and two numbers, and little else.
 */
void writeTraceLines(const IOutputPowerControllerCStruct& table, int nLines);

/** Takes steps, the request changing far above and far below the measured power from step to step. */
void regulate(const IOutputPowerControllerCStruct& table, int nSteps);

/** One after the other takes one step, with one request. */
void regulateEach(const std::vector<IOutputPowerControllerCStruct*>& tables, int nRequested);

/** The controllers of the channels from 0 on, in TX_OFF. There can be only one rig at a time. */
class StepRig
{
public:
    /** @throws std::exception when the module cannot be loaded or does not start */
    explicit StepRig(ETables eTables, unsigned int nControllers = 1, std::size_t nObservers = 0);
    ~StepRig();

    StepRig(const StepRig&) = delete;
    StepRig& operator=(const StepRig&) = delete;

    const std::vector<IOutputPowerControllerCStruct*>& tables() const { return m_tables; }
    const IOutputPowerControllerCStruct& table() const { return *m_tables.front(); }

    /** Switches all on, without a ramp: the request is met. @throws std::runtime_error when one does not go on */
    void switchOn();
    void request(ERequestedTxPowerState eState);
    /**
     * Takes all from off to on and off again.
     * @param eState state to look at
     * @param around called with each step that all take in that state, which it is to take
     * @return how many such steps there were
     */
    template <class TAround> int goRound(EOPCState eState, TAround around);
    /** @throws std::runtime_error unless all are in the state */
    void requireState(EOPCState eState) const;

    /** Starts the logs of the first controller by their commands. */
    void startLogs(const StepShape& shape);
    /** Empties the logs of the first controller that record. */
    void restartLogs() { m_pLog->logsRestart(m_pLog->vpThis); }

private:
    void start(unsigned int nControllers, std::size_t nObservers);

    std::shared_ptr<const ModuleLibrary> m_pLibrary;
    std::vector<std::unique_ptr<LoadedModule>> m_modules;
    std::vector<IOutputPowerControllerCStruct*> m_tables;
    IOutputPowerControlLogCStruct* m_pLog = nullptr;
};

template <class TAround> int StepRig::goRound(EOPCState eState, TAround around)
{
    const auto step = [this] { regulateEach(m_tables, MEASURED_POWER); };
    int nSteps = 0;
    bool bOn = true;
    request(eREQUESTED_TX_POWER_ON);
    for (EOPCState eNow = eOPC_TX_ON_INITIATED; bOn || eNow != eOPC_TX_OFF;) {
        if (eNow == eState) {
            around(step);
            ++nSteps;
        }
        else {
            step();
        }
        if (eNow == eOPC_TX_ON) {
            bOn = false;
            request(eREQUESTED_TX_POWER_OFF);
        }
        table().staticGetOPCState(table().vpThis, &eNow);
    }
    step(); // notes that the state has changed
    if (eState == eOPC_TX_OFF) {
        around(step);
        ++nSteps;
    }
    return nSteps;
}

/** A rig with one controller in the closed loop, and the floor of its step. */
class SteppingRig
{
public:
    /** @throws std::runtime_error when the floor does not make the calls that the controller makes */
    SteppingRig(ETables eTables, const StepShape& shape);

    const StepFloor& floor() const { return m_floor; }
    /** The floor that stores what the logs must keep. */
    const StepFloor& storingFloor() const { return m_storingFloor; }
    const StepShape& shape() const { return m_shape; }

    /** Takes an even number of steps of the controller or of a floor; of a settled controller, with one request. */
    void run(const IOutputPowerControllerCStruct& table, int nSteps) const;
    void restartLogs() { m_rig.restartLogs(); }
    const IOutputPowerControllerCStruct& table() const { return m_rig.table(); }

private:
    void requireSameCalls();
    std::vector<std::string> callsOf(const IOutputPowerControllerCStruct& table) const;

    StepShape m_shape;
    StepRig m_rig;
    StepFloor m_floor;
    StepFloor m_storingFloor;
};
