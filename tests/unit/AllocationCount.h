/** @file
 * How much a thread allocates.
 */
#pragma once

#include <cstddef>

/** @return calls of operator new that the calling thread has made, anywhere in the process */
std::size_t allocationCount();

/** @return whether allocations are counted; sanitizers bring their own operator new */
bool allocationsAreCounted();
