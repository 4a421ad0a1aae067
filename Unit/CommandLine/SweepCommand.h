/** @file
 * The commands that make many runs of a scenario and report of them.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <memory>

/** `sweep` in a program's command tree. */
class SweepCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit SweepCommand(CLI::App& app);
    ~SweepCommand();

    SweepCommand(const SweepCommand&) = delete;
    SweepCommand& operator=(const SweepCommand&) = delete;

    /** @return whether the parsed command line names this command */
    bool parsed() const { return m_pCommand->parsed(); }

    /**
     * Makes the runs that the results file does not have yet. Call it while the process has one thread only.
     * @return an EExitCode; failed also when a signal stopped it or when runs failed
     * @throws ConfigurationError for bad input, before the first run
     * @throws std::runtime_error when results cannot be written; those that were stay
     */
    int run() const;

private:
    struct Options;
    CLI::App* m_pCommand;
    std::unique_ptr<Options> m_pOptions;
};
