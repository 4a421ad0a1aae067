/** @file
 * Drives the registered modules through the platform's phases.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <string>
#include <vector>

/** The phases of the platform that the unit drives, by number. */
enum EPhase : unsigned long
{
    ePHASE_MODULE_INIT = 5,
    ePHASE_MODULE_STORAGE_OBJECTS_RETRIEVED = 11,
    ePHASE_STOP = 16,
    ePHASE_POST_FRAMEFORMAT_LOAD = 20
};

/** A module that failed in a phase. */
struct PhaseFailure
{
    std::string sModuleName;
    unsigned int nChannel;
    std::string sOperation; /**< the phase operation, such as "onModuleInit" */
    long nResult;
    std::vector<std::string> missedInterfaces; /**< names that the module looked up in vain during the phase */
};

/** Calls phase operations. Use it from the one thread that starts and stops the unit. */
class EAF_PUBLIC PhaseDriver
{
public:
    /**
     * Calls a phase's operation on every module that has it in its filter, in the order of registration, and goes on
     * after a failure.
     * @param nPhase number of the phase
     * @return the modules that failed
     * @throws std::invalid_argument for a phase that the unit does not drive
     */
    static std::vector<PhaseFailure> drive(unsigned long nPhase);

    /** @return number of modules registered */
    static std::size_t moduleCount();
};
