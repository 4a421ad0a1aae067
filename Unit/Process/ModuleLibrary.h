/** @file
 * A module's shared library and its four entry points.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"

#include <memory>
#include <string>
#include <vector>

/** A loaded shared library; unloaded when this goes. */
class ModuleLibrary
{
public:
    using Construct = void (*)(void** ppModule, unsigned int nChannel);
    using Destruct = void (*)(void* pModule);
    using Initialize = long (*)(void* pModule);

    /**
     * Loads a module's library: a bare name is looked for in the unit file's folder, then where the program's build and
     * its installation have their modules, then the system's way; a path starts from the unit file's folder.
     * @throws ConfigurationError when the library cannot be loaded or lacks an entry point
     */
    ModuleLibrary(const UnitConfiguration& unit, const ModuleConfiguration& module);

    const std::string& name() const { return m_sName; }
    EModuleScope scope() const { return m_eScope; }

    Construct construct() const { return m_pfnConstruct; }
    Destruct destruct() const { return m_pfnDestruct; }
    Initialize initialize() const { return m_pfnInitialize; }
    Initialize uninitialize() const { return m_pfnUninitialize; }

private:
    struct Closer
    {
        void operator()(void* pHandle) const;
    };

    template <class TFunction> TFunction entryPoint(const char* pSuffix) const;

    std::string m_sName;
    std::string m_sPlace; // where the unit file names it, for errors
    EModuleScope m_eScope;
    std::unique_ptr<void, Closer> m_pHandle;
    Construct m_pfnConstruct;
    Destruct m_pfnDestruct;
    Initialize m_pfnInitialize;
    Initialize m_pfnUninitialize;
};

/** @return the files to try for a module's library, in this order; the last may be a bare name for the system's way */
std::vector<std::string> moduleLibraryCandidates(const std::string& sUnitFolder, const std::string& sLibrary);
