/** @file
 * Takes steps between callgrind's switches, so that what a step executes can be counted. instructions.py runs it.
 *
 * Each case is taken twice, with a number of steps and with twice that; the difference holds whole steps only.
 */
#include "benchmarks/control_step/rig/StepRig.h"

#include <valgrind/callgrind.h>

#include <exception>
#include <functional>
#include <iostream>

namespace
{
constexpr int STEPS = STEPS_PER_LOG / 2;

/** Counts a call; what is counted since the last dump adds up. */
template <class TCall> void counted(TCall call)
{
    CALLGRIND_TOGGLE_COLLECT;
    call();
    CALLGRIND_TOGGLE_COLLECT;
}

/** Writes what was counted, under "CASE|STEPS". */
void dump(const std::string& sCase, int nSteps)
{
    const std::string sName = sCase + "|" + std::to_string(nSteps);
    CALLGRIND_DUMP_STATS_AT(sName.c_str());
    std::cout << sName << std::endl;
}

/** @param take takes as many steps as it is told */
void countSteps(const std::string& sCase, const std::function<void()>& prepare, const std::function<void(int)>& take)
{
    for (const int nSteps : {STEPS, 2 * STEPS}) {
        prepare();
        counted([&] { take(nSteps); });
        dump(sCase, nSteps);
    }
}

/** A closed-loop step, and the floor under it. */
void countClosedLoop(const std::string& sCase, ETables eTables, const StepShape& shape)
{
    SteppingRig rig(eTables, shape);
    const auto count = [&](const std::string& sName, const IOutputPowerControllerCStruct& table) {
        countSteps(
            sName, [&rig] { rig.restartLogs(); }, [&](int nSteps) { rig.run(table, nSteps); });
    };
    count(sCase, rig.table());
    count(sCase + ", floor", rig.floor().table());
    if (shape.bTransientLog || shape.bOpcLog) {
        count(sCase + ", storing floor", rig.storingFloor().table());
    }
}

/** The mean of all steps in a state from off to on and off again. */
void countState(const std::string& sCase, EOPCState eState)
{
    StepRig rig(ETables::Quiet);
    rig.goRound(eState, [](auto step) { step(); });
    for (const int nRounds : {STEPS, 2 * STEPS}) {
        int nSteps = 0;
        for (int nRound = 0; nRound < nRounds; ++nRound) {
            nSteps += rig.goRound(eState, [](auto step) { counted(step); });
        }
        dump(sCase, nSteps);
    }
}

void countTrace()
{
    const StepRig rig(ETables::Quiet);
    const auto write = [&rig](int nLines) { writeTraceLines(rig.table(), nLines); };
    write(2);
    countSteps(
        "a disabled trace line", [] {}, write);
}

void countAll()
{
    const StepShape none{};
    StepShape transient;
    transient.bTransientLog = true;
    StepShape opc;
    opc.bOpcLog = true;
    StepShape both = transient;
    both.bOpcLog = true;
    const auto observed = [](StepShape shape) {
        shape.nObservers = Surroundings::MAX_OBSERVERS;
        return shape;
    };
    countClosedLoop("closed loop, no log", ETables::Quiet, none);
    countClosedLoop("closed loop, transient log", ETables::Quiet, transient);
    countClosedLoop("closed loop, OPC log", ETables::Quiet, opc);
    countClosedLoop("closed loop, both logs", ETables::Quiet, both);
    countClosedLoop("closed loop, no log, 4 observers", ETables::Quiet, observed(none));
    countClosedLoop("closed loop, transient log, 4 observers", ETables::Quiet, observed(transient));
    countClosedLoop("closed loop, OPC log, 4 observers", ETables::Quiet, observed(opc));
    countClosedLoop("closed loop, both logs, 4 observers", ETables::Quiet, observed(both));
    StepShape settled = observed(none);
    settled.bSettled = true;
    countClosedLoop("settled, no log, 4 observers", ETables::Quiet, settled);
    StepShape bare;
    bare.bTables = false;
    countClosedLoop("closed loop, no log, no tables", ETables::None, bare);
    countClosedLoop("closed loop, no log, the unit's tables", ETables::OfTheUnit, none);
    countClosedLoop("closed loop, both logs, the unit's tables", ETables::OfTheUnit, both);

    countState("TX_OFF", eOPC_TX_OFF);
    countState("TX_ON_INITIATED", eOPC_TX_ON_INITIATED);
    countState("TX_ON_IN_PROGRESS", eOPC_TX_ON_IN_PROGRESS);
    countState("TX_ON_RAMPING", eOPC_TX_ON_RAMPING);
    countState("TX_OFF_INITIATED", eOPC_TX_OFF_INITIATED);
    countState("TX_OFF_IN_PROGRESS", eOPC_TX_OFF_IN_PROGRESS);
    countTrace();
}
} // namespace

int main()
{
    try {
        countAll();
        return 0;
    }
    catch (const std::exception& exception) {
        std::cerr << "step_instructions: " << exception.what() << '\n';
        return 1;
    }
}
