#include "Unit/Process/FaultSchedule.h"

#include <algorithm>

FaultSchedule::FaultSchedule(const std::vector<FaultConfiguration>& faults)
{
    for (const FaultConfiguration& fault : faults) {
        m_switches.push_back({fault.atSeconds, fault.nChannel, fault.eOperation, fault.fault});
        if (fault.forSeconds) {
            m_switches.push_back({fault.atSeconds + *fault.forSeconds, fault.nChannel, fault.eOperation, {}});
        }
    }
    std::stable_sort(m_switches.begin(), m_switches.end(), [](const FaultSwitch& left, const FaultSwitch& right) {
        return left.atSeconds < right.atSeconds;
    });
}
