#include "Unit/Simulator/RunTrack.h"

RunTrack::RunTrack()
{
    m_buckets.reserve(MAX_BUCKETS);
}

void RunTrack::onStep(const VirtualStep& step)
{
    if (m_buckets.empty() || m_buckets.back().nSteps >= m_nStepsPerBucket) {
        if (m_buckets.size() == MAX_BUCKETS) {
            halve();
        }
        m_buckets.emplace_back();
    }
    m_buckets.back().add(step);
}

void RunTrack::halve()
{
    for (std::size_t nBucket = 0; nBucket < MAX_BUCKETS / 2; ++nBucket) {
        StepBucket bucket = m_buckets[2 * nBucket];
        bucket.add(m_buckets[2 * nBucket + 1]);
        m_buckets[nBucket] = bucket;
    }
    m_buckets.resize(MAX_BUCKETS / 2);
    m_nStepsPerBucket *= 2;
}

std::vector<StepBucket> joinedBuckets(const std::vector<StepBucket>& buckets, std::size_t nMaximum)
{
    const std::size_t nTogether = (buckets.size() + nMaximum - 1) / nMaximum;
    std::vector<StepBucket> joined;
    for (std::size_t nBucket = 0; nBucket < buckets.size(); ++nBucket) {
        if (nBucket % nTogether == 0) {
            joined.emplace_back();
        }
        joined.back().add(buckets[nBucket]);
    }
    return joined;
}
