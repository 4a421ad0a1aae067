#include "Simulation/Handlers/private/SimulatedFrequencyHandler.h"

#include <string>

EAFResult SimulatedFrequencyHandler::initialize()
{
    std::string sName = "IFrequencyHandler_Tx";
    if (m_nChannel != 0) {
        sName += "_" + std::to_string(m_nChannel);
    }
    return m_published.publish(sName, this);
}

EAFResult SimulatedFrequencyHandler::registerObserver(Observer<IFrequencyHandler>* pObserver)
{
    if (pObserver == nullptr) {
        return EAF_NULL_POINTER;
    }
    m_observers.add(pObserver);
    return EAF_OK;
}

void SimulatedFrequencyHandler::setTxFrequency(int nFrequency)
{
    const bool bFirst = !m_bSet.exchange(true);
    const bool bChanged = m_nFrequency.exchange(nFrequency) != nFrequency;
    if (bFirst || bChanged) {
        m_observers.forEach([this](Observer<IFrequencyHandler>& observer) { observer.onChange(this); });
    }
}
