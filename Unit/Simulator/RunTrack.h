/** @file
 * A whole run, coarse enough to keep.
 */
#pragma once

#include "Unit/Simulator/StepBucket.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/** Keeps a run in buckets of equal numbers of steps. When there are too many of them, two become one. */
class RunTrack final : public IStepReceiver
{
public:
    static constexpr std::size_t MAX_BUCKETS = 4096;

    RunTrack();

    void onStep(const VirtualStep& step) override;

    const std::vector<StepBucket>& buckets() const { return m_buckets; }

    /** @return number of steps in each bucket but the last */
    std::uint64_t stepsPerBucket() const { return m_nStepsPerBucket; }

private:
    void halve();

    std::vector<StepBucket> m_buckets;
    std::uint64_t m_nStepsPerBucket = 1;
};

/** @return the buckets in order, so many neighbours as one that at most nMaximum remain */
std::vector<StepBucket> joinedBuckets(const std::vector<StepBucket>& buckets, std::size_t nMaximum);
