#include "Simulation/Handlers/private/PublishedInterface.h"

#include "Platform/Broker/InterfaceBroker.h"

PublishedInterface::~PublishedInterface()
{
    withdraw();
}

EAFResult PublishedInterface::publish(const std::string& sName, IInterface* pInterface)
{
    if (isPublished()) {
        return EAF_FAILED;
    }
    const EAFResult nResult = InterfaceBroker::getInstance().registerInterface(sName, pInterface);
    if (!EAF_isFailure(nResult)) {
        m_sName = sName;
        m_pInterface = pInterface;
    }
    return nResult;
}

EAFResult PublishedInterface::withdraw()
{
    if (!isPublished()) {
        return EAF_FAILED;
    }
    IInterface* const pInterface = m_pInterface;
    m_pInterface = nullptr;
    return InterfaceBroker::getInstance().unregisterInterface(m_sName, pInterface);
}
