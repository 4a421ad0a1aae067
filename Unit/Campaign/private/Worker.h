/** @file
 * A process that makes runs of a campaign.
 */
#pragma once

#include "Unit/Campaign/ICampaignRunner.h"
#include "Unit/Campaign/SweepDefinition.h"
#include "Unit/Campaign/private/WorkerMessages.h"

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

/** What became of a run. */
struct WorkerResult
{
    std::uint64_t nRun = 0;
    EWorkerOutcome eOutcome = EWorkerOutcome::Failed;
    RunMeasures measures;
    std::string sError;     /**< empty when all went well */
    bool bDied = false;     /**< the process did */
    std::string sLastWords; /**< what a process that died had written on its standard error */
};

/** A worker. It ends when this goes, and when the process that made it ends in whatever way. */
class Worker
{
public:
    /**
     * Forks. Call it while the process has one thread only.
     * @throws std::system_error when there can be no more processes
     */
    Worker(const SweepDefinition& definition, const ICampaignRunner& runner);
    ~Worker();

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    int messageFd() const { return m_messageFd; }
    int errorFd() const { return m_errorFd; }
    pid_t process() const { return m_process; }
    bool busy() const { return m_run.has_value(); }

    /** @return false when the process is no more; then the run is not begun */
    bool give(std::uint64_t nRun, EWorkerTask eTask);

    /** Takes what came from it without waiting. @return the run that has ended, well or with the process */
    std::optional<WorkerResult> take();

    /** Takes what it wrote on its standard error, of which the last part is kept. */
    void takeErrors();

    bool dead() const { return m_bDead; }

private:
    [[noreturn]] void serve(const SweepDefinition& definition, const ICampaignRunner& runner, int messageFd,
                            int errorFd, pid_t parent) const;
    std::string end(bool bKill);

    pid_t m_process = -1;
    int m_messageFd = -1;
    int m_errorFd = -1;
    std::optional<std::uint64_t> m_run;
    bool m_bDead = false;
    std::string m_sErrors;
};

/** @return what run nNumber of a sweep puts into its scenario */
std::vector<ScenarioOverride> overridesOf(const SweepDefinition& definition, const std::vector<SweepValue>& values);
