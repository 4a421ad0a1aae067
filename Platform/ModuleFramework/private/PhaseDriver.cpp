#include "Platform/ModuleFramework/PhaseDriver.h"

#include "Platform/Broker/BrokerDirectory.h"
#include "Platform/ModuleFramework/ModuleInterface.h"
#include "Platform/ModuleFramework/PhaseDriver_c.h"
#include "Platform/ModuleFramework/private/ModuleRegistry.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace
{

struct DrivenPhase
{
    unsigned long nPhase;
    const char* pOperation;
    long (ModuleInterface::*pfnOperation)();
};

constexpr std::array<DrivenPhase, 4> DRIVEN_PHASES = {{
    {ePHASE_MODULE_INIT, "onModuleInit", &ModuleInterface::onModuleInit},
    {ePHASE_MODULE_STORAGE_OBJECTS_RETRIEVED, "onPhaseModuleStorageObjectsRetreived",
     &ModuleInterface::onPhaseModuleStorageObjectsRetreived},
    {ePHASE_STOP, "onPhaseStop", &ModuleInterface::onPhaseStop},
    {ePHASE_POST_FRAMEFORMAT_LOAD, "onPhasePostFrameformatLoad", &ModuleInterface::onPhasePostFrameformatLoad},
}};

const DrivenPhase& drivenPhase(unsigned long nPhase)
{
    const auto* const it = std::find_if(DRIVEN_PHASES.begin(), DRIVEN_PHASES.end(),
                                        [nPhase](const DrivenPhase& phase) { return phase.nPhase == nPhase; });
    if (it == DRIVEN_PHASES.end()) {
        throw std::invalid_argument("phase " + std::to_string(nPhase) + " is not driven; use 5, 11, 16 or 20");
    }
    return *it;
}

} // namespace

std::vector<PhaseFailure> PhaseDriver::drive(unsigned long nPhase)
{
    const DrivenPhase& phase = drivenPhase(nPhase);
    std::vector<PhaseFailure> failures;
    for (ModuleInterface* pModule : ModuleRegistry::get().all()) {
        // A module may have been taken out by the operation of one before it.
        if (!ModuleRegistry::get().contains(pModule) || !pModule->isInPhaseFilter(nPhase)) {
            continue;
        }
        BrokerDirectory::clearMissedLookups();
        const long nResult = (pModule->*phase.pfnOperation)();
        if (EAF_isFailure(nResult)) {
            const char* const pName = pModule->getModuleName();
            failures.push_back({pName != nullptr ? pName : "", pModule->getModuleChannel(), phase.pOperation, nResult,
                                BrokerDirectory::missedLookups()});
        }
    }
    return failures;
}

std::size_t PhaseDriver::moduleCount()
{
    return ModuleRegistry::get().all().size();
}

EAFResult PhaseDriver_Drive(unsigned long nPhase)
{
    try {
        return PhaseDriver::drive(nPhase).empty() ? EAF_OK : EAF_FAILED;
    }
    catch (...) {
        return EAF_FAILED;
    }
}
