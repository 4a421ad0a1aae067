/** @file
 * The latest calls that were heard.
 */
#pragma once

#include "Unit/SafetyMonitor/SafetyViolation.h"

#include <algorithm>

/** A ring of constant size. One thread. */
class CallRing
{
public:
    void add(const HeardCall& call) noexcept
    {
        m_calls[m_nAdded % SafetyViolation::MOST_CALLS] = call;
        ++m_nAdded;
    }

    /** Writes the calls into a violation, the oldest first. */
    void copyTo(SafetyViolation& violation) const noexcept
    {
        const std::size_t nCalls = std::min(m_nAdded, SafetyViolation::MOST_CALLS);
        for (std::size_t nCall = 0; nCall < nCalls; ++nCall) {
            violation.calls[nCall] = m_calls[(m_nAdded - nCalls + nCall) % SafetyViolation::MOST_CALLS];
        }
        violation.nCalls = nCalls;
    }

private:
    // A power of two, so that the count may wrap.
    static_assert((SafetyViolation::MOST_CALLS & (SafetyViolation::MOST_CALLS - 1)) == 0);

    std::array<HeardCall, SafetyViolation::MOST_CALLS> m_calls{};
    std::size_t m_nAdded = 0;
};
