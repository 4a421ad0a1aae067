#include "tests/unit/AllocationCount.h"

#include <cstdlib>
#include <new>

namespace
{
thread_local std::size_t t_nCount = 0;
} // namespace

std::size_t allocationCount()
{
    return t_nCount;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

bool allocationsAreCounted()
{
    return false;
}

#else

bool allocationsAreCounted()
{
    return true;
}

void* operator new(std::size_t nBytes)
{
    ++t_nCount;
    if (void* pBlock = std::malloc(nBytes == 0 ? 1 : nBytes)) {
        return pBlock;
    }
    throw std::bad_alloc();
}

void operator delete(void* pBlock) noexcept
{
    std::free(pBlock);
}

void operator delete(void* pBlock, std::size_t /*nBytes*/) noexcept
{
    std::free(pBlock);
}

#endif
