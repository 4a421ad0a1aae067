#include "Unit/CommandLine/SweepCommand.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/Campaign.h"
#include "Unit/Campaign/ScenarioRunner.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/ProgressBar.h"
#include "Unit/CommandLine/private/FirstSignal.h"
#include "Unit/Process/StopSignals.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

/** What a person asks of a sweep. */
struct SweepCommand::Options
{
    std::string sSweepFile;
    std::string sShard;        /**< "I/N"; empty for all runs */
    unsigned int nJobs = 0;    /**< 0 for as many as there are processors */
    std::string sResultsFile;  /**< empty for a name after the sweep file's */
    bool bRetryFailed = false; /**< make failed runs again */
};

namespace
{
constexpr unsigned int MOST_JOBS = 1024;
constexpr std::uint64_t MOST_SHARDS = 1'000'000;

constexpr const char* SWEEP_EXAMPLES =
    "Examples:\n"
    "  opc sweep examples/sweeps/step-response.toml\n"
    "      makes all runs on all processors; results go to step-response.db in this folder\n"
    "  opc sweep examples/sweeps/step-response.toml --shard 2/4 --jobs 8\n"
    "      makes the second quarter of the runs; results go to step-response-2-of-4.db\n"
    "\n"
    "Stopped at any moment, the same command goes on with the runs that are missing.\n"
    "Exit codes: 0 well, 1 something failed, runs among it, a safety rule was broken or a signal stopped it, 2 a\n"
    "wrong argument or file.";

/** @throws ConfigurationError unless the text is I/N with I from 1 to N */
Shard parseShard(const std::string& sText)
{
    if (sText.empty()) {
        return {};
    }
    Shard shard;
    const char* const pEnd = sText.data() + sText.size();
    const auto index = std::from_chars(sText.data(), pEnd, shard.nIndex);
    const bool bSlash = index.ec == std::errc() && index.ptr != pEnd && *index.ptr == '/';
    const auto count = bSlash ? std::from_chars(index.ptr + 1, pEnd, shard.nCount) : index;
    if (!bSlash || count.ec != std::errc() || count.ptr != pEnd || shard.nIndex == 0 || shard.nIndex > shard.nCount ||
        shard.nCount > MOST_SHARDS)
    {
        throw ConfigurationError(fmt::format("--shard: \"{}\" is not a shard and their number, such as 2/4; the shard "
                                             "is 1 to their number, which is at most {}",
                                             sText, MOST_SHARDS));
    }
    return shard;
}

std::string resultsFileName(const std::string& sSweepFile, const Shard& shard)
{
    const std::string sStem = std::filesystem::path(sSweepFile).stem().string();
    return shard.nCount == 1 ? sStem + ".db" : fmt::format("{}-{}-of-{}.db", sStem, shard.nIndex, shard.nCount);
}

/** Shows a campaign's progress, and stops it at a signal. */
class SweepObserver final : public ICampaignObserver
{
public:
    SweepObserver(const StopSignals& signals, const SweepDefinition& definition, unsigned int nJobs)
        : m_signal(signals), m_definition(definition), m_nJobs(nJobs)
    {}

    void onStart(std::uint64_t nDone, std::uint64_t nTotal) override
    {
        m_bar.emplace(stderr, isatty(STDERR_FILENO) == 1,
                      ProgressBar::Task{"runs", static_cast<double>(nTotal), static_cast<double>(nDone),
                                        m_definition.durationSeconds.value_or(0.0)});
        note(fmt::format("{} runs, {} of them done already, {} at the same time", nTotal, nDone, m_nJobs));
    }

    void onProgress(std::uint64_t nDone) override { m_bar->update(static_cast<double>(nDone)); }

    void onDeath(std::uint64_t nRun, const std::string& sError, const std::string& sLastWords) override
    {
        note(fmt::format("run {}: {}{}{}", nRun, sError, sLastWords.empty() ? "" : "; it wrote:\n", sLastWords));
    }

    bool wantsStop() override { return m_signal.hasCome(); }

    const std::string& signal() const { return m_signal.name(); }

    void eraseBar() { m_bar.reset(); }

private:
    void note(const std::string& sText)
    {
        const std::string sLine = "opc sweep: " + sText;
        if (m_bar) {
            m_bar->note(sLine);
        }
        else {
            fmt::print(stderr, "{}\n", sLine);
        }
    }

    FirstSignal m_signal;
    const SweepDefinition& m_definition;
    unsigned int m_nJobs;
    std::optional<ProgressBar> m_bar;
};

int tell(const CampaignOutcome& outcome, const std::string& sSignal, const CampaignOptions& options)
{
    if (outcome.nDone < outcome.nTotal) {
        fmt::print(stderr, "opc: {}: stopped with {} of {} runs in {}; the same command goes on from there\n", sSignal,
                   outcome.nDone, outcome.nTotal, options.sResultsFile);
        return eEXIT_FAILED;
    }
    fmt::print("{} runs, {} failed, in {}\n", outcome.nTotal, outcome.nFailed, options.sResultsFile);
    if (outcome.nUnsafe > 0) {
        fmt::print(
            stderr,
            "opc: a safety rule was broken in {} of {} runs; column safety_violations of opc sweep-report says in "
            "which, and opc simulate what happened\n",
            outcome.nUnsafe, outcome.nTotal);
    }
    if (outcome.nFailed == 0) {
        return outcome.nUnsafe == 0 ? eEXIT_OK : eEXIT_FAILED;
    }
    fmt::print(stderr,
               "opc: {} of {} runs failed; column error of opc sweep-report says why, and --retry-failed makes them "
               "again\n",
               outcome.nFailed, outcome.nTotal);
    return eEXIT_FAILED;
}
} // namespace

SweepCommand::SweepCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("sweep", "Make many runs of a scenario and keep their measures")),
      m_pOptions(std::make_unique<Options>())
{
    m_pCommand->add_option("SWEEP.toml", m_pOptions->sSweepFile, "The sweep file")->required()->type_name("FILE");
    m_pCommand->add_option("--shard", m_pOptions->sShard, "Make only part I of N parts of the runs")->type_name("I/N");
    m_pCommand->add_option("--jobs", m_pOptions->nJobs, "Runs at the same time; else as many as there are processors")
        ->type_name("N")
        ->check(CLI::Range(1U, MOST_JOBS));
    m_pCommand
        ->add_option("--results", m_pOptions->sResultsFile, "The file for the results, which may have some already")
        ->type_name("FILE");
    m_pCommand->add_flag("--retry-failed", m_pOptions->bRetryFailed, "Make runs again that have failed before");
    m_pCommand->footer(SWEEP_EXAMPLES);
}

SweepCommand::~SweepCommand() = default;

int SweepCommand::run() const
{
    const StopSignals signals;
    CampaignOptions options;
    options.shard = parseShard(m_pOptions->sShard);
    options.nJobs = m_pOptions->nJobs != 0 ? m_pOptions->nJobs : std::max(1U, std::thread::hardware_concurrency());
    options.bRetryFailed = m_pOptions->bRetryFailed;
    options.sResultsFile = m_pOptions->sResultsFile.empty() ? resultsFileName(m_pOptions->sSweepFile, options.shard)
                                                            : m_pOptions->sResultsFile;
    const SweepDefinition definition = loadSweepDefinition(m_pOptions->sSweepFile);
    const ScenarioRunner runner(definition);
    SweepObserver observer(signals, definition, options.nJobs);
    const CampaignOutcome outcome = runCampaign(definition, runner, options, observer);
    observer.eraseBar();
    return tell(outcome, observer.signal(), options);
}
