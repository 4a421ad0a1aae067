#include "Unit/Process/ChannelMonitor.h"

#include "Platform/Broker/InterfaceBroker.h"
#include "Unit/Configuration/UnitConfiguration.h"

namespace
{
/** @return the C function table that is published under a name; null for none */
template <class TTable> const TTable* publishedTable(IInterface* pInterface)
{
    auto* const pWithTable = dynamic_cast<IInterface_c*>(pInterface);
    return pWithTable == nullptr ? nullptr : static_cast<const TTable*>(pWithTable->getCStruct());
}
} // namespace

ChannelMonitor::ChannelMonitor(unsigned int nChannel)
    : m_rules(nChannel, EHeardSides::Both, m_violations), m_handlerPlace{outputPowerHandlerName(nChannel)},
      m_controllerPlace{channelInterfaceName("IOutputPowerController", nChannel)}
{}

ChannelMonitor::~ChannelMonitor()
{
    putBack();
}

bool ChannelMonitor::interpose()
{
    m_handlerPlace.pOwn = InterfaceBroker::getInstance().getInterface(m_handlerPlace.sName);
    m_controllerPlace.pOwn = InterfaceBroker::getInstance().getInterface(m_controllerPlace.sName);
    const auto* const pHandler = publishedTable<IOutputPowerHandlerCStruct>(m_handlerPlace.pOwn);
    const auto* const pController = publishedTable<IOutputPowerControllerCStruct>(m_controllerPlace.pOwn);
    if (pHandler == nullptr || pController == nullptr) {
        return false;
    }
    m_handler.emplace(*pHandler, m_rules);
    m_controller.emplace(*pController, m_rules);
    exchange(m_handlerPlace, m_handlerPlace.pOwn, &*m_handler);
    exchange(m_controllerPlace, m_controllerPlace.pOwn, &*m_controller);
    m_bInterposed = true;
    return true;
}

void ChannelMonitor::putBack()
{
    if (!m_bInterposed) {
        return;
    }
    m_bInterposed = false;
    m_rules.onStop();
    exchange(m_handlerPlace, &*m_handler, m_handlerPlace.pOwn);
    exchange(m_controllerPlace, &*m_controller, m_controllerPlace.pOwn);
}

void ChannelMonitor::exchange(const Place& place, IInterface* pPublished, IInterface* pNext)
{
    InterfaceBroker& broker = InterfaceBroker::getInstance();
    // Whoever has withdrawn it in between has the name for good.
    if (!EAF_isFailure(broker.unregisterInterface(place.sName, pPublished))) {
        broker.registerInterface(place.sName, pNext);
    }
}
