#include "Unit/LivePage/private/HistoryParts.h"

#include "Platform/EAFResult.h"

#include <algorithm>
#include <cmath>

HistoryParts::HistoryParts(std::uint64_t nFirstUs, std::uint64_t nLastUs, std::size_t nParts)
    : m_nFirstUs(nFirstUs), m_nLastUs(std::max(nFirstUs, nLastUs)),
      m_partUs(static_cast<double>(m_nLastUs - m_nFirstUs + 1) / static_cast<double>(nParts)), m_nParts(nParts)
{}

HistoryParts::Part& HistoryParts::partAt(std::uint64_t nTimeUs)
{
    const std::uint64_t nAtUs = std::clamp(nTimeUs, m_nFirstUs, m_nLastUs) - m_nFirstUs;
    const auto nPart = std::min(static_cast<std::size_t>(static_cast<double>(nAtUs) / m_partUs), m_nParts - 1);
    if (m_parts.empty() || nPart > m_nCurrent) {
        m_nCurrent = nPart;
        m_parts.emplace_back();
        m_parts.back().summary.nTimeUs = std::max(nTimeUs, m_nFirstUs);
    }
    return m_parts.back();
}

void HistoryParts::add(Part& part, std::size_t nQuantity, const QuantitySummary& values, std::uint64_t nSteps) const
{
    auto& quantity = part.summary.quantities.at(nQuantity);
    quantity = quantity
                   ? QuantitySummary{std::min(quantity->nMin, values.nMin), 0, std::max(quantity->nMax, values.nMax)}
                   : QuantitySummary{values.nMin, 0, values.nMax};
    Sum& sum = part.sums.at(nQuantity);
    sum.nTotal += values.nMean * static_cast<std::int64_t>(nSteps);
    sum.nCount += static_cast<std::int64_t>(nSteps);
}

void HistoryParts::add(const StepSample& sample)
{
    Part& part = partAt(sample.nTimeUs);
    part.nLastUs = std::min(sample.nTimeUs, m_nLastUs);
    part.summary.nState = sample.nState;
    ++part.summary.nSteps;
    part.summary.nFailedSteps += EAF_isFailure(sample.nResult) ? 1 : 0;
    for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
        if (const ColumnValue nValue = summaryColumns().at(nQuantity).read(sample)) {
            add(part, nQuantity, {*nValue, *nValue, *nValue}, 1);
        }
    }
}

void HistoryParts::add(const StepSummary& summary, std::uint64_t nLengthUs)
{
    Part& part = partAt(summary.nTimeUs);
    part.nLastUs = std::min(summary.nTimeUs + nLengthUs - 1, m_nLastUs);
    part.summary.nState = summary.nState;
    part.summary.nSteps += summary.nSteps;
    part.summary.nFailedSteps += summary.nFailedSteps;
    for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
        if (const auto& quantity = summary.quantities.at(nQuantity)) {
            add(part, nQuantity, *quantity, summary.nSteps);
        }
    }
}

std::vector<StepSummary> HistoryParts::parts() const
{
    std::vector<StepSummary> parts;
    parts.reserve(m_parts.size());
    for (const Part& part : m_parts) {
        StepSummary summary = part.summary;
        summary.nTimeUs += (std::max(part.nLastUs, summary.nTimeUs) - summary.nTimeUs) / 2;
        for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
            const Sum& sum = part.sums.at(nQuantity);
            if (sum.nCount > 0) {
                summary.quantities.at(nQuantity)->nMean =
                    std::llround(static_cast<double>(sum.nTotal) / static_cast<double>(sum.nCount));
            }
        }
        parts.push_back(summary);
    }
    return parts;
}
