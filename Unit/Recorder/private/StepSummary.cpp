#include "Unit/Recorder/StepSummary.h"

#include "Platform/EAFResult.h"

#include <algorithm>
#include <cmath>

namespace
{
template <std::size_t nAmplifier> ColumnValue reducedGainOf(const StepSample& sample)
{
    return reducedGain(sample, nAmplifier);
}
} // namespace

const std::array<SampleColumn, SUMMARY_QUANTITIES>& summaryColumns()
{
    static const auto COLUMNS = [] {
        std::array<SampleColumn, SUMMARY_QUANTITIES> columns = {};
        const auto last = std::copy(quantityColumns().begin(), quantityColumns().end(), columns.begin());
        const std::array<SampleColumn, 6> reduced = {{{"reduced_gain_1_cdb", reducedGainOf<0>},
                                                      {"reduced_gain_2_cdb", reducedGainOf<1>},
                                                      {"reduced_gain_3_cdb", reducedGainOf<2>},
                                                      {"reduced_gain_4_cdb", reducedGainOf<3>},
                                                      {"reduced_gain_5_cdb", reducedGainOf<4>},
                                                      {"reduced_gain_6_cdb", reducedGainOf<5>}}};
        std::copy(reduced.begin(), reduced.end(), last);
        return columns;
    }();
    return COLUMNS;
}

void SummaryBuilder::add(const StepSample& sample)
{
    m_summary.nChannelNumber = sample.nChannelNumber;
    m_summary.nState = sample.nState;
    ++m_summary.nSteps;
    m_summary.nFailedSteps += EAF_isFailure(sample.nResult) ? 1 : 0;
    for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
        const ColumnValue nValue = summaryColumns().at(nQuantity).read(sample);
        if (!nValue) {
            continue;
        }
        std::optional<QuantitySummary>& quantity = m_summary.quantities.at(nQuantity);
        quantity = quantity ? QuantitySummary{std::min(quantity->nMin, *nValue), 0, std::max(quantity->nMax, *nValue)}
                            : QuantitySummary{*nValue, 0, *nValue};
        ++m_sums.at(nQuantity).nCount;
        m_sums.at(nQuantity).nTotal += *nValue;
    }
}

StepSummary SummaryBuilder::summary() const
{
    StepSummary summary = m_summary;
    for (std::size_t nQuantity = 0; nQuantity < SUMMARY_QUANTITIES; ++nQuantity) {
        const Sum& sum = m_sums.at(nQuantity);
        if (sum.nCount > 0) {
            summary.quantities.at(nQuantity)->nMean =
                std::llround(static_cast<double>(sum.nTotal) / static_cast<double>(sum.nCount));
        }
    }
    return summary;
}
