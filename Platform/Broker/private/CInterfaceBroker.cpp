#include "Platform/Broker/CInterfaceBroker.h"

#include "Platform/Broker/IInterface_c.h"
#include "Platform/Broker/private/Brokers.h"

namespace
{

void* findRecord(const char* pName)
{
    Brokers& brokers = Brokers::get();
    if (void* const pRecord = brokers.records.find(pName); pRecord != nullptr) {
        return pRecord;
    }
    auto* const pInterface = dynamic_cast<IInterface_c*>(brokers.interfaces.find(pName));
    void* const pTable = pInterface != nullptr ? pInterface->getCStruct() : nullptr;
    if (pTable == nullptr) {
        brokers.missed.add(pName);
    }
    return pTable;
}

} // namespace

EAFResult CInterfaceBroker_GetInstance(void** ppBroker)
{
    if (ppBroker == nullptr) {
        return EAF_NULL_POINTER;
    }
    // Every handle is the one broker, so there is nothing to give back.
    *ppBroker = &Brokers::get();
    return EAF_OK;
}

EAFResult CInterfaceBroker_RegisterInterface(void* pBroker, const char* pName, void* pInterface)
{
    if (pBroker == nullptr || pName == nullptr) {
        return EAF_NULL_POINTER;
    }
    return Brokers::get().records.add(pName, pInterface);
}

EAFResult CInterfaceBroker_UnregisterInterface(void* pBroker, const char* pName, void* pInterface)
{
    if (pBroker == nullptr || pName == nullptr) {
        return EAF_NULL_POINTER;
    }
    return Brokers::get().records.remove(pName, pInterface);
}

EAFResult CInterfaceBroker_GetInterface(void* pBroker, const char* pName, void** ppInterface)
{
    if (pBroker == nullptr || pName == nullptr || ppInterface == nullptr) {
        return EAF_NULL_POINTER;
    }
    *ppInterface = findRecord(pName);
    return *ppInterface != nullptr ? EAF_OK : EAF_FAILED;
}

EAFResult CInterfaceBroker_DestroyInstance(void* pBroker)
{
    return pBroker != nullptr ? EAF_OK : EAF_NULL_POINTER;
}
