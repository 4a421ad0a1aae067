#include "Unit/CommandLine/CommandLine.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Client/ControlCommand.h"
#include "Unit/CommandLine/Completion.h"
#include "Unit/CommandLine/ExportCommand.h"
#include "Unit/CommandLine/FitCommand.h"
#include "Unit/CommandLine/ReplayCommand.h"
#include "Unit/CommandLine/RunCommand.h"
#include "Unit/CommandLine/SimulateCommand.h"
#include "Unit/CommandLine/SweepCommand.h"
#include "Unit/CommandLine/SweepMergeCommand.h"
#include "Unit/CommandLine/SweepReportCommand.h"
#include "Unit/CommandLine/private/OptionChecks.h"
#include "Unit/Process/Installation.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
constexpr const char* DEFAULT_UNIT_FILE = "unit.toml";
constexpr double LONGEST_SECONDS = 1e9;
constexpr double FASTEST = 10000.0;

constexpr const char* PROGRAM_EXAMPLES =
    "Examples:\n"
    "  opc run examples/unit.toml\n"
    "      runs the unit until Ctrl-C, with a status line per channel\n"
    "  opc run examples/unit.toml --duration 10 --csv run.csv\n"
    "      records ten seconds, a row per step and channel\n"
    "  opc run examples/unit.toml --channels 1 --speed 20 --start 30\n"
    "      one channel, the profile from its 30th second on at 20 times its speed\n"
    "\n"
    "Exit codes: 0 well, 1 something failed, 2 a wrong argument or file, 3 (ctl) no unit "
    "answered.";

void addRun(CLI::App& app, RunOptions& options)
{
    CLI::App* pRun = app.add_subcommand("run", "Run a unit in real time until its time is up, SIGINT or SIGTERM");
    pRun->add_option("unit.toml", options.sUnitFile,
                     "The unit file; without it, unit.toml in the current folder, else the installed one")
        ->type_name("FILE");
    pRun->add_option("--duration", options.durationSeconds, "Stop after this many seconds")
        ->type_name("SECONDS")
        ->check(numberRange(0.0, false, LONGEST_SECONDS));
    pRun->add_option("--channels", options.nChannels, "Run only the first N channels of the file")->type_name("N");
    pRun->add_option("--speed", options.speed, "Let the profile and the simulated physics run N times faster")
        ->type_name("N")
        ->check(numberRange(0.0, false, FASTEST));
    pRun->add_option("--start", options.startSeconds, "Begin at this second of the profile")
        ->type_name("SECONDS")
        ->check(numberRange(0.0, true, LONGEST_SECONDS));
    pRun->add_option("--csv", options.sCsvFile, "Record every step of every channel in this file")->type_name("FILE");
    pRun->add_option("--record", options.sRecordFile,
                     "Record the run in this database, also what is set and what fails; else the unit file's")
        ->type_name("FILE");
    pRun->add_option("--port", options.nPort,
                     "Port of the test interface, 0 for any that is free; else the unit file's")
        ->type_name("PORT");
    pRun->add_option("--web-root", options.sWebRoot, "Serve the live page's files from this folder, for work on them")
        ->type_name("FOLDER");
    pRun->add_flag("--safety-monitor", options.bSafetyMonitor,
                   "Judge every call of the controllers by the safety rules; one that is broken is told, and fails");
    pRun->add_flag("!--no-test-interface", options.bTestInterface, "Serve no test interface, and no live page");
    pRun->footer(PROGRAM_EXAMPLES);
}

CLI::App* addCompletion(CLI::App& app)
{
    CLI::App* pCompletion = app.add_subcommand("completion", "Print a script that lets a shell complete this command");
    pCompletion->add_option("SHELL", "Which shell")
        ->required()
        ->type_name("{bash}")
        ->check(CLI::Validator(
            [](const std::string& sText) {
                return sText == "bash" ? std::string() : fmt::format("\"{}\" is not bash", sText);
            },
            ""));
    pCompletion->footer("Examples:\n"
                        "  source <(opc completion bash)\n"
                        "      for this shell\n"
                        "  opc completion bash > ~/.local/share/bash-completion/completions/opc\n"
                        "      for all shells from now on, with the package bash-completion");
    return pCompletion;
}

/** @return the unit file of a run that names none */
std::string defaultUnitFile()
{
    const std::string sInstalled = installedUnitFile();
    for (const std::string& sFile : {std::string(DEFAULT_UNIT_FILE), sInstalled}) {
        if (std::filesystem::exists(sFile)) {
            return sFile;
        }
    }
    throw ConfigurationError(fmt::format("no unit file is named, and there is neither {} in this folder nor {}; name "
                                         "one, such as: opc run examples/unit.toml",
                                         DEFAULT_UNIT_FILE, sInstalled));
}

int carryOutRun(RunOptions& options)
{
    if (options.sUnitFile.empty()) {
        options.sUnitFile = defaultUnitFile();
    }
    return runUnit(options);
}

/** @return the command that the arguments have led to */
const CLI::App& deepestParsed(const CLI::App& app)
{
    const CLI::App* pDeepest = &app;
    while (!pDeepest->get_subcommands().empty()) {
        pDeepest = pDeepest->get_subcommands().back();
    }
    return *pDeepest;
}

std::string fullName(const CLI::App& app)
{
    return app.get_parent() == nullptr ? app.get_name() : fullName(*app.get_parent()) + " " + app.get_name();
}

/** @return the names of a command's subcommands, commas between them; empty for none */
std::string subcommandNames(const CLI::App& app)
{
    std::string sNames;
    for (const CLI::App* pSubcommand : app.get_subcommands([](const CLI::App*) { return true; })) {
        sNames += (sNames.empty() ? "" : ", ") + pSubcommand->get_name();
    }
    return sNames;
}

/** @return what a person has to read about wrong arguments, one line */
std::string usageText(const CLI::App& root, const CLI::ParseError& error)
{
    const CLI::App& command = deepestParsed(root);
    const std::string sNames = subcommandNames(command);
    const std::vector<std::string> extras = root.remaining(true);
    const std::string sText = error.what();
    std::string sReason = sText.substr(0, sText.find('\n'));
    if (!sNames.empty() && !extras.empty() && extras.front().front() != '-') {
        sReason =
            fmt::format("\"{}\" is no command of {}; the commands are {}", extras.front(), fullName(command), sNames);
    }
    return fmt::format("{}; see {} --help", sReason, fullName(command));
}

void refuseMissingCommand(const CLI::App& root)
{
    const CLI::App& command = deepestParsed(root);
    const std::string sNames = subcommandNames(command);
    if (!sNames.empty()) {
        throw ConfigurationError(
            fmt::format("no command of {} is given; the commands are {}; see {} --help, or try: {}", fullName(command),
                        sNames, fullName(command),
                        &command == &root ? "opc run examples/unit.toml"
                                          : fullName(command) + " " + sNames.substr(0, sNames.find(','))));
    }
}

int parseAndCarryOut(int nArguments, const char* const* ppArguments)
{
    CLI::App app("opc - runs the output power control of a radio unit", "opc");
    app.require_subcommand(0, 1);
    app.footer(PROGRAM_EXAMPLES);
    app.set_version_flag("--version", "opc " OPC_VERSION, "Print the version and exit");
    RunOptions options;
    addRun(app, options);
    const ControlCommand control(app);
    const FitCommand fit(app);
    const SimulateCommand simulation(app);
    const SweepCommand sweep(app);
    const SweepMergeCommand sweepMerge(app);
    const SweepReportCommand sweepReport(app);
    const ExportCommand exporting(app);
    const RunReplayCommand replay(app);
    const CLI::App* pCompletion = addCompletion(app);
    try {
        app.parse(nArguments, ppArguments);
        refuseMissingCommand(app);
        if (control.parsed()) {
            return control.run();
        }
    }
    catch (const CLI::Success& success) { // --help, --version
        return app.exit(success);
    }
    catch (const CLI::ParseError& error) {
        throw ConfigurationError(usageText(app, error));
    }
    if (fit.parsed()) {
        return fit.run();
    }
    if (sweep.parsed()) {
        return sweep.run();
    }
    if (sweepMerge.parsed()) {
        return sweepMerge.run();
    }
    if (sweepReport.parsed()) {
        return sweepReport.run();
    }
    if (simulation.parsed()) {
        return simulation.run();
    }
    if (exporting.parsed()) {
        return exporting.run();
    }
    if (replay.parsed()) {
        return replay.run();
    }
    if (pCompletion->parsed()) {
        fmt::print("{}", bashCompletion(app));
        return eEXIT_OK;
    }
    return carryOutRun(options);
}
} // namespace

int runCommandLine(int nArguments, const char* const* ppArguments)
{
    try {
        return parseAndCarryOut(nArguments, ppArguments);
    }
    catch (const ConfigurationError& error) {
        fmt::print(stderr, "opc: {}\n", error.what());
        return eEXIT_BAD_INPUT;
    }
    catch (const std::exception& error) {
        fmt::print(stderr, "opc: {}\n", error.what());
        return eEXIT_FAILED;
    }
}
