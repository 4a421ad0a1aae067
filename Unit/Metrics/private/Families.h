/** @file
 * Metric families of the library, filled one value at a time.
 */
#pragma once

#include "Unit/Clock/TimeHistogram.h"

#include <prometheus/metric_family.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

inline constexpr auto GAUGE = prometheus::MetricType::Gauge;
inline constexpr auto COUNTER = prometheus::MetricType::Counter;

/** Labels of a value, in their order. */
using MetricLabels = std::vector<prometheus::ClientMetric::Label>;

/** A name with its values by labels. */
class Family
{
public:
    Family(std::string sName, std::string sHelp, prometheus::MetricType eType)
    {
        m_family.name = std::move(sName);
        m_family.help = std::move(sHelp);
        m_family.type = eType;
    }

    void add(MetricLabels labels, double value)
    {
        prometheus::ClientMetric& metric = m_family.metric.emplace_back();
        metric.label = std::move(labels);
        metric.gauge.value = value; // the family's type says which of the two counts
        metric.counter.value = value;
    }

    void add(MetricLabels labels, const TimeCounts& times)
    {
        constexpr double NANOSECONDS = 1e9;
        prometheus::ClientMetric& metric = m_family.metric.emplace_back();
        metric.label = std::move(labels);
        std::uint64_t nSoFar = 0;
        for (std::size_t nBucket = 0; nBucket < times.counts.size(); ++nBucket) {
            nSoFar += times.counts.at(nBucket);
            const double bound = nBucket < TimeCounts::BOUNDS_NS.size()
                                     ? static_cast<double>(TimeCounts::BOUNDS_NS.at(nBucket)) / NANOSECONDS
                                     : std::numeric_limits<double>::infinity();
            metric.histogram.bucket.push_back({nSoFar, bound});
        }
        metric.histogram.sample_count = nSoFar;
        metric.histogram.sample_sum = static_cast<double>(times.nTotalNs) / NANOSECONDS;
    }

    prometheus::MetricFamily take() { return std::move(m_family); }

private:
    prometheus::MetricFamily m_family;
};

/** Families in the order of the text. */
using Families = std::vector<prometheus::MetricFamily>;
