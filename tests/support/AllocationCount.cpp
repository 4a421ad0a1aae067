#include "tests/support/AllocationCount.h"

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

// Replacements for the whole process, the libraries included. The one that does not throw has to go with the others:
// what it gives is released by the same operator delete.
void* operator new(std::size_t nSize, const std::nothrow_t& /*tag*/) noexcept
{
    ++t_nAllocations;
    return std::malloc(nSize != 0 ? nSize : 1);
}

void* operator new(std::size_t nSize)
{
    void* const pMemory = operator new(nSize, std::nothrow);
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
