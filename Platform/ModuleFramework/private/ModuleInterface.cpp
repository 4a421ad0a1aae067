#include "Platform/ModuleFramework/ModuleInterface.h"

#include <algorithm>

ModuleInterface::ModuleInterface(unsigned int nModuleNumber, const char* pName, unsigned int nChannel,
                                 unsigned int nInstance, const unsigned long* pPhaseFilter, unsigned int nPhaseCount)
    : m_nModuleNumber(nModuleNumber), m_pName(pName), m_nModuleChannel(nChannel), m_nInstance(nInstance),
      m_pPhaseFilter(pPhaseFilter), m_nPhaseCount(pPhaseFilter != nullptr ? nPhaseCount : 0)
{}

ModuleInterface::~ModuleInterface() = default;

bool ModuleInterface::isInPhaseFilter(unsigned long nPhase) const
{
    const unsigned long* const pEnd = m_pPhaseFilter + m_nPhaseCount;
    return std::find(m_pPhaseFilter, pEnd, nPhase) != pEnd;
}

long ModuleInterface::onPhaseActivation(unsigned long /*nPhase*/, ECallbackPriority /*ePriority*/)
{
    return EAF_OK;
}

long ModuleInterface::onModuleInit()
{
    return EAF_OK;
}

long ModuleInterface::onPhaseModuleStorageObjectsRetreived()
{
    return EAF_OK;
}

long ModuleInterface::onPhasePostFrameformatLoad()
{
    return EAF_OK;
}

long ModuleInterface::onPhaseEndFrameformatLoad()
{
    return EAF_OK;
}

long ModuleInterface::onPhaseStart()
{
    return EAF_OK;
}

long ModuleInterface::onPhaseStop()
{
    return EAF_OK;
}

long ModuleInterface::onPhaseFrameformatLoad()
{
    return EAF_OK;
}

long ModuleInterface::onPhasePreFrameformatLoad()
{
    return EAF_OK;
}

long ModuleInterface::onPhaseSetRadioChannelNearEndFinished()
{
    return EAF_OK;
}
