/** @file
 * The command that reports what a sweep came to.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>
#include <vector>

/** What a person asks of a sweep's results. */
struct SweepReportOptions
{
    std::string sResultsFile;
    std::vector<std::string> measures;
    std::uint64_t nWorst = 3;
    std::vector<std::string> by;
    std::vector<std::string> conditions;
    bool bBest = false;
    std::string sCsvFile; /**< empty for none */
    std::vector<std::string> plotFiles;
    std::string sHtmlFile; /**< empty for none */
    bool bJson = false;
};

/** `sweep-report` in a program's command tree. */
class SweepReportCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit SweepReportCommand(CLI::App& app);
    ~SweepReportCommand() = default;

    SweepReportCommand(const SweepReportCommand&) = delete;
    SweepReportCommand& operator=(const SweepReportCommand&) = delete;

    /** @return whether the parsed command line names this command */
    bool parsed() const { return m_pCommand->parsed(); }

    /**
     * Writes what was asked for.
     * @return an EExitCode
     * @throws ConfigurationError, std::runtime_error with nothing left behind
     */
    int run() const;

private:
    SweepReportOptions m_options;
    CLI::App* m_pCommand;
};
