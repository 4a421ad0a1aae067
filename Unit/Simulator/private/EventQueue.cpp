#include "Unit/Simulator/private/EventQueue.h"

#include "Unit/Simulator/private/VirtualTime.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr std::int64_t NEVER = std::numeric_limits<std::int64_t>::max();
}

EventQueue::EventQueue(const std::vector<ScenarioEvent>& events)
{
    for (std::size_t nEvent = 0; nEvent < events.size(); ++nEvent) {
        const ScenarioEvent& event = events[nEvent];
        m_everyNs.push_back(event.everySeconds ? std::max<std::int64_t>(toNs(*event.everySeconds), 1) : 0);
        m_queue.push({toNs(event.atSeconds), nEvent});
    }
    m_nNextNs = m_queue.empty() ? NEVER : m_queue.top().nNs;
}

std::optional<EventQueue::Due> EventQueue::takeDue(std::int64_t nNowNs)
{
    while (isDue(nNowNs)) {
        const Due due = m_queue.top();
        m_queue.pop();
        const std::int64_t nEveryNs = m_everyNs[due.nEvent];
        const std::int64_t nLatestNs = nEveryNs == 0 ? due.nNs : nNowNs - (nNowNs - due.nNs) % nEveryNs;
        if (nLatestNs != due.nNs) {
            m_queue.push({nLatestNs, due.nEvent});
        }
        else if (nEveryNs != 0) {
            m_queue.push({due.nNs + nEveryNs, due.nEvent});
        }
        m_nNextNs = m_queue.empty() ? NEVER : m_queue.top().nNs;
        if (nLatestNs == due.nNs) {
            return due;
        }
    }
    return std::nullopt;
}
