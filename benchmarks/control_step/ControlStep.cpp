/** @file
 * How long a control step takes, beside the bare calls that it makes.
 */
#include "Platform/Trace/TraceControl.h"
#include "benchmarks/control_step/rig/StepRig.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <ctime>
#include <exception>
#include <iostream>

namespace
{
const auto INVERSE_RATE = benchmark::Counter::kIsRate | benchmark::Counter::kInvert;

void countSteps(benchmark::State& state, int nStepsPerIteration)
{
    state.counters["per_step"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * nStepsPerIteration, INVERSE_RATE);
}

/** Which of the three ways of a shape is measured. */
enum class EWay
{
    Ours,
    Floor,
    StoringFloor
};

/** Logs that record are restarted every STEPS_PER_LOG steps, which is in the time. */
void closedLoop(benchmark::State& state, ETables eTables, const StepShape& shape, EWay eWay)
{
    SteppingRig rig(eTables, shape);
    const IOutputPowerControllerCStruct& table = eWay == EWay::Ours    ? rig.table()
                                                 : eWay == EWay::Floor ? rig.floor().table()
                                                                       : rig.storingFloor().table();
    const bool bLog = shape.bTransientLog || shape.bOpcLog;
    for ([[maybe_unused]] const auto _ : state) {
        if (bLog) {
            rig.restartLogs();
        }
        rig.run(table, STEPS_PER_LOG);
    }
    countSteps(state, STEPS_PER_LOG);
}

void registerClosedLoop(const std::string& sCase, ETables eTables, const StepShape& shape)
{
    const auto add = [&](const std::string& sWay, EWay eWay) {
        benchmark::RegisterBenchmark((sCase + sWay).c_str(), closedLoop, eTables, shape, eWay);
    };
    add("", EWay::Ours);
    add(", floor", EWay::Floor);
    if (shape.bTransientLog || shape.bOpcLog) {
        add(", storing floor", EWay::StoringFloor);
    }
}

double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    constexpr double SECONDS_PER_NANOSECOND = 1e-9;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * SECONDS_PER_NANOSECOND;
}

/** Takes many controllers through the states together, and times those steps that are in one of them. */
void stateOfMany(benchmark::State& state, EOPCState eTimed)
{
    constexpr unsigned int CONTROLLERS = 256;
    StepRig rig(ETables::Quiet, CONTROLLERS);
    std::int64_t nSteps = 0;
    for ([[maybe_unused]] const auto _ : state) {
        double seconds = 0.0;
        nSteps += rig.goRound(eTimed, [&seconds](auto step) {
            const double begin = threadSeconds();
            step();
            seconds += threadSeconds() - begin;
        });
        state.SetIterationTime(seconds);
    }
    nSteps *= CONTROLLERS;
    state.counters["per_step"] = benchmark::Counter(static_cast<double>(nSteps), INVERSE_RATE);
}

/** Each of the controllers takes a step in turn, in the closed loop. */
void manyControllers(benchmark::State& state)
{
    const auto nControllers = static_cast<unsigned int>(state.range(0));
    const struct mallinfo2 before = mallinfo2();
    StepRig rig(ETables::Quiet, nControllers);
    const double allocated = static_cast<double>(mallinfo2().uordblks) - static_cast<double>(before.uordblks);
    rig.switchOn();
    regulateEach(rig.tables(), MEASURED_POWER + FAR_OFF);
    int nFarOff = FAR_OFF;
    for ([[maybe_unused]] const auto _ : state) {
        regulateEach(rig.tables(), MEASURED_POWER + nFarOff);
        nFarOff = -nFarOff;
    }
    countSteps(state, static_cast<int>(nControllers));
    state.counters["allocated_per_channel"] = allocated / nControllers;
}

/** The same calls by the floor, one for each controller. */
void manyFloors(benchmark::State& state)
{
    const auto nFloors = static_cast<std::size_t>(state.range(0));
    Surroundings::setTables(ETables::Quiet);
    std::vector<std::unique_ptr<StepFloor>> floors;
    std::vector<IOutputPowerControllerCStruct> copies(nFloors);
    std::vector<IOutputPowerControllerCStruct*> tables;
    for (std::size_t n = 0; n < nFloors; ++n) {
        floors.push_back(std::make_unique<StepFloor>(
            StepFloorTargets{&Surroundings::handler(), Surroundings::tables(), nullptr, nullptr, nullptr}, StepShape{},
            false));
        copies[n] = floors.back()->table();
        tables.push_back(&copies[n]);
    }
    for ([[maybe_unused]] const auto _ : state) {
        regulateEach(tables, MEASURED_POWER);
    }
    countSteps(state, static_cast<int>(nFloors));
}

/** Lines of a controller, each with the call that makes it write one; what is enabled goes nowhere. */
void traceLine(benchmark::State& state, int nLevel)
{
    const StepRig rig(ETables::Quiet);
    TraceControl::setLevel("RQX.OPC", nLevel);
    for ([[maybe_unused]] const auto _ : state) {
        writeTraceLines(rig.table(), STEPS_PER_LOG);
    }
    countSteps(state, STEPS_PER_LOG);
}

void registerAll()
{
    StepShape transient;
    transient.bTransientLog = true;
    StepShape opc;
    opc.bOpcLog = true;
    StepShape both = transient;
    both.bOpcLog = true;
    const std::vector<std::pair<std::string, StepShape>> shapes = {
        {"no log", StepShape{}}, {"transient log", transient}, {"OPC log", opc}, {"both logs", both}};
    for (const std::size_t nObservers : {std::size_t{0}, Surroundings::MAX_OBSERVERS}) {
        for (auto [sLogs, shape] : shapes) {
            shape.nObservers = nObservers;
            registerClosedLoop("closed loop, " + sLogs + (nObservers != 0 ? ", 4 observers" : ""), ETables::Quiet,
                               shape);
        }
    }
    registerClosedLoop("closed loop, no log, the unit's tables", ETables::OfTheUnit, StepShape{});
    registerClosedLoop("closed loop, both logs, the unit's tables", ETables::OfTheUnit, both);
    const std::vector<std::pair<const char*, EOPCState>> states = {{"TX_OFF", eOPC_TX_OFF},
                                                                   {"TX_ON_INITIATED", eOPC_TX_ON_INITIATED},
                                                                   {"TX_ON_IN_PROGRESS", eOPC_TX_ON_IN_PROGRESS},
                                                                   {"TX_ON_RAMPING", eOPC_TX_ON_RAMPING},
                                                                   {"TX_OFF_INITIATED", eOPC_TX_OFF_INITIATED},
                                                                   {"TX_OFF_IN_PROGRESS", eOPC_TX_OFF_IN_PROGRESS}};
    for (const auto& [pName, eState] : states) {
        benchmark::RegisterBenchmark(pName, stateOfMany, eState)->UseManualTime();
    }
    constexpr int ENABLED = 5;
    benchmark::RegisterBenchmark("trace line, disabled", traceLine, 0);
    benchmark::RegisterBenchmark("trace line, discarded", traceLine, ENABLED);
    constexpr int MOST_CONTROLLERS = 4096;
    benchmark::RegisterBenchmark("controllers", manyControllers)->RangeMultiplier(4)->Range(1, MOST_CONTROLLERS);
    benchmark::RegisterBenchmark("controllers, floor", manyFloors)->RangeMultiplier(4)->Range(1, MOST_CONTROLLERS);
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    try {
        benchmark::Initialize(&nArguments, ppArguments);
        if (benchmark::ReportUnrecognizedArguments(nArguments, ppArguments)) {
            return 2;
        }
        registerAll();
        benchmark::RunSpecifiedBenchmarks();
        benchmark::Shutdown();
        return 0;
    }
    catch (const std::exception& exception) {
        std::cerr << "control_step: " << exception.what() << '\n';
        return 1;
    }
}
