/** @file
 * Phase driving for C programs.
 */
#pragma once

#include "Platform/EAFResult.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Calls a phase's operation on every module that has it in its filter.
 * @param nPhase number of the phase: 5, 11, 16 or 20
 * @return EAF_OK, or EAF_FAILED when a module failed or the phase is not driven
 */
EAF_PUBLIC EAFResult PhaseDriver_Drive(unsigned long nPhase);

#ifdef __cplusplus
}
#endif
