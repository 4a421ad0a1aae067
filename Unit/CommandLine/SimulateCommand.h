/** @file
 * The command that runs a scenario in virtual time.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** What a person asks of a run in virtual time. */
struct SimulateOptions
{
    std::string sScenarioFile;
    std::vector<std::string> overrides; /**< texts such as "transmitter.detector_noise_db=0.1" */
    std::string sDriveFile;             /**< empty for the scenario's own */
    std::optional<double> durationSeconds;
    std::optional<std::uint64_t> nSeed;
    std::string sCsvFile; /**< empty for none */
    std::optional<std::uint64_t> nEvery;
    std::optional<double> bucketSeconds;
    std::vector<std::string> plotFiles;
    std::string sHtmlFile; /**< empty for none */
    bool bJson = false;
    bool bQuiet = false;
    int nTraceLevel = 0;
};

/** `simulate` in a program's command tree. */
class SimulateCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit SimulateCommand(CLI::App& app);
    ~SimulateCommand() = default;

    SimulateCommand(const SimulateCommand&) = delete;
    SimulateCommand& operator=(const SimulateCommand&) = delete;

    /** @return whether the parsed command line names this command */
    bool parsed() const { return m_pCommand->parsed(); }

    /**
     * Carries out what was parsed.
     * @return an EExitCode
     * @throws ConfigurationError for bad input, with nothing left behind
     * @throws std::runtime_error when something fails, likewise
     */
    int run() const;

private:
    SimulateOptions m_options;
    CLI::App* m_pCommand;
};
