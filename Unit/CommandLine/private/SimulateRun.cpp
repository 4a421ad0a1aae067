#include "Unit/CommandLine/private/SimulateRun.h"

#include "Platform/Conversions.h"
#include "Platform/FileText.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/ProgressBar.h"
#include "Unit/CommandLine/private/OutputFiles.h"
#include "Unit/CommandLine/private/SimulateOutputs.h"
#include "Unit/Process/StopSignals.h"
#include "Unit/Simulator/VirtualRun.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <chrono>
#include <csignal>

namespace
{
constexpr std::uint64_t STEPS_AT_ONCE = 4096; // some milliseconds, between which signals are looked at

std::vector<ScenarioOverride> overridesOf(const SimulateOptions& options)
{
    std::vector<ScenarioOverride> overrides;
    for (const std::string& sText : options.overrides) {
        overrides.push_back(parseOverride(sText));
    }
    if (!options.sDriveFile.empty()) {
        // A text in JSON is one in TOML.
        overrides.push_back(
            {"drive.file",
             nlohmann::json(options.sDriveFile).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)});
    }
    if (options.durationSeconds) {
        overrides.push_back({"duration_s", fmt::format("{}", *options.durationSeconds)});
    }
    if (options.nSeed) {
        overrides.push_back({"seed", fmt::format("{}", *options.nSeed)});
    }
    return overrides;
}

/** Runs to the end, or to a signal. @return the signal's name; empty when the run came to its end */
std::string runToEnd(VirtualRun& run, const Scenario& scenario, const StopSignals& signals, IStepReceiver* pReceiver,
                     bool bShowProgress)
{
    ProgressBar bar(stderr, bShowProgress,
                    {"steps", static_cast<double>(run.totalSteps()), 0.0, scenario.unit.intervalMs / MS_PER_S});
    while (run.proceed(STEPS_AT_ONCE, pReceiver)) {
        bar.update(static_cast<double>(run.stepsDone()));
        std::string sSignal = signals.wait(0);
        if (!sSignal.empty()) {
            return sSignal;
        }
    }
    return {};
}

void printResult(const RunReport& report, const SimulateOptions& options)
{
    for (const std::string& sWarning : report.warnings) {
        fmt::print(stderr, "opc simulate: warning: {}\n", sWarning);
    }
    fmt::print(stderr, "{}{}", violationsText(report), missedText(report));
    if (options.bJson) {
        printOut(reportJson(report));
    }
    else if (!options.bQuiet) {
        printOut(reportText(report));
    }
}
} // namespace

int simulate(const SimulateOptions& options)
{
    const StopSignals signals;
    (void)std::signal(SIGPIPE, SIG_IGN); // of gnuplot, and of a reader of the summary
    RunReport report;
    report.overrides = overridesOf(options);
    const std::string sScenarioText = readFileText(options.sScenarioFile);
    report.scenario = loadScenario(options.sScenarioFile, report.overrides);
    SimulateOutputs outputs(options);
    VirtualRun run(report.scenario, options.nTraceLevel);
    const auto began = std::chrono::steady_clock::now();
    const bool bShowProgress = isatty(STDERR_FILENO) == 1 && options.nTraceLevel == 0;
    const std::string sSignal = runToEnd(run, report.scenario, signals, outputs.receiver(), bShowProgress);
    report.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    if (!sSignal.empty()) {
        fmt::print(stderr, "opc: {}: stopped after {} of {} steps; no output is left\n", sSignal, run.stepsDone(),
                   run.totalSteps());
        return eEXIT_FAILED;
    }
    report.measures = run.measures();
    report.expectations = checkExpectations(report.scenario.expectations, report.measures);
    report.warnings = run.warnings();
    for (std::size_t nViolation = 0; nViolation < run.violations().kept(); ++nViolation) {
        report.violations.push_back(run.violations().at(nViolation));
    }
    outputs.finish(report, sScenarioText);
    printResult(report, options);
    return report.allMet() && report.isSafe() ? eEXIT_OK : eEXIT_FAILED;
}
