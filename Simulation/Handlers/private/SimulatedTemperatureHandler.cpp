#include "Simulation/Handlers/private/SimulatedTemperatureHandler.h"

#include "Control/TemperatureHandler/TemperatureObservers.h"

EAFResult SimulatedTemperatureHandler::uninitialize()
{
    // One that was never published has no observers: they belong to the handler that was.
    if (!m_published.isPublished()) {
        return EAF_FAILED;
    }
    const EAFResult nResult = m_published.withdraw();
    TemperatureObservers::clear();
    return nResult;
}

void SimulatedTemperatureHandler::setTemperature(int nTemperature)
{
    const bool bFirst = !m_bSet.exchange(true);
    const bool bChanged = m_nTemperature.exchange(nTemperature) != nTemperature;
    if (bFirst || bChanged) {
        TemperatureObservers::notify(nTemperature);
    }
}
