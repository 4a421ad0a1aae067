#include "tests/support/FakeHandlers.h"

#include "tests/support/RecordingPlatform.h"

int FakeFrequencyHandler::getTxFrequency() const
{
    return m_nTxFrequency + m_nChangePerRead * m_nReads++;
}

EAFResult FakeFrequencyHandler::registerObserver(Observer<IFrequencyHandler>* pObserver)
{
    RecordingPlatform::get().recordCall([] { return std::string("IFrequencyHandler::registerObserver"); });
    if (!EAF_isFailure(m_nRegistrationResult)) {
        m_observers.push_back(pObserver);
    }
    return m_nRegistrationResult;
}

void FakeFrequencyHandler::change(int nTxFrequency)
{
    m_nTxFrequency = nTxFrequency;
    m_nReads = 0;
    for (Observer<IFrequencyHandler>* pObserver : m_observers) {
        pObserver->onChange(this);
    }
}

void FakeTemperatureHandler::report(int nTemperature)
{
    for (const ITemperatureObserver* pObserver : RecordingPlatform::get().script().temperatureObservers) {
        pObserver->pfnNotifyTemperature(pObserver->vpThis, nTemperature);
    }
}
