/** @file
 * What many steps of a channel come to.
 */
#pragma once

#include "Unit/Telemetry/SampleColumns.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

/** Quantities that summaries hold. */
inline constexpr std::size_t SUMMARY_QUANTITIES = 16;

/** @return the quantities: those of quantityColumns(), then the reduction of each amplifier's gain */
const std::array<SampleColumn, SUMMARY_QUANTITIES>& summaryColumns();

/** A quantity over a time, in its own whole numbers. */
struct QuantitySummary
{
    std::int64_t nMin = 0;
    std::int64_t nMean = 0; /**< rounded */
    std::int64_t nMax = 0;

    bool operator==(const QuantitySummary&) const = default;
};

/** A channel's steps over a second or a minute. */
struct StepSummary
{
    std::uint64_t nTimeUs = 0; /**< when the second or the minute began */
    unsigned int nChannelNumber = 0;
    std::uint64_t nSteps = 0;
    std::uint64_t nFailedSteps = 0;
    std::int32_t nState = 0;                                                     /**< EOPCState, after the last step */
    std::array<std::optional<QuantitySummary>, SUMMARY_QUANTITIES> quantities{}; /**< none where no step had any */

    bool operator==(const StepSummary&) const = default;
};

/** Gathers a channel's steps. */
class SummaryBuilder
{
public:
    /** @param nBeginUs when the time that is summed up begins */
    explicit SummaryBuilder(std::uint64_t nBeginUs = 0) { m_summary.nTimeUs = nBeginUs; }

    void add(const StepSample& sample);

    bool isEmpty() const { return m_summary.nSteps == 0; }
    std::uint64_t beginUs() const { return m_summary.nTimeUs; }
    StepSummary summary() const;

private:
    struct Sum
    {
        std::int64_t nCount = 0;
        std::int64_t nTotal = 0;
    };

    StepSummary m_summary; // the means are filled in when it is asked for
    std::array<Sum, SUMMARY_QUANTITIES> m_sums{};
};
