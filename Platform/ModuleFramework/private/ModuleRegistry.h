/** @file
 * The modules of the process, as the phase driver sees them.
 */
#pragma once

#include "Platform/EAFResult.h"

#include <mutex>
#include <vector>

class ModuleInterface;

/** Modules in the order of registration. May be used from any thread. */
class ModuleRegistry
{
public:
    /** @return the one of the process; never destroyed, since modules may leave while the process ends */
    static ModuleRegistry& get();

    long add(ModuleInterface* pModule);
    long remove(const ModuleInterface* pModule);
    bool contains(const ModuleInterface* pModule) const;
    std::vector<ModuleInterface*> all() const;

private:
    mutable std::mutex m_mutex;
    std::vector<ModuleInterface*> m_modules;
};
