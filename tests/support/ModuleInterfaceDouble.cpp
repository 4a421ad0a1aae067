#include "Platform/ModuleFramework/ModuleInterface.h"
#include "tests/support/RecordingPlatform.h"

#include <algorithm>

namespace
{
long recordPhase(const char* pOperation)
{
    RecordingPlatform::get().recordCall([pOperation] { return "ModuleInterface::" + std::string(pOperation); });
    return EAF_OK;
}
} // namespace

// Records "ModuleInterface(number, name, channel, instance, {filter})".
ModuleInterface::ModuleInterface(unsigned int nModuleNumber, const char* pName, unsigned int nChannel,
                                 unsigned int nInstance, const unsigned long* pPhaseFilter, unsigned int nPhaseCount)
    : m_nModuleNumber(nModuleNumber), m_pName(pName), m_nModuleChannel(nChannel), m_nInstance(nInstance),
      m_pPhaseFilter(pPhaseFilter), m_nPhaseCount(nPhaseCount)
{
    RecordingPlatform::get().recordCall([this] {
        std::string sFilter;
        for (unsigned int i = 0; i < m_nPhaseCount; ++i) {
            sFilter += (i == 0 ? "" : ", ") + std::to_string(m_pPhaseFilter[i]);
        }
        return "ModuleInterface(" + std::to_string(m_nModuleNumber) + ", " + m_pName + ", " +
               std::to_string(m_nModuleChannel) + ", " + std::to_string(m_nInstance) + ", {" + sFilter + "})";
    });
}

ModuleInterface::~ModuleInterface()
{
    recordPhase("~ModuleInterface");
}

long ModuleInterface::onPhaseActivation(unsigned long, ECallbackPriority)
{
    return recordPhase("onPhaseActivation");
}

long ModuleInterface::onModuleInit()
{
    return recordPhase("onModuleInit");
}

long ModuleInterface::onPhaseModuleStorageObjectsRetreived()
{
    return recordPhase("onPhaseModuleStorageObjectsRetreived");
}

long ModuleInterface::onPhasePostFrameformatLoad()
{
    return recordPhase("onPhasePostFrameformatLoad");
}

long ModuleInterface::onPhaseEndFrameformatLoad()
{
    return recordPhase("onPhaseEndFrameformatLoad");
}

long ModuleInterface::onPhaseStart()
{
    return recordPhase("onPhaseStart");
}

long ModuleInterface::onPhaseStop()
{
    return recordPhase("onPhaseStop");
}

long ModuleInterface::onPhaseFrameformatLoad()
{
    return recordPhase("onPhaseFrameformatLoad");
}

long ModuleInterface::onPhasePreFrameformatLoad()
{
    return recordPhase("onPhasePreFrameformatLoad");
}

long ModuleInterface::onPhaseSetRadioChannelNearEndFinished()
{
    return recordPhase("onPhaseSetRadioChannelNearEndFinished");
}

bool ModuleInterface::isInPhaseFilter(unsigned long nPhase) const
{
    return std::find(m_pPhaseFilter, m_pPhaseFilter + m_nPhaseCount, nPhase) != m_pPhaseFilter + m_nPhaseCount;
}
