/** @file
 * The signal that ends a long command.
 */
#pragma once

#include "Unit/Process/StopSignals.h"

#include <string>

/** Keeps the first stop signal that came. Use it from one thread. */
class FirstSignal
{
public:
    /** @param signals must outlive the object */
    explicit FirstSignal(const StopSignals& signals) : m_signals(signals) {}

    /** Looks for a signal without waiting. @return whether one has come, now or earlier */
    bool hasCome()
    {
        if (m_sName.empty()) {
            m_sName = m_signals.wait(0);
        }
        return !m_sName.empty();
    }

    /** @return its name, such as "SIGTERM"; empty before it came */
    const std::string& name() const { return m_sName; }

private:
    const StopSignals& m_signals;
    std::string m_sName;
};
