#include "benchmarks/test_interface/load/LoadRun.h"

#include "benchmarks/test_interface/load/ProcessTime.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <stdexcept>

namespace
{
using Clock = std::chrono::steady_clock;
constexpr int POLL_MS = 100;

Clock::duration durationOf(double seconds)
{
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

/** A connection and when its request went out. */
struct Client
{
    explicit Client(const LoadTarget& target) : connection(target) {}

    void send()
    {
        begin = Clock::now();
        connection.sendRequest();
    }

    LoadConnection connection;
    Clock::time_point begin;
    std::uint64_t nAnswers = 0;
};

class Load
{
public:
    Load(const LoadTarget& target, const LoadSettings& settings) : m_settings(settings)
    {
        for (unsigned int n = 0; n < settings.nConnections; ++n) {
            m_clients.push_back(std::make_unique<Client>(target));
            m_polled.push_back({m_clients.back()->connection.socket(), POLLIN, 0});
            m_clients.back()->send();
        }
    }

    LoadResult run()
    {
        serveUntil(Clock::now() + durationOf(m_settings.warmUpSeconds));
        m_result.latenciesNs.clear();
        for (const auto& pClient : m_clients) {
            pClient->nAnswers = 0;
        }
        const double serverBefore = processorSecondsOf(m_settings.server);
        const double ownBefore = ownProcessorSeconds();
        const Clock::time_point begin = Clock::now();
        serveUntil(begin + durationOf(m_settings.seconds));
        m_result.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        m_result.ownProcessorSeconds = ownProcessorSeconds() - ownBefore;
        m_result.serverProcessorSeconds = processorSecondsOf(m_settings.server) - serverBefore;
        conclude();
        return std::move(m_result);
    }

private:
    void serveUntil(Clock::time_point end)
    {
        while (Clock::now() < end) {
            if (poll(m_polled.data(), m_polled.size(), POLL_MS) <= 0) {
                continue;
            }
            for (std::size_t n = 0; n < m_polled.size(); ++n) {
                if (m_polled[n].revents != 0) {
                    serve(*m_clients[n]);
                }
            }
        }
    }

    void serve(Client& client)
    {
        if (client.connection.receive()) {
            m_result.latenciesNs.push_back(
                std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - client.begin).count());
            ++client.nAnswers;
            client.send();
        }
    }

    void conclude()
    {
        std::sort(m_result.latenciesNs.begin(), m_result.latenciesNs.end());
        for (const auto& pClient : m_clients) {
            m_result.nStarved += pClient->nAnswers == 0 ? 1U : 0U;
            m_result.nBodyBytes = std::max(m_result.nBodyBytes, pClient->connection.bodyBytes());
        }
        if (m_result.latenciesNs.empty()) {
            throw std::runtime_error("no answer at all");
        }
    }

    LoadSettings m_settings;
    std::vector<std::unique_ptr<Client>> m_clients;
    std::vector<pollfd> m_polled;
    LoadResult m_result;
};
} // namespace

double LoadResult::latencyUs(double portion) const
{
    const double rank = std::ceil(portion * static_cast<double>(latenciesNs.size()));
    const std::size_t nIndex = rank < 1.0 ? 0 : static_cast<std::size_t>(rank) - 1;
    constexpr double MICROSECONDS_PER_NANOSECOND = 1e-3;
    return static_cast<double>(latenciesNs.at(nIndex)) * MICROSECONDS_PER_NANOSECOND;
}

LoadResult runLoad(const LoadTarget& target, const LoadSettings& settings)
{
    return Load(target, settings).run();
}
