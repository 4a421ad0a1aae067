/** @file
 * The command that fits the simulated amplifier to a measured one.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <memory>

/** `fit-amplifier` in a program's command tree. */
class FitCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit FitCommand(CLI::App& app);
    ~FitCommand();

    FitCommand(const FitCommand&) = delete;
    FitCommand& operator=(const FitCommand&) = delete;

    /** @return whether the parsed command line names this command */
    bool parsed() const;

    /**
     * Reads the sweep, fits an amplifier for each frequency and supply, and prints them on standard output.
     * @return the exit code, 0
     * @throws ConfigurationError for a file, a sweep or an argument that will not do, with nothing printed
     */
    int run() const;

private:
    struct Options;
    CLI::App* m_pCommand;
    std::unique_ptr<Options> m_pOptions;
};
