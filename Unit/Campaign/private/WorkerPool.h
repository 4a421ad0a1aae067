/** @file
 * As many workers as there are to be, whatever becomes of each.
 */
#pragma once

#include "Unit/Campaign/private/Worker.h"

#include <cstdint>
#include <memory>
#include <vector>

/** The workers of a campaign. */
class WorkerPool
{
public:
    WorkerPool(const SweepDefinition& definition, const ICampaignRunner& runner, unsigned int nWorkers);

    /** @return false when all workers are busy */
    bool give(std::uint64_t nRun, EWorkerTask eTask);

    bool busy() const;

    /** Waits until a run has ended. @return those that have; none when the time passed or a signal came */
    std::vector<WorkerResult> wait(int timeoutMs);

private:
    const SweepDefinition& m_definition;
    const ICampaignRunner& m_runner;
    std::vector<std::unique_ptr<Worker>> m_workers;
};
