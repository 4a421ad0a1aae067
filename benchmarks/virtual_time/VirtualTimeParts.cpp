/** @file
 * What the simulated transmitter's part of a step costs.
 */
#include "Simulation/Scenario/RunMeter.h"
#include "Simulation/Transmitter/Transmitter.h"

#include <benchmark/benchmark.h>

namespace
{
constexpr double INTERVAL_SECONDS = 0.006;

Transmitter radiating()
{
    Transmitter transmitter;
    transmitter.setRadiating(true);
    transmitter.setControlPowerDbm(10.0);
    return transmitter;
}

void detectorReading(benchmark::State& state)
{
    Transmitter transmitter = radiating();
    for ([[maybe_unused]] const auto _ : state) {
        benchmark::DoNotOptimize(transmitter.readDetectorDbm());
    }
}

void advance(benchmark::State& state)
{
    Transmitter transmitter = radiating();
    for ([[maybe_unused]] const auto _ : state) {
        transmitter.advance(INTERVAL_SECONDS);
        benchmark::DoNotOptimize(transmitter);
    }
}

void controlPower(benchmark::State& state)
{
    Transmitter transmitter = radiating();
    double powerDbm = 10.0;
    for ([[maybe_unused]] const auto _ : state) {
        powerDbm = 20.01 - powerDbm;
        transmitter.setControlPowerDbm(powerDbm);
        benchmark::DoNotOptimize(transmitter);
    }
}

void outputPower(benchmark::State& state)
{
    Transmitter transmitter = radiating();
    for ([[maybe_unused]] const auto _ : state) {
        transmitter.advance(INTERVAL_SECONDS);
        benchmark::DoNotOptimize(transmitter.outputPowerDbm());
    }
}

void meter(benchmark::State& state)
{
    RunMeter runMeter({}, 6000);
    MeasuredStep step;
    step.eStateBefore = eOPC_TX_ON;
    step.eState = eOPC_TX_ON;
    step.nLowerClamp = -1000;
    step.nUpperClamp = 3000;
    step.highestAllowedDbm = 30.0;
    for ([[maybe_unused]] const auto _ : state) {
        step.nTimeUs += 6000;
        step.nPctrl = static_cast<std::int32_t>(step.nTimeUs / 6000 % 7);
        step.outputPowerDbm = 0.01 * step.nPctrl;
        runMeter.add(step);
    }
    benchmark::DoNotOptimize(runMeter.measures());
}

BENCHMARK(meter);
BENCHMARK(detectorReading);
BENCHMARK(advance);
BENCHMARK(controlPower);
BENCHMARK(outputPower);
} // namespace

BENCHMARK_MAIN();
