/** @file
 * The command that reports what a sweep came to.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <string>

/** `sweep-report` in a program's command tree. */
class SweepReportCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit SweepReportCommand(CLI::App& app);

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
    std::string m_sResultsFile;
    std::string m_sCsvFile;
    CLI::App* m_pCommand;
};
