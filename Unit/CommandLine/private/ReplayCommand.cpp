#include "Unit/CommandLine/ReplayCommand.h"

#include "Platform/ConfigurationError.h"
#include "Platform/Conversions.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/ProgressBar.h"
#include "Unit/CommandLine/private/OptionChecks.h"
#include "Unit/CommandLine/private/OutputFiles.h"
#include "Unit/CommandLine/private/RecordedPart.h"
#include "Unit/CommandLine/private/ReplayServer.h"
#include "Unit/CommandLine/private/ReplayText.h"
#include "Unit/Replay/ReplayCheck.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <vector>

namespace
{
constexpr const char* REPLAY_EXAMPLES =
    "Examples:\n"
    "  opc replay unit.db\n"
    "      shows the last run of a recording on the live page\n"
    "  opc replay unit.db --run 3 --from 2026-11-21T08:00Z --speed 10\n"
    "      the third run from a time on, ten times as fast\n"
    "  opc replay unit.db --check\n"
    "      takes the last run again and compares every step with what was recorded\n"
    "\n"
    "Exit codes: 0 well or equal, 1 different or not to be repeated to its end, 2 a wrong argument or file.";

int check(const ReplayOptions& options)
{
    const Recording recording(options.sFile);
    const CheckedRun checked{options.sFile, wantedRun(recording, options.sRun), OPC_VERSION};
    const auto times = recording.times(EResolution::Steps, checked.run.nId);
    ReplayOutcome outcome;
    {
        ProgressBar::Task task;
        task.sUnit = "s of the run";
        task.total = times ? static_cast<double>(times->nLastUs) / US_PER_S : 0.0;
        ProgressBar progress(stderr, isatty(STDERR_FILENO) == 1, task);
        outcome = checkReplay(recording, checked.run, [&progress](std::uint64_t nTimeUs) {
            progress.update(static_cast<double>(nTimeUs) / US_PER_S);
        });
    }
    printOut(options.bJson ? replayJson(checked, outcome) : replayText(checked, outcome));
    return outcome.eResult == EReplayResult::Equal ? eEXIT_OK : eEXIT_FAILED;
}
} // namespace

RunReplayCommand::RunReplayCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("replay", "Show a recorded run on the live page, or take it again and compare"))
{
    m_pCommand->add_option("RECORDING.db", m_options.sFile, "The recording of opc run --record")
        ->required()
        ->type_name("FILE");
    m_pCommand->add_option("--run", m_options.sRun, "Which run of the recording; the last one when left out")
        ->type_name("N|{last}");
    CLI::Option* const pCheck = m_pCommand->add_flag(
        "--check", m_options.bCheck,
        "Show nothing: carry the run out again as fast as it goes and compare every step with the recording");
    m_pCommand->add_flag("--json", m_options.bJson, "Print what the check came to as JSON")->needs(pCheck);
    addPageOptions(pCheck);
    m_pCommand->footer(REPLAY_EXAMPLES);
}

void RunReplayCommand::addPageOptions(CLI::Option* pCheck)
{
    m_pCommand
        ->add_option("--from", m_options.sFrom,
                     "Begin here: seconds since the run began, or a time such as 2026-11-21T15:00:00Z")
        ->type_name("TIME")
        ->excludes(pCheck);
    m_pCommand->add_option("--speed", m_options.nSpeed, "Play it so many times as fast; the page can change it")
        ->type_name("{1,10,100}")
        ->check(oneOf({"1", "10", "100"}))
        ->excludes(pCheck);
    m_pCommand->add_flag("--paused", m_options.bPaused, "Wait until the page lets it play")->excludes(pCheck);
    m_pCommand->add_option("--port", m_options.nPort, "Port of the page, 0 for any that is free; 8080 when left out")
        ->type_name("PORT")
        ->excludes(pCheck);
    m_pCommand
        ->add_option("--web-root", m_options.sWebRoot, "Serve the live page's files from this folder, for work on them")
        ->type_name("FOLDER")
        ->excludes(pCheck);
}

int RunReplayCommand::run() const
{
    (void)std::signal(SIGPIPE, SIG_IGN); // of a reader that has seen enough
    return m_options.bCheck ? check(m_options) : replayOnPage(m_options);
}
