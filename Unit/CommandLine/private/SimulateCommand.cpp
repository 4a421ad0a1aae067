#include "Unit/CommandLine/SimulateCommand.h"

#include "Unit/CommandLine/private/OptionChecks.h"
#include "Unit/CommandLine/private/OutputFiles.h"
#include "Unit/CommandLine/private/SimulateRun.h"
#include "Unit/Configuration/ValueRanges.h"

#include <fmt/format.h>

namespace
{
constexpr double LONGEST_SECONDS = 1e9;
constexpr double SHORTEST_BUCKET_SECONDS = 0.001;

constexpr const char* SIMULATE_EXAMPLES =
    "Examples:\n"
    "  opc simulate examples/scenarios/cold-start.toml\n"
    "      runs a scenario and prints its measures\n"
    "  opc simulate examples/scenarios/cold-start.toml --plot run.svg --html run.html\n"
    "      draws the run, and makes a page of it\n"
    "  opc simulate examples/scenarios/cold-start.toml --set transmitter.detector_noise_db=0.1 --json\n"
    "      the same with a noisier detector, for programs\n"
    "\n"
    "Exit codes: 0 well, 1 something failed, a safety rule was broken or a measure is not as the scenario expects, 2 "
    "a\n"
    "wrong argument or file.";

void addInputs(CLI::App& command, SimulateOptions& options)
{
    command.add_option("SCENARIO", options.sScenarioFile, "The scenario file")->required()->type_name("FILE");
    command
        .add_option("--set", options.overrides,
                    "Replace a value of the scenario, such as transmitter.detector_noise_db=0.1; repeatable")
        ->type_name("PATH=VALUE")
        ->allow_extra_args(false);
    command.add_option("--drive", options.sDriveFile, "Follow this recorded drive instead of the scenario's")
        ->type_name("FILE");
    command.add_option("--duration", options.durationSeconds, "Simulate so many seconds instead of the scenario's")
        ->type_name("SECONDS");
    command.add_option("--seed", options.nSeed, "Seed of everything random instead of the scenario's")->type_name("N");
}

void addOutputs(CLI::App& command, SimulateOptions& options)
{
    CLI::Option* pCsv =
        command.add_option("--csv", options.sCsvFile, "Record the steps in this file")->type_name("FILE");
    CLI::Option* pEvery = command.add_option("--every", options.nEvery, "Record one step of so many")
                              ->type_name("N")
                              ->check(numberRange(1.0, true, LONGEST_SECONDS))
                              ->needs(pCsv);
    command
        .add_option("--bucket", options.bucketSeconds,
                    "Record minimum, mean and maximum over so many seconds instead of steps")
        ->type_name("SECONDS")
        ->check(numberRange(SHORTEST_BUCKET_SECONDS, true, LONGEST_SECONDS))
        ->needs(pCsv)
        ->excludes(pEvery);
    command.add_option("--plot", options.plotFiles, "Draw the run, as .svg or .png; repeatable")
        ->type_name("FILE")
        ->check(pictureFile())
        ->allow_extra_args(false);
    command.add_option("--html", options.sHtmlFile, "Make a page of the run that needs no other file")
        ->type_name("FILE");
    CLI::Option* pJson = command.add_flag("--json", options.bJson, "Print the result as JSON");
    command.add_flag("--quiet", options.bQuiet, "Print no summary")->excludes(pJson);
    command
        .add_option("--trace", options.nTraceLevel, "Level of the modules' trace lines on standard error, 0 for none")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, MAX_TRACE_LEVEL));
}
} // namespace

SimulateCommand::SimulateCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("simulate", "Run a scenario in virtual time and measure it"))
{
    addInputs(*m_pCommand, m_options);
    addOutputs(*m_pCommand, m_options);
    m_pCommand->footer(SIMULATE_EXAMPLES);
}

int SimulateCommand::run() const
{
    return simulate(m_options);
}
