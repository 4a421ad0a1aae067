/** @file
 * A range of a run in parts.
 */
#pragma once

#include "Unit/Process/StepSample.h"
#include "Unit/Recorder/StepSummary.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/** Sums up what a channel did over a range, in a given number of parts. Its memory does not grow with the range. */
class HistoryParts
{
public:
    /** @param nFirstUs, nLastUs both included. @param nParts at least 1; there are never more */
    HistoryParts(std::uint64_t nFirstUs, std::uint64_t nLastUs, std::size_t nParts);

    /** Adds a step, not earlier than what was added before. */
    void add(const StepSample& sample);

    /** Adds the steps of a second or a minute, likewise. @param nLengthUs of that time; means count by its steps */
    void add(const StepSummary& summary, std::uint64_t nLengthUs);

    /** @return the parts that have steps, each with the time of its middle and its last state */
    std::vector<StepSummary> parts() const;

private:
    struct Sum
    {
        std::int64_t nTotal = 0;
        std::int64_t nCount = 0;
    };

    struct Part
    {
        StepSummary summary; // its time and its means are filled in when it is asked for
        std::uint64_t nLastUs = 0;
        std::array<Sum, SUMMARY_QUANTITIES> sums{};
    };

    Part& partAt(std::uint64_t nTimeUs);
    void add(Part& part, std::size_t nQuantity, const QuantitySummary& values, std::uint64_t nSteps) const;

    std::uint64_t m_nFirstUs;
    std::uint64_t m_nLastUs;
    double m_partUs;
    std::size_t m_nParts;
    std::size_t m_nCurrent = 0; // number of the part that is gathered
    std::vector<Part> m_parts;
};
