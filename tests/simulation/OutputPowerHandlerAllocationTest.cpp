#include "tests/simulation/HandlerTable.h"

#include <cstdlib>
#include <memory>
#include <new>

namespace
{
thread_local std::uint64_t t_nAllocations = 0;
} // namespace

// Counts every allocation of this executable.
void* operator new(std::size_t nSize)
{
    ++t_nAllocations;
    void* const pMemory = std::malloc(nSize == 0 ? 1 : nSize);
    if (pMemory == nullptr) {
        throw std::bad_alloc();
    }
    return pMemory;
}

void operator delete(void* pMemory) noexcept
{
    std::free(pMemory);
}

void operator delete(void* pMemory, std::size_t /*nSize*/) noexcept
{
    std::free(pMemory);
}

namespace
{
TEST(OutputPowerHandler, AllocatesNothingInAStep)
{
    const HandlerTable table;
    table.switchOn(1500);
    const std::uint64_t nBefore = t_nAllocations;
    for (int i = 0; i < 1000; ++i) {
        const std::int32_t nPmeasured = table.pMeasured();
        table.detectorState(nPmeasured, eRF_DETECTOR_LOOP_MODE_NORMAL);
        table.setOutputPower(nPmeasured);
        table.txPower();
        for (std::uint32_t nAmplifier = 1; nAmplifier <= 6; ++nAmplifier) {
            table.reducedGain(nAmplifier);
        }
    }
    EXPECT_EQ(t_nAllocations, nBefore);
    const auto pProof = std::make_unique<int>(1);
    EXPECT_GT(t_nAllocations, nBefore) << "the count works";
}
} // namespace
