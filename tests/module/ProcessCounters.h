/** @file
 * Counts what a regulator step must not do: allocations, locks and exceptions anywhere in the process.
 */
#pragma once

#include <cstddef>

/** The counts of the calling thread. */
struct ProcessCounts
{
    std::size_t nNew = 0;    /**< operator new in any form */
    std::size_t nMalloc = 0; /**< malloc, calloc, realloc; counted only when isMallocCounted() */
    std::size_t nLock = 0;   /**< pthread_mutex_lock */
    std::size_t nThrow = 0;  /**< exceptions thrown */
};

/** Interposes the functions in the executable that links it. */
class ProcessCounters
{
public:
    /** Begins counting from zero in the calling thread. */
    static void start();
    /** Ends counting. */
    static ProcessCounts stop();
    /** @return false in a build whose sanitizer needs malloc for itself */
    static bool isMallocCounted();
};
