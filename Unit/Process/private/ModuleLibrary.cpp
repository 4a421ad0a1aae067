#include "Unit/Process/ModuleLibrary.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Process/Installation.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <filesystem>

namespace
{
std::string oneLine(std::string sText)
{
    for (char& character : sText) {
        character = character == '\n' ? ' ' : character;
    }
    return sText;
}

std::string loaderError()
{
    const char* pError = dlerror();
    return oneLine(pError == nullptr ? "no reason given" : pError);
}

/** Loads the first candidate that exists; one that is there but cannot be loaded is not passed over. */
void* load(const UnitConfiguration& unit, const ModuleConfiguration& module)
{
    for (const std::string& sCandidate : moduleLibraryCandidates(unit.sFolder, module.sLibrary)) {
        const bool bBare = sCandidate.find('/') == std::string::npos;
        if (!bBare && !std::filesystem::exists(sCandidate)) {
            continue;
        }
        // Modules see the process's symbols and not each other's.
        void* pHandle = dlopen(sCandidate.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (pHandle != nullptr) {
            return pHandle;
        }
        throw ConfigurationError::atLine(
            unit.sPath, module.nLine,
            fmt::format("library of module \"{}\" cannot be loaded: {}; correct library", module.sName, loaderError()));
    }
    throw ConfigurationError::atLine(
        unit.sPath, module.nLine,
        fmt::format("library \"{}\" of module \"{}\" does not exist; correct library", module.sLibrary, module.sName));
}
} // namespace

std::vector<std::string> moduleLibraryCandidates(const std::string& sUnitFolder, const std::string& sLibrary)
{
    namespace fs = std::filesystem;
    const std::string sBeside = (fs::path(sUnitFolder.empty() ? "." : sUnitFolder) / sLibrary).string();
    if (sLibrary.find('/') != std::string::npos) {
        return {sBeside};
    }
    return {sBeside, (fs::path(builtModuleFolder()) / sLibrary).string(),
            (fs::path(installedModuleFolder()) / sLibrary).string(), sLibrary};
}

void ModuleLibrary::Closer::operator()(void* pHandle) const
{
    dlclose(pHandle);
}

ModuleLibrary::ModuleLibrary(const UnitConfiguration& unit, const ModuleConfiguration& module)
    : m_sName(module.sName), m_sPlace(fmt::format("{}:{}", unit.sPath, module.nLine)), m_eScope(module.eScope),
      m_pHandle(load(unit, module)), m_pfnConstruct(entryPoint<Construct>("_Construct")),
      m_pfnDestruct(entryPoint<Destruct>("_Destruct")), m_pfnInitialize(entryPoint<Initialize>("_Initialize")),
      m_pfnUninitialize(entryPoint<Initialize>("_Uninitialize"))
{}

template <class TFunction> TFunction ModuleLibrary::entryPoint(const char* pSuffix) const
{
    const std::string sSymbol = m_sName + pSuffix;
    void* pSymbol = dlsym(m_pHandle.get(), sSymbol.c_str());
    if (pSymbol == nullptr) {
        throw ConfigurationError(fmt::format("{}: module \"{}\" has no entry point {} in its library; correct name or "
                                             "library",
                                             m_sPlace, m_sName, sSymbol));
    }
    return reinterpret_cast<TFunction>(pSymbol);
}
