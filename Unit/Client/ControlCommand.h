/** @file
 * The command that talks to a running unit.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <memory>

/** Exit codes of the command besides those of wrong arguments. */
enum EControlExitCode
{
    eCONTROL_DONE = 0,
    eCONTROL_REFUSED = 1,    /**< by the unit, or the answer could not be written or plotted */
    eCONTROL_UNREACHABLE = 3 /**< no unit answered */
};

/** `ctl` and its subcommands in a program's command tree. */
class ControlCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit ControlCommand(CLI::App& app);
    ~ControlCommand();

    ControlCommand(const ControlCommand&) = delete;
    ControlCommand& operator=(const ControlCommand&) = delete;

    /** @return whether the parsed command line names this command */
    bool parsed() const;

    /**
     * Carries out what was parsed: answers on standard output, what went wrong in one line on standard error.
     * @return an EControlExitCode
     * @throws ConfigurationError for arguments that do not go together
     */
    int run() const;

private:
    struct Tree;
    std::unique_ptr<Tree> m_pTree;
};
