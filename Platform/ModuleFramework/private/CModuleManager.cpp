#include "Platform/ModuleFramework/CModuleManager.h"

#include "Platform/ModuleFramework/private/ModuleRegistry.h"

#include <algorithm>

ModuleRegistry& ModuleRegistry::get()
{
    static auto* const pRegistry = new ModuleRegistry;
    return *pRegistry;
}

long ModuleRegistry::add(ModuleInterface* pModule)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (std::find(m_modules.begin(), m_modules.end(), pModule) != m_modules.end()) {
        return EAF_FAILED;
    }
    m_modules.push_back(pModule);
    return EAF_OK;
}

long ModuleRegistry::remove(const ModuleInterface* pModule)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = std::find(m_modules.begin(), m_modules.end(), pModule);
    if (it == m_modules.end()) {
        return EAF_FAILED;
    }
    m_modules.erase(it);
    return EAF_OK;
}

bool ModuleRegistry::contains(const ModuleInterface* pModule) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::find(m_modules.begin(), m_modules.end(), pModule) != m_modules.end();
}

std::vector<ModuleInterface*> ModuleRegistry::all() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_modules;
}

CModuleManager& CModuleManager::GetInstance()
{
    static auto* const pManager = new CModuleManager;
    return *pManager;
}

long CModuleManager::RegisterModule(ModuleInterface* pModule)
{
    return pModule != nullptr ? ModuleRegistry::get().add(pModule) : EAF_NULL_POINTER;
}

long CModuleManager::UnRegisterModule(ModuleInterface* pModule)
{
    return ModuleRegistry::get().remove(pModule);
}
