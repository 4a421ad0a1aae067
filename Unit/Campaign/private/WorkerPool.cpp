#include "Unit/Campaign/private/WorkerPool.h"

#include <poll.h>

#include <algorithm>

WorkerPool::WorkerPool(const SweepDefinition& definition, const ICampaignRunner& runner, unsigned int nWorkers)
    : m_definition(definition), m_runner(runner)
{
    for (unsigned int n = 0; n < nWorkers; ++n) {
        m_workers.push_back(std::make_unique<Worker>(definition, runner));
    }
}

bool WorkerPool::give(std::uint64_t nRun, EWorkerTask eTask)
{
    const auto found =
        std::find_if(m_workers.begin(), m_workers.end(), [](const auto& pWorker) { return !pWorker->busy(); });
    if (found == m_workers.end()) {
        return false;
    }
    while (!(*found)->give(nRun, eTask)) {
        *found = std::make_unique<Worker>(m_definition, m_runner); // it has died while it had nothing to do
    }
    return true;
}

bool WorkerPool::busy() const
{
    return std::any_of(m_workers.begin(), m_workers.end(), [](const auto& pWorker) { return pWorker->busy(); });
}

std::vector<WorkerResult> WorkerPool::wait(int timeoutMs)
{
    std::vector<pollfd> pollers;
    for (const auto& pWorker : m_workers) {
        pollers.push_back({pWorker->messageFd(), POLLIN, 0});
        pollers.push_back({pWorker->errorFd(), POLLIN, 0});
    }
    std::vector<WorkerResult> results;
    if (poll(pollers.data(), pollers.size(), timeoutMs) <= 0) {
        return results;
    }
    for (std::size_t n = 0; n < m_workers.size(); ++n) {
        if ((pollers[2 * n + 1].revents & POLLIN) != 0) {
            m_workers[n]->takeErrors();
        }
        if (pollers[2 * n].revents == 0) {
            continue;
        }
        if (auto result = m_workers[n]->take()) {
            results.push_back(std::move(*result));
        }
        if (m_workers[n]->dead()) {
            m_workers[n] = std::make_unique<Worker>(m_definition, m_runner);
        }
    }
    return results;
}
