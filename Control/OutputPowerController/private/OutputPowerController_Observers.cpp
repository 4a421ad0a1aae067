#include "Control/OutputPowerController/private/OutputPowerController.h"

namespace
{

template <class TObserver, class TValue>
void notifyAll(const std::vector<TObserver*>& observers, unsigned int nChannel, TValue value)
{
    for (const TObserver* pObserver : observers) {
        pObserver->pfnNotify(pObserver->vpThis, nChannel, value);
    }
}

} // namespace

void OutputPowerController::registerPctrlObserver(IOpcPctrlObserver* pObserver)
{
    m_vecPctrlObservers.push_back(pObserver);
}

void OutputPowerController::registerPtargetObserver(IOpcPtargetObserver* pObserver)
{
    m_vecPtargetObservers.push_back(pObserver);
}

void OutputPowerController::registerPredictedPctrlObserver(IOpcPredictedPctrlObserver* pObserver)
{
    m_vecPredictedPctrlObservers.push_back(pObserver);
}

void OutputPowerController::registerPowerModeObserver(IOpcPowerModeObserver* pObserver)
{
    m_vecPowerModeObservers.push_back(pObserver);
}

void OutputPowerController::notifyPctrlObservers(int nPctrl)
{
    notifyAll(m_vecPctrlObservers, m_nChannel, nPctrl);
}

void OutputPowerController::notifyPtargetObservers(int nPtarget)
{
    notifyAll(m_vecPtargetObservers, m_nChannel, nPtarget);
}

void OutputPowerController::notifyPredictedPctrlObservers(int nPredictedPctrl)
{
    notifyAll(m_vecPredictedPctrlObservers, m_nChannel, nPredictedPctrl);
}

void OutputPowerController::notifyPowerModeObservers(ETxPowerMode eMode)
{
    notifyAll(m_vecPowerModeObservers, m_nChannel, eMode);
}

void OutputPowerController::notifyObservers()
{
    if (m_nPtarget != m_nLastNotifiedPtarget) {
        m_nLastNotifiedPtarget = m_nPtarget;
        notifyPtargetObservers(m_nPtarget);
    }
    if (m_nPctrl != m_nLastNotifiedPctrl) {
        m_nLastNotifiedPctrl = m_nPctrl;
        notifyPctrlObservers(m_nPctrl);
    }
    if (m_nPredictedPctrl != m_nLastNotifiedPredictedPctrl) {
        m_nLastNotifiedPredictedPctrl = m_nPredictedPctrl;
        notifyPredictedPctrlObservers(m_nPredictedPctrl);
    }
}
