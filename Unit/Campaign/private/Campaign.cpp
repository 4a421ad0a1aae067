#include "Unit/Campaign/Campaign.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Campaign/private/CampaignIdentity.h"
#include "Unit/Campaign/private/WorkerPool.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace
{
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds COMMIT_AFTER{500}; // of work; a kill loses no more
constexpr int WAIT_MS = 100;

/** Begins a run in a process of its own and ends it, so that what cannot start is found at once. */
void tryFirstRun(const SweepDefinition& definition, const ICampaignRunner& runner, ICampaignObserver& observer)
{
    WorkerPool pool(definition, runner, 1);
    (void)pool.give(0, EWorkerTask::TryStart);
    while (!observer.wantsStop()) {
        for (const WorkerResult& result : pool.wait(WAIT_MS)) {
            if (result.eOutcome == EWorkerOutcome::BadInput) {
                throw ConfigurationError(result.sError);
            }
            if (!result.sError.empty()) {
                observer.onDeath(0, result.sError, result.sLastWords);
                throw std::runtime_error("the first run cannot start: " + result.sError);
            }
            return;
        }
    }
}

/** The runs that are still to be made, and those that were, until they are in the file. */
class RunBook
{
public:
    RunBook(const SweepDefinition& definition, const Shard& shard, ResultsFile& results)
        : m_definition(definition), m_shard(shard), m_results(results), m_finished(results.finishedRuns()),
          m_nNext(shard.nIndex - 1)
    {
        for (std::uint64_t nRun = m_nNext; nRun < m_finished.size(); nRun += shard.nCount) {
            ++m_nTotal;
            m_nDone += m_finished[static_cast<std::size_t>(nRun)] ? 1 : 0;
        }
        m_nFailed = results.failedRuns();
        m_nUnsafe = results.unsafeRuns();
        skipFinished();
    }

    std::uint64_t total() const { return m_nTotal; }
    std::uint64_t done() const { return m_nDone; }
    CampaignOutcome outcome() const { return {m_nTotal, m_nDone, m_nFailed, m_nUnsafe}; }

    bool hasNext() const { return m_nNext < m_finished.size(); }
    std::uint64_t next() const { return m_nNext; }
    void advance()
    {
        m_nNext += m_shard.nCount;
        skipFinished();
    }

    void add(const WorkerResult& result)
    {
        ResultRow row;
        const RunPlan plan = planRun(m_definition, result.nRun);
        row.nNumber = plan.nNumber;
        row.nSeed = plan.nSeed;
        row.values = plan.values;
        row.sError = result.sError;
        row.measures = result.measures;
        m_nFailed += row.failed() ? 1 : 0;
        m_nUnsafe += !row.failed() && row.measures.safetyViolations > 0.0 ? 1 : 0;
        if (m_rows.empty()) {
            m_since = Clock::now();
        }
        m_rows.push_back(std::move(row));
        ++m_nDone;
    }

    void commitWhenDue()
    {
        if (!m_rows.empty() && Clock::now() - m_since >= COMMIT_AFTER) {
            commit();
        }
    }

    void commit()
    {
        m_results.add(m_rows);
        m_rows.clear();
    }

private:
    void skipFinished()
    {
        while (m_nNext < m_finished.size() && m_finished[static_cast<std::size_t>(m_nNext)]) {
            m_nNext += m_shard.nCount;
        }
    }

    const SweepDefinition& m_definition;
    Shard m_shard;
    ResultsFile& m_results;
    std::vector<bool> m_finished;
    std::uint64_t m_nNext;
    std::uint64_t m_nTotal = 0;
    std::uint64_t m_nDone = 0;
    std::uint64_t m_nFailed = 0;
    std::uint64_t m_nUnsafe = 0;
    std::vector<ResultRow> m_rows;
    Clock::time_point m_since;
};

void makeRuns(const SweepDefinition& definition, const ICampaignRunner& runner, unsigned int nJobs, RunBook& book,
              ICampaignObserver& observer)
{
    const std::uint64_t nLeft = book.total() - book.done();
    WorkerPool pool(definition, runner, static_cast<unsigned int>(std::min<std::uint64_t>(nJobs, nLeft)));
    while (!observer.wantsStop() && (book.hasNext() || pool.busy())) {
        while (book.hasNext() && pool.give(book.next(), EWorkerTask::Run)) {
            book.advance();
        }
        for (const WorkerResult& result : pool.wait(WAIT_MS)) {
            if (result.bDied) {
                observer.onDeath(result.nRun, result.sError, result.sLastWords);
            }
            book.add(result);
        }
        book.commitWhenDue();
        observer.onProgress(book.done());
    }
}
} // namespace

CampaignOutcome runCampaign(const SweepDefinition& definition, const ICampaignRunner& runner,
                            const CampaignOptions& options, ICampaignObserver& observer)
{
    const CampaignDescription description = describeCampaign(definition, runner, options.shard, options.sResultsFile);
    tryFirstRun(definition, runner, observer);
    ResultsFile results = ResultsFile::openForRuns(options.sResultsFile, description);
    if (options.bRetryFailed) {
        results.forgetFailedRuns();
    }
    RunBook book(definition, options.shard, results);
    observer.onStart(book.done(), book.total());
    if (book.hasNext()) {
        makeRuns(definition, runner, options.nJobs, book, observer);
        book.commit();
    }
    results.settle();
    return book.outcome();
}
