/** @file
 * Tells what the safety monitors of a running unit have found.
 */
#pragma once

#include "Unit/Process/UnitProcess.h"

#include <fmt/format.h>

#include <cstdint>
#include <optional>
#include <vector>

/** Writes violations to standard error while the unit runs, in the main thread. */
class SafetyReporter
{
public:
    /** @param process started; must outlive this */
    explicit SafetyReporter(const UnitProcess& process) : m_process(process), m_reported(process.monitors().size()) {}

    /** Writes what has been found since the last time. */
    void report()
    {
        for (std::size_t nMonitor = 0; nMonitor < m_reported.size(); ++nMonitor) {
            const ViolationStore& store = m_process.monitors()[nMonitor]->violations();
            for (const std::size_t nKept = store.kept(); m_reported[nMonitor] < nKept; ++m_reported[nMonitor]) {
                const SafetyViolation& violation = store.at(m_reported[nMonitor]);
                fmt::print(stderr, "opc run: safety: {}\n{}", violationText(violation), violationCalls(violation));
            }
        }
    }

    /** @return how many there have been, those included that are not written one by one; none without monitors */
    std::optional<std::uint64_t> violations() const
    {
        if (m_reported.empty()) {
            return std::nullopt;
        }
        std::uint64_t nViolations = 0;
        for (const auto& pMonitor : m_process.monitors()) {
            nViolations += pMonitor->violations().total();
        }
        return nViolations;
    }

private:
    const UnitProcess& m_process;
    std::vector<std::size_t> m_reported; // of each monitor
};
