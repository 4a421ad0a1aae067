/** @file
 * The command that replays a recording.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>

/** What a person asks of a replay. */
struct ReplayOptions
{
    std::string sFile; /**< of the recording */
    std::string sRun = "last";
    std::string sFrom; /**< as parseRunTime() reads it; empty for the first step that is recorded */
    unsigned int nSpeed = 1;
    bool bPaused = false;
    std::optional<std::uint16_t> nPort; /**< of the page */
    std::string sWebRoot;               /**< folder of the live page; empty for the one built in */
    bool bCheck = false;                /**< carry the run out again and compare, in place of showing it */
    bool bJson = false;                 /**< tell what the check came to as JSON */
};

/** `replay` in a program's command tree. */
class RunReplayCommand
{
public:
    /** Adds the command. @param app lives as long as this */
    explicit RunReplayCommand(CLI::App& app);
    ~RunReplayCommand() = default;

    RunReplayCommand(const RunReplayCommand&) = delete;
    RunReplayCommand& operator=(const RunReplayCommand&) = delete;

    /** @return whether the parsed command line names this command */
    bool parsed() const { return m_pCommand->parsed(); }

    /**
     * @return an EExitCode
     * @throws ConfigurationError, std::runtime_error
     */
    int run() const;

private:
    void addPageOptions(CLI::Option* pCheck);

    ReplayOptions m_options;
    CLI::App* m_pCommand;
};
