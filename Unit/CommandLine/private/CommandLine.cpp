#include "Unit/CommandLine/CommandLine.h"

#include "Platform/ConfigurationError.h"
#include "Unit/CommandLine/RunCommand.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <limits>

namespace
{
constexpr const char* DEFAULT_UNIT_FILE = "unit.toml";
constexpr double LONGEST_SECONDS = 1e9;
constexpr double FASTEST = 10000.0;

constexpr const char* EXAMPLES = "Examples:\n"
                                 "  opc run examples/unit.toml\n"
                                 "      runs the unit until Ctrl-C, with a status line per channel\n"
                                 "  opc run examples/unit.toml --duration 10 --csv run.csv\n"
                                 "      records ten seconds, a row per step and channel\n"
                                 "  opc run examples/unit.toml --channels 1 --speed 20 --start 30\n"
                                 "      one channel, the profile from its 30th second on at 20 times its speed\n"
                                 "\n"
                                 "Exit codes: 0 well, 1 something failed, 2 a wrong argument or file.";

/** Takes a number in a range with open or closed lower end; CLI11's own range lets not-a-number pass. */
CLI::Validator numberRange(double lower, bool bLowerIncluded, double upper)
{
    return CLI::Validator(
        [=](const std::string& sText) {
            double value = std::numeric_limits<double>::quiet_NaN();
            const bool bNumber = CLI::detail::lexical_cast(sText, value);
            const bool bAboveLower = bLowerIncluded ? value >= lower : value > lower;
            return bNumber && bAboveLower && value <= upper
                       ? std::string()
                       : fmt::format("\"{}\" is not a number {} {} and at most {}", sText,
                                     bLowerIncluded ? "of at least" : "greater than", lower, upper);
        },
        "");
}

CLI::App* addRun(CLI::App& app, RunOptions& options)
{
    CLI::App* pRun = app.add_subcommand("run", "Run a unit in real time until its time is up, SIGINT or SIGTERM");
    pRun->add_option("unit.toml", options.sUnitFile, "The unit file; without it, unit.toml in the current folder")
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
    pRun->footer(EXAMPLES);
    return pRun;
}

int carryOutRun(RunOptions& options)
{
    if (options.sUnitFile.empty()) {
        if (!std::filesystem::exists(DEFAULT_UNIT_FILE)) {
            throw ConfigurationError("no unit file is named and there is no unit.toml here; name one, such as: "
                                     "opc run examples/unit.toml");
        }
        options.sUnitFile = DEFAULT_UNIT_FILE;
    }
    return runUnit(options);
}

/** @return the first line of what a person has to read */
std::string firstLine(const std::string& sText)
{
    return sText.substr(0, sText.find('\n'));
}

int parseAndCarryOut(int nArguments, const char* const* ppArguments)
{
    CLI::App app("opc - runs the output power control of a radio unit", "opc");
    app.require_subcommand(0, 1);
    app.footer(EXAMPLES);
    RunOptions options;
    const CLI::App* pRun = addRun(app, options);
    try {
        app.parse(nArguments, ppArguments);
    }
    catch (const CLI::Success& success) { // --help
        return app.exit(success);
    }
    catch (const CLI::ParseError& error) {
        throw ConfigurationError(firstLine(error.what()) + "; see opc --help");
    }
    if (!pRun->parsed()) {
        throw ConfigurationError("no command is given; the command is run, such as: opc run examples/unit.toml");
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
