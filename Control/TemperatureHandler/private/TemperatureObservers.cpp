#include "Control/TemperatureHandler/TemperatureObservers.h"

#include "Platform/ObserverList.h"

namespace
{

/** Never destroyed, since a handler may report while the process ends. */
ObserverList<ITemperatureObserver>& observers()
{
    static auto* const pObservers = new ObserverList<ITemperatureObserver>;
    return *pObservers;
}

} // namespace

EAFResult ITemperatureHandler::registerObserver(ITemperatureObserver* pObserver)
{
    if (pObserver == nullptr || pObserver->pfnNotifyTemperature == nullptr) {
        return EAF_NULL_POINTER;
    }
    observers().add(pObserver);
    return EAF_OK;
}

void TemperatureObservers::notify(int nTemperature)
{
    observers().forEach([nTemperature](ITemperatureObserver& observer) {
        observer.pfnNotifyTemperature(observer.vpThis, nTemperature);
    });
}

void TemperatureObservers::clear()
{
    observers().clear();
}
