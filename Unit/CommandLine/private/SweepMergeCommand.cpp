#include "Unit/CommandLine/SweepMergeCommand.h"

#include "Unit/Campaign/ResultsMerge.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/ProgressBar.h"
#include "Unit/CommandLine/private/FirstSignal.h"
#include "Unit/Process/StopSignals.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <optional>

namespace
{
constexpr std::size_t MOST_RANGES = 10;
constexpr std::size_t MOST_COMMANDS = 10;

constexpr const char* SWEEP_MERGE_EXAMPLES =
    "Examples:\n"
    "  opc sweep-merge step-response.db step-response-1-of-2.db step-response-2-of-2.db\n"
    "      joins two halves to what the undivided sweep would have come to\n"
    "  opc sweep-merge --partial so-far.db step-response-*-of-4.db\n"
    "      joins what is there; opc sweep --results so-far.db makes the rest\n"
    "\n"
    "Exit codes: 0 well, 1 runs are missing and --partial was not given, or something failed, 2 a wrong argument or\n"
    "file.";

/** Shows a merge's progress, and stops it at a signal. */
class MergeObserver final : public IMergeObserver
{
public:
    explicit MergeObserver(const StopSignals& signals) : m_signal(signals) {}

    void onProgress(std::uint64_t nDone, std::uint64_t nTotal) override
    {
        if (!m_bar) {
            m_bar.emplace(stderr, isatty(STDERR_FILENO) == 1,
                          ProgressBar::Task{"runs", static_cast<double>(nTotal), 0.0, 0.0});
        }
        m_bar->update(static_cast<double>(nDone));
    }

    bool wantsStop() override { return m_signal.hasCome(); }

    const std::string& signal() const { return m_signal.name(); }

    void eraseBar() { m_bar.reset(); }

private:
    FirstSignal m_signal;
    std::optional<ProgressBar> m_bar;
};

void tellMissing(const MergeOutcome& outcome, const std::string& sOutput)
{
    fmt::print("missing {} runs: {}\n", outcome.finished.size() - outcome.nDone,
               missingRunsText(outcome.finished, MOST_RANGES));
    const std::vector<std::string> commands = missingRunsCommands(outcome, sOutput, MOST_COMMANDS + 1);
    for (std::size_t n = 0; n < commands.size(); ++n) {
        fmt::print("  {}\n", n < MOST_COMMANDS ? commands[n] : "and further shards");
    }
}
} // namespace

SweepMergeCommand::SweepMergeCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("sweep-merge", "Join the results of a sweep's shards"))
{
    m_pCommand->add_option("OUT.db", m_sOutput, "The results file to make, which must not exist")
        ->required()
        ->type_name("FILE");
    m_pCommand->add_option("RESULTS.db", m_files, "Results files of one campaign, which are only read")
        ->required()
        ->type_name("FILE");
    m_pCommand->add_flag("--partial", m_bPartial, "Make it also when runs are missing");
    m_pCommand->footer(SWEEP_MERGE_EXAMPLES);
}

int SweepMergeCommand::run() const
{
    const StopSignals signals;
    MergeObserver observer(signals);
    const MergeOutcome outcome = mergeResults({m_files, m_sOutput, m_bPartial}, observer);
    observer.eraseBar();
    if (outcome.bStopped) {
        fmt::print(stderr, "opc: {}: stopped; {} was not made\n", observer.signal(), m_sOutput);
        return eEXIT_FAILED;
    }
    const std::uint64_t nTotal = outcome.finished.size();
    fmt::print("{} of {} runs, {} failed, from {} file{}{}\n", outcome.nDone, nTotal, outcome.nFailed,
               outcome.files.size(), outcome.files.size() == 1 ? "" : "s", outcome.bWritten ? ", in " + m_sOutput : "");
    if (outcome.nDone < nTotal) {
        tellMissing(outcome, m_sOutput);
    }
    if (!outcome.bWritten) {
        (void)std::fflush(stdout);
        fmt::print(stderr,
                   "opc: {} was not made: {} of {} runs are missing; make them, or join what there is with --partial\n",
                   m_sOutput, nTotal - outcome.nDone, nTotal);
        return eEXIT_FAILED;
    }
    return eEXIT_OK;
}
