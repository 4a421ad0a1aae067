/** @file
 * The command that makes CSV of a recording.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/** What a person asks of an export. */
struct ExportOptions
{
    std::string sRecording;
    std::string sRun = "last";
    std::string sFrom;                  /**< empty for the beginning */
    std::string sTo;                    /**< empty for the end */
    std::vector<unsigned int> channels; /**< empty for all */
    std::string sResolution = "auto";
    std::string sFormat = "csv";
    std::string sOutputFile; /**< empty for standard output */
    bool bEvents = false;
};

/** `export` in a program's command tree. */
class ExportCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit ExportCommand(CLI::App& app);
    ~ExportCommand() = default;

    ExportCommand(const ExportCommand&) = delete;
    ExportCommand& operator=(const ExportCommand&) = delete;

    /** @return whether the parsed command line names this command */
    bool parsed() const { return m_pCommand->parsed(); }

    /**
     * Writes what was asked for.
     * @return an EExitCode
     * @throws ConfigurationError, std::runtime_error with no file left behind
     */
    int run() const;

private:
    ExportOptions m_options;
    CLI::App* m_pCommand;
};
