/** @file
 * The command that joins the results of a sweep's shards.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/** `sweep-merge` in a program's command tree. */
class SweepMergeCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit SweepMergeCommand(CLI::App& app);
    ~SweepMergeCommand() = default;

    SweepMergeCommand(const SweepMergeCommand&) = delete;
    SweepMergeCommand& operator=(const SweepMergeCommand&) = delete;

    /** @return whether the parsed command line names this command */
    bool parsed() const { return m_pCommand->parsed(); }

    /**
     * Joins the files.
     * @return an EExitCode; failed also when a signal stopped it or when runs are missing that should not be
     * @throws ConfigurationError, std::runtime_error with nothing left behind
     */
    int run() const;

private:
    std::string m_sOutput;
    std::vector<std::string> m_files;
    bool m_bPartial = false;
    CLI::App* m_pCommand;
};
