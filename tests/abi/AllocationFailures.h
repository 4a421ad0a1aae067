/** @file
 * Allocations that fail on demand, in the executable and in every library that it loads.
 */
#pragma once

#include <cstddef>

/** While one lives, one of the calling thread's allocations by new throws std::bad_alloc. */
class AllocationFailure
{
public:
    /** @param nAllocation the allocation to fail, counted from 1 */
    explicit AllocationFailure(std::size_t nAllocation);
    ~AllocationFailure();

    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    /** @return allocations by new that are not given back yet, in all threads */
    static std::ptrdiff_t livingAllocations();
};
