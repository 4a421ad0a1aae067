/** @file
 * Where modules announce themselves to be driven through the phases.
 */
#pragma once

#include "Platform/EAFResult.h"

class ModuleInterface;

/** Knows the modules of the process; not copied. Every operation may be called from any thread. */
class EAF_PUBLIC CModuleManager
{
public:
    /** @return the one manager of the process, created at the first call */
    static CModuleManager& GetInstance();

    CModuleManager(const CModuleManager&) = delete;
    CModuleManager& operator=(const CModuleManager&) = delete;

    /**
     * Adds a module; its phases are driven from now on, after those of the modules added before.
     * @param pModule the module; not owned, must live until it is taken out
     * @return EAF_OK; EAF_NULL_POINTER; EAF_FAILED when it is there already
     */
    long RegisterModule(ModuleInterface* pModule);

    /**
     * Takes a module out.
     * @param pModule the module
     * @return EAF_OK, or EAF_FAILED when it is not there
     */
    long UnRegisterModule(ModuleInterface* pModule);

private:
    CModuleManager() = default;
    ~CModuleManager() = default;
};
