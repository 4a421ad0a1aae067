#include "tests/platform/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local std::size_t t_nAllocations = 0;

} // namespace

std::size_t allocationCount()
{
    return t_nAllocations;
}

// Replacements for the whole process, the libraries included.
void* operator new(std::size_t nSize)
{
    ++t_nAllocations;
    void* const pMemory = std::malloc(nSize != 0 ? nSize : 1);
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
