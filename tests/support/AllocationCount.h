/** @file
 * Counts what the calling thread allocates with operator new.
 */
#pragma once

#include <cstddef>

/** @return number of allocations of the calling thread since it began */
std::size_t allocationCount();
