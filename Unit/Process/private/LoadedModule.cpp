#include "Unit/Process/LoadedModule.h"

#include "Platform/EAFResult.h"

#include <fmt/format.h>

#include <utility>

LoadedModule::LoadedModule(std::shared_ptr<const ModuleLibrary> pLibrary, unsigned int nChannel)
    : m_pLibrary(std::move(pLibrary)), m_nChannel(nChannel)
{
    m_owner.check("LoadedModule");
    m_pLibrary->construct()(&m_pModule, nChannel);
    if (m_pModule == nullptr) {
        throw UnitStartError(fmt::format("module \"{}\" of channel {} was not constructed", name(), nChannel));
    }
}

LoadedModule::~LoadedModule()
{
    uninitialize();
    m_pLibrary->destruct()(m_pModule);
}

void LoadedModule::initialize()
{
    m_owner.check("LoadedModule::initialize");
    const long nResult = m_pLibrary->initialize()(m_pModule);
    if (EAF_isFailure(nResult)) {
        throw UnitStartError(
            fmt::format("module \"{}\" of channel {} failed to initialise: {:#x}", name(), m_nChannel, nResult));
    }
    m_bInitialized = true;
}

long LoadedModule::uninitialize()
{
    m_owner.check("LoadedModule::uninitialize");
    if (!m_bInitialized) {
        return EAF_OK;
    }
    m_bInitialized = false;
    return m_pLibrary->uninitialize()(m_pModule);
}
