/** @file
 * What a step of a run in virtual time costs, module and all.
 */
#include "Unit/Simulator/VirtualRun.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace
{
constexpr double YEAR_SECONDS = 365.25 * 86400.0;
constexpr double STEPS_PER_YEAR = YEAR_SECONDS / 0.006;
constexpr std::uint64_t WARM_UP_STEPS = 10000;
constexpr std::uint64_t BLOCK = 10000;

ModuleConfiguration builtModule(const std::string& sName, EModuleScope eScope = EModuleScope::Channel)
{
    return {sName, OPC_LIBRARY_FOLDER "/lib" + sName + ".so", eScope, 0};
}

Scenario scenarioOff()
{
    Scenario scenario;
    scenario.sPath = "benchmark";
    scenario.durationSeconds = 20.0 * YEAR_SECONDS;
    scenario.unit.sPath = "benchmark";
    scenario.unit.modules = {builtModule("TemperatureHandler", EModuleScope::Unit), builtModule("FrequencyHandler"),
                             builtModule("OutputPowerHandler"), builtModule("OutputPowerController")};
    scenario.unit.channels.emplace_back();
    return scenario;
}

Scenario scenarioOn()
{
    Scenario scenario = scenarioOff();
    scenario.events.emplace_back().on = true;
    return scenario;
}

/** A drive of a row a minute that repeats every day; removed when this goes. */
class DriveFile
{
public:
    DriveFile() : m_sPath("/tmp/opc-virtual-time-" + std::to_string(getpid()) + ".csv")
    {
        std::ofstream file(m_sPath);
        file << "time_s,requested_power_dBm,temperature_C\n";
        for (int nMinute = 0; nMinute <= 1440; ++nMinute) {
            file << nMinute * 60 << ',' << (nMinute * 7 % 31) - 5 << ',' << 20.0 + (nMinute % 100) * 0.1 << '\n';
        }
    }
    ~DriveFile() { (void)std::remove(m_sPath.c_str()); }
    DriveFile(const DriveFile&) = delete;
    DriveFile& operator=(const DriveFile&) = delete;

    const std::string& path() const { return m_sPath; }

private:
    std::string m_sPath;
};

/** Takes what a receiver is given. */
class Sink final : public IStepReceiver
{
public:
    void onStep(const VirtualStep& step) override { benchmark::DoNotOptimize(step.outputPowerDbm); }
};

void run(benchmark::State& state, VirtualRun& run, IStepReceiver* pReceiver = nullptr)
{
    run.proceed(WARM_UP_STEPS, nullptr);
    for ([[maybe_unused]] const auto _ : state) {
        run.proceed(BLOCK, pReceiver);
    }
    const auto nSteps = static_cast<double>(state.iterations()) * static_cast<double>(BLOCK);
    const auto inverseRate = benchmark::Counter::kIsRate | benchmark::Counter::kInvert;
    state.counters["per_step"] = benchmark::Counter(nSteps, inverseRate);
    state.counters["hours_per_year"] = benchmark::Counter(nSteps * 3600.0 / STEPS_PER_YEAR, inverseRate);
    state.counters["steps_per_s"] = benchmark::Counter(nSteps, benchmark::Counter::kIsRate);
}

void off(benchmark::State& state)
{
    VirtualRun virtualRun(scenarioOff());
    run(state, virtualRun);
}

void closedLoop(benchmark::State& state)
{
    VirtualRun virtualRun(scenarioOn());
    run(state, virtualRun);
}

void closedLoopWithReceiver(benchmark::State& state)
{
    VirtualRun virtualRun(scenarioOn());
    Sink sink;
    run(state, virtualRun, &sink);
}

void closedLoopWithDrive(benchmark::State& state)
{
    const DriveFile file;
    Scenario scenario = scenarioOn();
    scenario.drive.sFile = file.path();
    scenario.drive.interpolation = {EInterpolation::Linear, EInterpolation::Linear, EInterpolation::Held};
    scenario.drive.bRepeat = true;
    VirtualRun virtualRun(scenario);
    run(state, virtualRun);
}

BENCHMARK(off)->Unit(benchmark::kMillisecond);
BENCHMARK(closedLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(closedLoopWithReceiver)->Unit(benchmark::kMillisecond);
BENCHMARK(closedLoopWithDrive)->Unit(benchmark::kMillisecond);
} // namespace
