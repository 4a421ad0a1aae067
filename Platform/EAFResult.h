/** @file
 * Result codes of the platform and of every control module.
 */
#pragma once

#include <stdbool.h>
#include <stdint.h>

/** Marks what a module imports from, or shares with, the process that loads it. */
#define EAF_PUBLIC __attribute__((visibility("default")))

/** A result code; see EAF_isFailure() for how to judge it. */
typedef int32_t EAFResult;

/** Success. */
#define EAF_OK 0
/** An operation failed. */
#define EAF_FAILED 0x8000
/** A null pointer was passed where an object is required. */
#define EAF_NULL_POINTER 0x8002

/**
 * Judges a result code by the one rule of the system.
 * @param nResult result of a platform, handler or module operation
 * @return true at 0x8000 or more, compared signed; negative results are successes
 */
static inline bool EAF_isFailure(long nResult)
{
    return nResult >= EAF_FAILED;
}
