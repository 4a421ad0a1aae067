#include "tests/abi/AllocationFailures.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
thread_local std::size_t t_nUntilFailure = 0; // 0: none
std::atomic<std::ptrdiff_t> s_nLiving{0};
} // namespace

AllocationFailure::AllocationFailure(std::size_t nAllocation)
{
    t_nUntilFailure = nAllocation;
}

AllocationFailure::~AllocationFailure()
{
    t_nUntilFailure = 0;
}

std::ptrdiff_t AllocationFailure::livingAllocations()
{
    return s_nLiving;
}

void* operator new(std::size_t nSize)
{
    if (t_nUntilFailure != 0 && --t_nUntilFailure == 0) {
        throw std::bad_alloc();
    }
    void* const pMemory = std::malloc(nSize != 0 ? nSize : 1);
    if (pMemory == nullptr) {
        throw std::bad_alloc();
    }
    ++s_nLiving;
    return pMemory;
}

void operator delete(void* pMemory) noexcept
{
    if (pMemory != nullptr) {
        --s_nLiving;
        std::free(pMemory);
    }
}

void operator delete(void* pMemory, std::size_t /*nSize*/) noexcept
{
    operator delete(pMemory);
}
