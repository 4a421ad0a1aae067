#include "Platform/Broker/InterfaceBroker.h"

#include "Platform/Broker/private/Brokers.h"

InterfaceBroker& InterfaceBroker::getInstance()
{
    static auto* const pBroker = new InterfaceBroker;
    return *pBroker;
}

EAFResult InterfaceBroker::registerInterface(const std::string& sName, IInterface* pInterface)
{
    return Brokers::get().interfaces.add(sName, pInterface);
}

EAFResult InterfaceBroker::unregisterInterface(const std::string& sName, IInterface* pInterface)
{
    return Brokers::get().interfaces.remove(sName, pInterface);
}

IInterface* InterfaceBroker::getInterface(const std::string& sName)
{
    IInterface* const pInterface = Brokers::get().interfaces.find(sName);
    if (pInterface == nullptr) {
        Brokers::get().missed.add(sName);
    }
    return pInterface;
}
