/** @file
 * Which event of a scenario is next.
 */
#pragma once

#include "Unit/Simulator/Scenario.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <queue>
#include <vector>

/** Hands out events in the order of their times, those of one time in the scenario's order. */
class EventQueue
{
public:
    /** An event and the time that it is due at. */
    struct Due
    {
        std::int64_t nNs;
        std::size_t nEvent;
    };

    /** @param events must outlive the queue */
    explicit EventQueue(const std::vector<ScenarioEvent>& events);

    /** @return whether an event is due; costs next to nothing */
    bool isDue(std::int64_t nNowNs) const { return nNowNs >= m_nNextNs; }

    /**
     * Takes the next event that is due. One that repeats faster than it is asked for comes once, with its latest time.
     * @param nNowNs never goes back
     */
    std::optional<Due> takeDue(std::int64_t nNowNs);

private:
    struct Later
    {
        bool operator()(const Due& left, const Due& right) const
        {
            return left.nNs != right.nNs ? left.nNs > right.nNs : left.nEvent > right.nEvent;
        }
    };

    std::vector<std::int64_t> m_everyNs; // 0 for an event that happens once
    std::priority_queue<Due, std::vector<Due>, Later> m_queue;
    std::int64_t m_nNextNs;
};
